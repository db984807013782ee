#pragma once
// One process of a world: a fiber that runs code, a phantom that redirects,
// a proxy that stands for a process on the far side of a link, or an
// external process served from outside the world's thread (the gateway).

#include "ose/Fiber.h"
#include "ose/SignalQueue.h"
#include "ose/Types.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ose {

class Node;
struct LinkEnd;

enum class ProcessKind { Fiber, Phantom, Proxy, External };

enum class RunState {
    Created,   // not started yet
    Ready,     // in the ready queue
    Running,
    Receiving, // blocked in a receive
    Delayed,   // blocked in delay
    Passive,   // phantoms, proxies and external processes run no code
    Dead,
};

class Process {
public:
    Process(PROCESS pid, ProcessKind kind, std::string name, Node& node, OSPRIORITY priority);

    PROCESS pid() const { return m_pid; }
    ProcessKind kind() const { return m_kind; }
    const std::string& name() const { return m_name; }
    Node& node() const { return *m_pNode; }
    OSPRIORITY priority() const { return m_priority; }
    bool isDead() const { return m_state == RunState::Dead; }

    RunState m_state = RunState::Created;
    SignalQueue m_queue;

    // The ready queue's links: a process waits there at most once.
    Process* m_pReadyPrev = nullptr;
    Process* m_pReadyNext = nullptr;
    bool m_inReadyQueue = false;

    // Fibers.
    std::function<void()> m_entry;
    std::unique_ptr<Fiber> m_pFiber;
    bool m_entered = false;       // the fiber has run; killing it must unwind its stack
    const SelectorView* m_pWaitSelector = nullptr;
    PROCESS m_waitFrom = 0;
    std::uint64_t m_waitToken = 0;
    OSTMOREF m_wakeRef;

    // Phantoms.
    std::vector<RedirEntry> m_redirection;

    // Proxies.
    LinkEnd* m_pProxyEnd = nullptr;
    PROCESS m_proxyTarget = 0;

    // Names published beside the process name (outside programs use them).
    std::vector<std::string> m_aliases;

    // External processes: told when a signal was queued.
    std::function<void(Process&)> m_onSignal;

    std::vector<OSATTREF> m_attachedBy; // attaches that fire when this process dies
    std::vector<OSATTREF> m_attaches;   // attaches this process made
    std::vector<PROCESS> m_proxies;     // proxies that stand for this process

private:
    PROCESS m_pid;
    ProcessKind m_kind;
    std::string m_name;
    Node* m_pNode;
    OSPRIORITY m_priority;
};

// Thrown inside a killed process to unwind its stack; caught where the
// process began. Not derived from std::exception on purpose.
struct ProcessKilled {};

} // namespace ose
