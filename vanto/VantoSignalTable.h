#pragma once
// The receive loop and the signal table that the platform's servers share:
// each received signal goes to the handler of its number, traced with its
// name, sender and size; a number the table does not hold is traced and
// dropped.

#include "vanto/VantoTrace.h"

#include "ose/Kernel.h"

#include <span>

template <class Server>
struct VantoSignalEntry {
    ose::SIGSELECT sigNo;
    const char* name;
    void (Server::*handler)(ose::Signal*, ose::PROCESS);
};

template <class Server>
void dispatchVantoSignal(Server& server, std::span<const VantoSignalEntry<Server>> table, ose::Signal* signal,
                         const char* serverName)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    const ose::PROCESS from = ose::sender(&signal);
    for (const auto& entry : table) {
        if (entry.sigNo == sigNo) {
            SSC_TRACE(vantoGroup(), 11, "%s from 0x%x, %u bytes", entry.name, from, ose::sigsize(&signal));
            (server.*entry.handler)(signal, from);
            return;
        }
    }
    SSC_TRACE(vantoGroup(), 1, "%s: unknown signal 0x%x from 0x%x dropped", serverName, sigNo, from);
}

// Receives for ever, handing each signal to server.handleSignal and freeing it.
template <class Server>
[[noreturn]] void serveVantoSignals(Server& server)
{
    for (;;) {
        ose::Signal* signal = ose::receive(ose::kAnySignal);
        if (signal == nullptr) continue;
        server.handleSignal(signal);
        ose::free_buf(&signal);
    }
}
