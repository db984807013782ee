#pragma once
// The simulated EC bus server: takes connection requests and hands each
// A4CI data request to the unit at its port and address in a SimCabinet;
// also takes the control signals of SimControlSignals.h. The logic works
// on signal bytes, so that it serves as a process of a world (run) and as
// an outside program through the gateway (ssc-sim) alike.

#include "sim/SimCabinet.h"
#include "sim/SimControlSignals.h"

#include "ose/Signal.h"
#include "ose/Types.h"

#include <map>
#include <string>
#include <vector>

namespace ose {
class Node;
class World;
} // namespace ose

namespace sim {

class A4ciSimServer {
public:
    explicit A4ciSimServer(SimCabinet& cabinet) : m_cabinet(cabinet) {}
    ~A4ciSimServer();
    A4ciSimServer(const A4ciSimServer&) = delete;
    A4ciSimServer& operator=(const A4ciSimServer&) = delete;

    // A signal for the server to send: its bytes, to whom, and after how
    // many milliseconds.
    struct Outgoing {
        std::string bytes;
        ose::PROCESS to;
        std::uint32_t delayMs;
    };

    // Takes one received signal (its bytes as they travel) from `from` at
    // world time `nowMs`; returns what to send in answer.
    std::vector<Outgoing> handle(const std::string& signal, ose::PROCESS from, std::uint64_t nowMs);

    // The process body: serves until the process is killed.
    void run();

    // Creates and starts the server process on `node`; the cabinet must
    // outlive it.
    static ose::PROCESS start(ose::World& world, ose::Node& node, SimCabinet& cabinet,
                              const std::string& name = "A4ciServer");

private:
    void handleConnect(const std::string& signal);
    void handleData(const std::string& signal, bool forward);
    void answerRequest(std::uint16_t port, std::uint8_t address, const std::string& request, BusLogEntry& entry);
    void handleValue(const std::string& signal, bool set);
    void handleFault(const std::string& signal);
    void handlePlantEvent(const simctl::SIM_FAULT_REQ_S& request);
    // False, with the rejection sent, when `value` names no fan.
    bool setFans(Plant& plant, std::int32_t value, FanState state);
    void handleRawAnswer(const std::string& signal);
    void reject(ose::SIGSELECT sigNo, const std::string& reason);
    void reply(std::string bytes, std::uint32_t delayMs = 0);

    // In a world: sends what handle() gave, the late ones under a time-out.
    void sendFromProcess(std::vector<Outgoing> outgoing);
    void deliverDue(ose::Signal* marker);

    struct Pending {
        ose::Signal* signal;
        ose::PROCESS to;
    };

    SimCabinet& m_cabinet;
    std::map<std::uint32_t, std::string> m_lastRequest; // by port and address, for re-asks
    std::map<std::uint32_t, Pending> m_pending;         // late answers by reference
    std::uint32_t m_nextPending = 1;
    // The signal in hand: who sent it, when, and what goes back.
    ose::PROCESS m_client = 0;
    std::uint64_t m_nowMs = 0;
    std::vector<Outgoing> m_outgoing;
};

} // namespace sim
