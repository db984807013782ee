#pragma once
// An OsHandler for unit tests without a world: one in-memory queue for the
// process under test, a record of what was sent elsewhere, buffers from the
// kernel layer's pool. Every operation is a mock whose default is that
// behaviour, so a test can still expect or override a call.

#include "frame/OsHandler.h"

#include "ose/Kernel.h"

#include <gmock/gmock.h>

#include <deque>
#include <map>
#include <set>
#include <vector>

class FakeOsHandler : public OsHandler {
public:
    static constexpr ose::PROCESS kOwnPid = 0x10100;

    struct Sent {
        ose::Signal* signal;
        ose::PROCESS to;
    };

    FakeOsHandler()
    {
        using ::testing::_;
        using ::testing::Invoke;
        ON_CALL(*this, alloc(_, _)).WillByDefault(Invoke([](ose::OSBUFSIZE size, ose::SIGSELECT sigNo) {
            return ose::alloc(size, sigNo);
        }));
        ON_CALL(*this, free(_)).WillByDefault(Invoke([this](ose::Signal** signal) {
            m_senders.erase(*signal);
            ose::free_buf(signal);
        }));
        ON_CALL(*this, send(_, _)).WillByDefault(Invoke([this](ose::Signal** signal, ose::PROCESS to) {
            auto phantom = m_phantoms.find(to);
            if (to == kOwnPid || (phantom != m_phantoms.end() && phantom->second == kOwnPid)) {
                deliver(*signal, kOwnPid);
            } else {
                m_sent.push_back({*signal, to});
            }
            *signal = nullptr;
        }));
        ON_CALL(*this, receive(_)).WillByDefault(Invoke([this](ose::Selector selector) { return take(selector); }));
        ON_CALL(*this, receiveWithTimeout(_, _)).WillByDefault(Invoke([this](ose::Selector selector, std::uint32_t) {
            return take(selector);
        }));
        ON_CALL(*this, sender(_)).WillByDefault(Invoke([this](ose::Signal* signal) {
            auto found = m_senders.find(signal);
            return found != m_senders.end() ? found->second : ose::PROCESS{0};
        }));
        ON_CALL(*this, sigsize(_)).WillByDefault(Invoke([](ose::Signal* signal) { return ose::sigsize(&signal); }));
        ON_CALL(*this, currentProcess()).WillByDefault(::testing::Return(kOwnPid));
        ON_CALL(*this, receiverOf(_, _)).WillByDefault(Invoke([this](ose::PROCESS pid, ose::SIGSELECT) {
            if (pid == 0 || m_dead.count(pid) != 0) return ose::PROCESS{0};
            auto phantom = m_phantoms.find(pid);
            return phantom != m_phantoms.end() ? phantom->second : pid;
        }));
    }
    ~FakeOsHandler() override { drain(); }

    // Frees what is queued or was sent.
    void drain()
    {
        for (ose::Signal* signal : m_queue) ose::free_buf(&signal);
        for (Sent& sent : m_sent) ose::free_buf(&sent.signal);
        m_queue.clear();
        m_sent.clear();
        m_senders.clear();
    }

    MOCK_METHOD(ose::PROCESS, createPhantom, (const char* name), (override));
    MOCK_METHOD(void, killProcess, (ose::PROCESS pid), (override));
    MOCK_METHOD(ose::Signal*, alloc, (ose::OSBUFSIZE size, ose::SIGSELECT sigNo), (override));
    MOCK_METHOD(void, free, (ose::Signal** signal), (override));
    MOCK_METHOD(void, send, (ose::Signal** signal, ose::PROCESS pid), (override));
    MOCK_METHOD(ose::Signal*, receive, (ose::Selector selector), (override));
    MOCK_METHOD(ose::Signal*, receiveWithTimeout, (ose::Selector selector, std::uint32_t timeoutMs), (override));
    MOCK_METHOD(ose::PROCESS, sender, (ose::Signal* signal), (override));
    MOCK_METHOD(ose::PROCESS, receiverOf, (ose::PROCESS pid, ose::SIGSELECT sigNo), (override));
    MOCK_METHOD(void, attach, (ose::Signal** signal, ose::PROCESS pid), (override));
    MOCK_METHOD(OsDateTime, getDateTime, (), (override));
    MOCK_METHOD(std::uint32_t, getSystemTicks, (), (override));
    MOCK_METHOD(std::uint32_t, getMinutes, (), (override));
    MOCK_METHOD(ose::OSBUFSIZE, sigsize, (ose::Signal* signal), (override));
    MOCK_METHOD(void, delay, (std::uint32_t ms), (override));
    MOCK_METHOD(ose::PROCESS, currentProcess, (), (override));

    // Queues a signal for the process under test, as sent by `from`.
    void deliver(ose::Signal* signal, ose::PROCESS from)
    {
        m_senders[signal] = from;
        m_queue.push_back(signal);
    }
    std::size_t queued() const { return m_queue.size(); }
    // A process that is gone: nothing sent to it arrives.
    void markDead(ose::PROCESS pid) { m_dead.insert(pid); }
    // A phantom whose signals reach `target`.
    void addPhantom(ose::PROCESS phantom, ose::PROCESS target) { m_phantoms[phantom] = target; }
    // Signals sent to other processes; the test frees what it takes.
    std::vector<Sent>& sent() { return m_sent; }

private:
    static bool selects(ose::Selector selector, ose::SIGSELECT sigNo)
    {
        if (selector.empty() || selector[0] == 0) return true;
        for (std::size_t i = 1; i <= selector[0] && i < selector.size(); ++i)
            if (selector[i] == sigNo) return true;
        return false;
    }
    ose::Signal* take(ose::Selector selector)
    {
        for (auto it = m_queue.begin(); it != m_queue.end(); ++it) {
            if (!selects(selector, ose::signalNumber(*it))) continue;
            ose::Signal* signal = *it;
            m_queue.erase(it);
            return signal;
        }
        return nullptr;
    }

    std::deque<ose::Signal*> m_queue;
    std::vector<Sent> m_sent;
    std::map<ose::Signal*, ose::PROCESS> m_senders;
    std::set<ose::PROCESS> m_dead;
    std::map<ose::PROCESS, ose::PROCESS> m_phantoms;
};
