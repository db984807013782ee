#pragma once
// The simulated EC bus server: a process that publishes "A4ciServer",
// takes connection requests, and hands each A4CI data request to the unit
// at its port and address in a SimCabinet. Also takes the control signals
// of SimControlSignals.h.

#include "sim/SimCabinet.h"

#include "ose/Signal.h"
#include "ose/Types.h"

#include <map>
#include <string>

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

    // The process body: serves until the process is killed.
    void run();

    // Creates and starts the server process on `node`; the cabinet must
    // outlive it.
    static ose::PROCESS start(ose::World& world, ose::Node& node, SimCabinet& cabinet,
                              const std::string& name = "A4ciServer");

private:
    void dispatch(ose::Signal* signal);
    void handleConnect(ose::Signal* signal);
    void handleData(ose::Signal* signal, bool forward);
    void answerRequest(ose::PROCESS client, std::uint16_t port, std::uint8_t address, const std::string& request,
                       BusLogEntry& entry);
    void handleValue(ose::Signal* signal, bool set);
    void handleFault(ose::Signal* signal);
    void reject(ose::PROCESS to, ose::SIGSELECT sigNo, const std::string& reason);

    // Sends `signal` to `to`, now or `delayMs` later.
    void deliver(ose::Signal* signal, ose::PROCESS to, std::uint32_t delayMs);
    void deliverDue(ose::Signal* marker);

    struct Pending {
        ose::Signal* signal;
        ose::PROCESS to;
    };

    SimCabinet& m_cabinet;
    std::map<std::uint32_t, std::string> m_lastRequest; // by port and address, for re-asks
    std::map<std::uint32_t, Pending> m_pending;         // late answers by reference
    std::uint32_t m_nextPending = 1;
};

} // namespace sim
