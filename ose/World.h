#pragma once
// A world: nodes, their processes, the links between them and one clock, all
// run on one OS thread. A process runs until it blocks; then the ready process
// of highest priority runs, first come first served within a priority. No
// locks are needed by anything that runs inside, and a run on the virtual
// clock repeats exactly.
//
// Set a world up from outside (nodes, processes, links), then run it with
// runFor, runUntilIdle or run. Inside, processes use the kernel calls of
// Kernel.h, which act on the world running on the calling thread. Other
// threads talk to a world only through post() and stop().

#include "ose/Clock.h"
#include "ose/EventLoop.h"
#include "ose/Link.h"
#include "ose/Node.h"
#include "ose/Process.h"
#include "ose/ReadyQueue.h"
#include "ose/Signal.h"
#include "ose/TimeoutQueue.h"
#include "ose/Types.h"

#include <chrono>
#include <deque>
#include <functional>
#include <list>
#include <optional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ose {

struct ProcessSpec {
    ProcessType type = ProcessType::Prioritized;
    std::string name;
    std::function<void()> entry;              // prioritized processes
    OSBUFSIZE stackSize = 0;                  // a minimum; 0 takes the default
    OSPRIORITY priority = 16;
    std::vector<RedirEntry> redirection;      // phantoms
};

class World {
public:
    explicit World(const ClockConfig& clock = {});
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    // The world running on this thread, or NIL.
    static World* current();

    // --- set-up (from outside, or from inside a process) -------------------
    Node& addNode(const std::string& name);
    Node* findNode(std::string_view name);
    // Node of the first world-level default: the first node added.
    Node& defaultNode();

    PROCESS createProcess(Node& node, const ProcessSpec& definition);
    // An outside program's process: signals to it are queued and onSignal is
    // called (on the world's thread) after each; it takes them with takeSignal.
    PROCESS createExternalProcess(Node& node, const std::string& name, std::function<void(Process&)> onSignal);
    Signal* takeSignal(PROCESS pid, Selector selector);
    bool publishName(PROCESS pid, const std::string& name);
    void start(PROCESS pid);
    void kill(PROCESS pid);

    std::uint32_t addLink(Node& a, const std::string& pathAtA, Node& b, const std::string& pathAtB);
    void setLinkUp(std::uint32_t linkId, bool up);

    // --- running ------------------------------------------------------------
    // Runs until the world time has moved on by `ms` (virtual: exactly).
    void runFor(std::uint64_t ms);
    // Runs until no process is ready and no time-out is pending (or stop()).
    void runUntilIdle();
    // Runs until stop().
    void run();
    // Thread-safe: the running world returns from run* at its next step.
    void stop();
    // Thread-safe: runs `work` on the world's thread at its next step.
    void post(std::function<void()> work);

    // Descriptors watched on the world's thread (the gateway's sockets); the
    // callback runs between process runs, like posted work.
    void watchFd(int fd, short events, EventLoop::FdCallback onReady) { m_events.watch(fd, events, std::move(onReady)); }
    void setFdEvents(int fd, short events) { m_events.setEvents(fd, events); }
    void unwatchFd(int fd) { m_events.unwatch(fd); }
    // Virtual and paced clocks: time does not move past the ceiling while one
    // is set (outside clients that step time hold it).
    void setTimeCeiling(std::optional<std::uint64_t> ceiling) { m_timeCeiling = ceiling; }

    Clock& clock() { return m_clock; }
    std::uint64_t now() const { return m_clock.now(); }

    // --- the kernel's operations, as Kernel.h exposes them ------------------
    Process* currentProcess() const { return m_pCurrent; }
    Process* findProcess(PROCESS pid) const;

    void send(Signal** signal, PROCESS from, PROCESS to);
    // Where a signal of that number sent to `pid` would end up; 0 for nowhere.
    PROCESS receiverOf(PROCESS pid, SIGSELECT sigNo) const;
    Signal* receive(Selector selector, OSTIME timeoutMs, PROCESS from);
    void delay(OSTIME ms);
    // The hunter, attacher or requester is given, so that outside programs
    // (which run no code in the world) can use these too; the kernel calls
    // pass the current process.
    bool hunt(PROCESS hunter, std::string_view name, PROCESS* pid, Signal** huntSignal);
    OSATTREF attach(PROCESS attacher, Signal** signal, PROCESS pid);
    void detach(OSATTREF* ref);
    OSTMOREF requestTimeout(PROCESS requester, OSTIME ms, Signal** signal);
    Signal* cancelTimeout(OSTMOREF* ref);
    bool restartTimeout(OSTMOREF* ref, OSTIME ms);

private:
    struct Attach {
        PROCESS attacher;
        PROCESS target;
        Signal* signal;
    };
    struct PendingHunt {
        PROCESS hunter;
        Node* pNode;
        std::string name;
        Signal* signal;
    };

    Process& addProcess(std::unique_ptr<Process> process, bool mayAnswerHunts = true);
    void registerName(Process& process, const std::string& name);
    static void fiberMain(void* argument);

    // Scheduling.
    void schedule(std::uint64_t limit, bool stopWhenIdle);
    bool waitForWork(std::uint64_t limit, bool stopWhenIdle);
    bool outsideHeardBeforeStep();
    void fireDueTimeouts();
    void resumeProcess(Process& process);
    void makeReady(Process& process);
    void block(Process& process);
    Process* handOffTarget(Process& process);
    void preemptIfNeeded();
    Process* requireRunningProcess(const char* operation);

    // Delivery.
    void deliver(Signal* signal, PROCESS from, PROCESS to);
    // The next hop of a signal at a phantom: 0 when it redirects nowhere.
    static PROCESS redirection(const Process& phantom, SIGSELECT sigNo);
    void enqueue(Process& process, Signal* signal);
    PROCESS senderOnFarSide(PROCESS from, LinkEnd& farEnd);
    PROCESS proxyFor(LinkEnd& end, PROCESS farPid, const std::string& name);

    // Names.
    PROCESS resolve(Node& node, std::string_view name);
    void retryPendingHunts();

    // Death.
    void terminate(Process& process);
    void fireAttaches(Process& process);
    void dropOwnedResources(Process& process);
    void reapDeadProcesses();

    Clock m_clock;
    std::list<Node> m_nodes;
    std::list<Link> m_links;
    std::unordered_map<PROCESS, std::unique_ptr<Process>> m_processes;
    PROCESS m_nextPid = 0x10001;
    ReadyQueue m_ready;
    std::deque<Process*> m_unwinding; // killed fibers whose stacks must be unwound
    std::vector<PROCESS> m_dead;      // dead processes waiting to be reaped
    TimeoutQueue m_timeouts;
    std::unordered_map<OSATTREF, Attach> m_attaches;
    OSATTREF m_nextAttachRef = 1;
    std::list<PendingHunt> m_pendingHunts;
    Process* m_pCurrent = nullptr;
    bool m_preemptPending = false;
    bool m_stopRequested = false;
    bool m_inDestructor = false;
    bool m_retryingHunts = false;

    EventLoop m_events;
    std::optional<std::uint64_t> m_timeCeiling;
    unsigned m_stepsSincePoll = 0;
    bool m_pollBeforeStep = false;
    std::chrono::steady_clock::time_point m_lastTimePoll{};
};

} // namespace ose
