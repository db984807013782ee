#pragma once
// The timers of the object process. Each start asks the kernel for a
// time-out that comes back as SUP_SYS_TIMER_SIG with the timer's id; the
// receive loop hands it here and the observer is told. Ids are reused: a
// cancelled or expired id goes to the back of a free list. A repeating timer
// is asked anew at each time-out, so its period does not drift with the
// time the loop takes.

#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"
#include "froBl/froMgmtSwU/export/TimerApi.h"

#include "ose/Signal.h"

#include <deque>
#include <map>
#include <set>
#include <vector>

class Timer : public TimerApi, public SignalSubscriber {
public:
    explicit Timer(SignalDistributorAPI& distributor);
    // Cancels what still runs, so that no time-out finds a record gone.
    ~Timer() override;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    // The timer of the process, on its distributor.
    static Timer& instance();

    void init() override;
    void handleSignal(ose::Signal* signal) override;
    std::uint32_t start(TimerObserver* observer, std::uint32_t kind, std::int32_t milliseconds) override;
    void cancel(std::uint32_t timerId) override;
    std::size_t size() const override { return m_records.size(); }

private:
    struct Record {
        TimerObserver* observer = nullptr; // not owned
        std::uint32_t kind = OneShot;
        std::int32_t milliseconds = 0;
        ose::OSTMOREF request{};
    };

    std::uint32_t takeId();
    void request(std::uint32_t timerId, const Record& record);
    void onTimeout(std::uint32_t timerId);

    SignalDistributorAPI& m_distributor;
    std::vector<ose::SIGSELECT> m_signals;
    std::map<std::uint32_t, Record> m_records;
    std::deque<std::uint32_t> m_freeIds;
    std::uint32_t m_nextId = 0;
    // Ids whose time-out had already come when they were cancelled: that
    // signal still waits in the queue and must not fire a new timer early.
    std::multiset<std::uint32_t> m_expiredCancelled;
};
