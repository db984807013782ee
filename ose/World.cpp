#include "ose/World.h"

#include "ose/Format.h"
#include "ose/SignalPool.h"
#include "ose/Trace.h"
#include "ose/TraceContext.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>

namespace ose {
namespace {

thread_local World* t_currentWorld = nullptr;

// A phantom may redirect to another phantom; a cycle must not hang the world.
constexpr int kMaxRedirections = 16;

// While processes keep each other busy, outside descriptors are still looked
// at after this many scheduling steps.
constexpr unsigned kStepsBetweenPolls = 256;
constexpr std::chrono::milliseconds kPollInterval{1};

std::string describeContext()
{
    World* world = t_currentWorld;
    if (world == nullptr) return "[          -] -/-";
    std::uint64_t ms = world->now();
    Process* process = world->currentProcess();
    return ose::format("[%6llu.%03llu] %s/%s", static_cast<unsigned long long>(ms / 1000),
                       static_cast<unsigned long long>(ms % 1000),
                       process != nullptr ? process->node().name().c_str() : "-",
                       process != nullptr ? process->name().c_str() : "-");
}

// Makes a world the current one of this thread while it runs.
class CurrentWorld {
public:
    explicit CurrentWorld(World* world) : m_previous(t_currentWorld) { t_currentWorld = world; }
    ~CurrentWorld() { t_currentWorld = m_previous; }
    CurrentWorld(const CurrentWorld&) = delete;
    CurrentWorld& operator=(const CurrentWorld&) = delete;

private:
    World* m_previous;
};

} // namespace

World::World(const ClockConfig& clock) : m_clock(clock)
{
    detail::setTraceContextFn(&describeContext);
}

World::~World()
{
    CurrentWorld scope(this);
    m_inDestructor = true;
    std::vector<PROCESS> alive;
    for (auto& [pid, process] : m_processes)
        if (!process->isDead()) alive.push_back(pid);
    std::sort(alive.begin(), alive.end());
    for (PROCESS pid : alive)
        if (Process* process = findProcess(pid)) terminate(*process);
    // Unwind the stacks of fibers that had run, so that what they own is freed.
    while (!m_unwinding.empty()) {
        Process* process = m_unwinding.front();
        m_unwinding.pop_front();
        resumeProcess(*process);
    }
    reapDeadProcesses();
    for (PendingHunt& hunt : m_pendingHunts) SignalPool::release(hunt.signal);
    for (auto& [ref, attach] : m_attaches) SignalPool::release(attach.signal);
}

World* World::current()
{
    return t_currentWorld;
}

// --- set-up -------------------------------------------------------------------

Node& World::addNode(const std::string& name)
{
    if (Node* existing = findNode(name)) return *existing;
    return m_nodes.emplace_back(name);
}

Node* World::findNode(std::string_view name)
{
    for (Node& node : m_nodes)
        if (node.name() == name) return &node;
    return nullptr;
}

Node& World::defaultNode()
{
    if (m_nodes.empty()) return addNode("node0");
    return m_nodes.front();
}

Process& World::addProcess(std::unique_ptr<Process> process, bool mayAnswerHunts)
{
    Process& added = *process;
    m_processes.emplace(added.pid(), std::move(process));
    if (mayAnswerHunts) {
        registerName(added, added.name());
    } else {
        added.node().addName(added.name(), added.pid());
    }
    return added;
}

void World::registerName(Process& process, const std::string& name)
{
    process.node().addName(name, process.pid());
    if (!m_pendingHunts.empty()) retryPendingHunts();
}

PROCESS World::createProcess(Node& node, const ProcessSpec& definition)
{
    PROCESS pid = m_nextPid++;
    if (definition.type == ProcessType::Phantom) {
        auto process = std::make_unique<Process>(pid, ProcessKind::Phantom, definition.name, node, kLowestPriority);
        process->m_redirection = definition.redirection;
        addProcess(std::move(process));
        return pid;
    }
    auto process = std::make_unique<Process>(pid, ProcessKind::Fiber, definition.name, node, definition.priority);
    process->m_entry = definition.entry;
    process->m_pFiber = std::make_unique<Fiber>(definition.stackSize, &World::fiberMain, process.get());
    addProcess(std::move(process));
    return pid;
}

PROCESS World::createExternalProcess(Node& node, const std::string& name, std::function<void(Process&)> onSignal)
{
    PROCESS pid = m_nextPid++;
    auto process = std::make_unique<Process>(pid, ProcessKind::External, name, node, kLowestPriority);
    process->m_onSignal = std::move(onSignal);
    addProcess(std::move(process));
    return pid;
}

Signal* World::takeSignal(PROCESS pid, Selector selector)
{
    Process* process = findProcess(pid);
    if (process == nullptr) return nullptr;
    return process->m_queue.take(SelectorView(selector));
}

bool World::publishName(PROCESS pid, const std::string& name)
{
    Process* process = findProcess(pid);
    if (process == nullptr || name.empty()) return false;
    process->m_aliases.push_back(name);
    registerName(*process, name);
    return true;
}

void World::start(PROCESS pid)
{
    Process* process = findProcess(pid);
    if (process == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "start of unknown process %u ignored", pid);
        return;
    }
    if (process->m_state != RunState::Created) return; // running already, or runs no code
    makeReady(*process);
    preemptIfNeeded();
}

void World::kill(PROCESS pid)
{
    Process* process = findProcess(pid);
    if (process == nullptr) {
        SSC_TRACE(oseTraceGroup(), 5, "kill_proc of process %u that does not exist", pid);
        return;
    }
    terminate(*process);
    if (process == m_pCurrent && !std::uncaught_exceptions()) throw ProcessKilled{};
    preemptIfNeeded();
}

std::uint32_t World::addLink(Node& a, const std::string& pathAtA, Node& b, const std::string& pathAtB)
{
    Link& link = m_links.emplace_back();
    link.id = static_cast<std::uint32_t>(m_links.size());
    link.ends[0] = LinkEnd{&link, &a, pathAtA, &link.ends[1], {}};
    link.ends[1] = LinkEnd{&link, &b, pathAtB, &link.ends[0], {}};
    a.addLinkEnd(link.ends[0]);
    b.addLinkEnd(link.ends[1]);
    if (!m_pendingHunts.empty()) retryPendingHunts();
    return link.id;
}

void World::setLinkUp(std::uint32_t linkId, bool up)
{
    auto it = std::find_if(m_links.begin(), m_links.end(), [&](const Link& l) { return l.id == linkId; });
    if (it == m_links.end() || it->up == up) return;
    it->up = up;
    if (up) {
        retryPendingHunts();
        return;
    }
    // Every proxy across the link dies, so attaches to them fire.
    for (LinkEnd& end : it->ends) {
        std::vector<PROCESS> proxies;
        for (auto& [far, proxy] : end.proxies) proxies.push_back(proxy);
        for (PROCESS proxy : proxies)
            if (Process* process = findProcess(proxy)) terminate(*process);
    }
    preemptIfNeeded();
}

// --- running ----------------------------------------------------------------

void World::runFor(std::uint64_t ms)
{
    m_clock.sync();
    schedule(m_clock.now() + ms, false);
}

void World::runUntilIdle()
{
    schedule(UINT64_MAX, true);
}

void World::run()
{
    schedule(UINT64_MAX, false);
}

void World::stop()
{
    m_events.requestStop();
}

void World::post(std::function<void()> work)
{
    m_events.post(std::move(work));
}

void World::schedule(std::uint64_t limit, bool stopWhenIdle)
{
    CurrentWorld scope(this);
    m_stopRequested = false;
    m_pollBeforeStep = true;
    while (!m_stopRequested) {
        if (m_events.runPosted()) break;
        reapDeadProcesses();
        m_clock.sync();
        fireDueTimeouts();
        // Busy processes must not keep outside clients waiting for ever.
        if (++m_stepsSincePoll >= kStepsBetweenPolls && m_events.watchesAny()) {
            m_stepsSincePoll = 0;
            m_events.wait(std::chrono::nanoseconds(0));
        }
        if (!m_unwinding.empty()) {
            Process* process = m_unwinding.front();
            m_unwinding.pop_front();
            resumeProcess(*process);
            continue;
        }
        if (Process* process = m_ready.popHighest()) {
            resumeProcess(*process);
            continue;
        }
        if (!waitForWork(limit, stopWhenIdle)) break;
    }
    reapDeadProcesses();
}

// Nothing is ready: move time on to the next time-out, or wait for outside
// work. False when the run is over.
bool World::waitForWork(std::uint64_t limit, bool stopWhenIdle)
{
    std::optional<std::uint64_t> next = m_timeouts.nextTime();
    if (limit != UINT64_MAX && m_clock.now() >= limit) return false;
    if (!next && stopWhenIdle) return false;
    std::uint64_t target = next ? std::min(*next, limit) : limit;
    bool isVirtual = m_clock.config().mode != ClockMode::Real;
    if (isVirtual && m_timeCeiling && target > *m_timeCeiling) {
        // Held by an outside client: go as far as allowed and wait for it.
        m_clock.advanceTo(*m_timeCeiling);
        m_events.wait(std::nullopt);
        return true;
    }
    if (target == UINT64_MAX) {
        m_events.wait(std::nullopt); // nothing will happen until someone outside acts
        return true;
    }
    if (m_clock.config().mode == ClockMode::Virtual) {
        if (outsideHeardBeforeStep()) return true;
        m_clock.advanceTo(target);
        return !(target == limit && (!next || *next > limit));
    }
    std::uint64_t wait = target > m_clock.now() ? target - m_clock.now() : 0;
    auto wallStart = std::chrono::steady_clock::now();
    bool woken = m_events.wait(m_clock.wallDuration(wait));
    if (m_clock.config().mode == ClockMode::Paced) {
        if (!woken) {
            m_clock.advanceTo(target);
        } else {
            auto waited = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wallStart);
            auto moved = static_cast<std::uint64_t>(waited.count() * m_clock.config().pace);
            m_clock.advanceTo(std::min(target, m_clock.now() + moved));
        }
    }
    return true;
}

// A virtual clock that no client holds must not run away from frames
// already sent to it: the watched descriptors are read before the first step
// of time of each run and then at least every kPollInterval of wall time. Not
// at every step: a poll costs more than a step of a simulated month.
bool World::outsideHeardBeforeStep()
{
    if (!m_events.watchesAny()) return false;
    const auto now = std::chrono::steady_clock::now();
    if (!m_pollBeforeStep && now - m_lastTimePoll < kPollInterval) return false;
    m_pollBeforeStep = false;
    m_lastTimePoll = now;
    return m_events.wait(std::chrono::nanoseconds(0));
}

void World::fireDueTimeouts()
{
    TimeoutEntry entry;
    while (m_timeouts.popDue(m_clock.now(), entry)) {
        if (entry.kind == TimeoutEntry::Kind::DeliverSignal) {
            deliver(entry.signal, entry.pid, entry.pid);
            continue;
        }
        Process* process = findProcess(entry.pid);
        if (process == nullptr || process->m_waitToken != entry.token) continue;
        if (process->m_state == RunState::Receiving || process->m_state == RunState::Delayed) {
            process->m_wakeRef = {};
            makeReady(*process);
        }
    }
}

void World::resumeProcess(Process& process)
{
    process.m_state = process.isDead() ? RunState::Dead : RunState::Running;
    m_pCurrent = &process;
    process.m_entered = true;
    process.m_pFiber->resume();
    m_pCurrent = nullptr;
    if (process.m_pFiber->isFinished() && !process.isDead()) terminate(process);
}

void World::fiberMain(void* argument)
{
    auto* process = static_cast<Process*>(argument);
    World* world = t_currentWorld;
    if (!process->isDead()) {
        try {
            process->m_entry();
            SSC_TRACE(oseTraceGroup(), 4, "process %s returned from its entry and ends", process->name().c_str());
        } catch (const ProcessKilled&) {
        } catch (const std::exception& error) {
            SSC_TRACE(oseTraceGroup(), 1, "process %s ended by an exception: %s", process->name().c_str(), error.what());
        } catch (...) {
            SSC_TRACE(oseTraceGroup(), 1, "process %s ended by an unknown exception", process->name().c_str());
        }
    }
    if (!process->isDead()) world->terminate(*process);
    process->m_pFiber->finish();
}

void World::makeReady(Process& process)
{
    process.m_state = RunState::Ready;
    m_ready.pushBack(&process);
    if (m_pCurrent != nullptr && process.priority() < m_pCurrent->priority()) m_preemptPending = true;
}

void World::block(Process& process)
{
    if (Process* next = handOffTarget(process)) {
        // What the scheduler would do next, without the two switches through
        // it; a process that is its own next goes on at once.
        next->m_state = RunState::Running;
        m_pCurrent = next;
        if (next != &process) process.m_pFiber->switchTo(*next->m_pFiber);
    } else {
        process.m_pFiber->suspend();
    }
    if (process.isDead() && !std::uncaught_exceptions()) throw ProcessKilled{};
}

// A process that blocks while another is ready and nothing else asks for the
// scheduler's attention (outside work, a stop, the dead, a poll that is due)
// hands over straight to the process the scheduler would pick: the same
// steps in the same order, so a run on the virtual clock repeats exactly.
// NIL where the scheduler must take its turn.
Process* World::handOffTarget(Process& process)
{
    if (!Fiber::kCanSwitchDirectly || m_inDestructor || &process != m_pCurrent || process.isDead()) return nullptr;
    if (m_events.hasPosted() || !m_dead.empty() || !m_unwinding.empty()) return nullptr;
    if (m_events.watchesAny() && m_stepsSincePoll + 1 >= kStepsBetweenPolls) return nullptr;
    m_pCurrent = nullptr; // as between two turns of the scheduler
    m_clock.sync();
    fireDueTimeouts();
    Process* next = m_ready.empty() || !m_unwinding.empty() || !m_dead.empty() ? nullptr : m_ready.popHighest();
    if (next != nullptr && !next->m_entered) {
        m_ready.pushFront(next); // a first entry goes through the scheduler
        next = nullptr;
    }
    if (next == nullptr) {
        m_pCurrent = &process;
        return nullptr;
    }
    ++m_stepsSincePoll;
    return next;
}

// A process that made one of higher priority ready gives way at once, and
// goes on before its equals when its turn comes again.
void World::preemptIfNeeded()
{
    if (!m_preemptPending) return;
    m_preemptPending = false;
    Process* process = m_pCurrent;
    if (process == nullptr || process->isDead() || m_ready.highestPriority() >= process->priority()) return;
    process->m_state = RunState::Ready;
    m_ready.pushFront(process);
    block(*process);
}

Process* World::requireRunningProcess(const char* operation)
{
    if (m_pCurrent == nullptr)
        SSC_TRACE(oseTraceGroup(), 1, "%s called outside a process: ignored", operation);
    return m_pCurrent;
}

Process* World::findProcess(PROCESS pid) const
{
    auto it = m_processes.find(pid);
    if (it == m_processes.end() || it->second->isDead()) return nullptr;
    return it->second.get();
}

// --- signals ----------------------------------------------------------------

void World::send(Signal** signal, PROCESS from, PROCESS to)
{
    if (signal == nullptr || *signal == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "send of a NIL signal to %u ignored", to);
        return;
    }
    Signal* buffer = *signal;
    *signal = nullptr;
    if (!SignalPool::isLive(buffer)) {
        SSC_TRACE(oseTraceGroup(), 1, "send of a buffer that is not a live signal to %u ignored", to);
        return;
    }
    deliver(buffer, from, to);
    preemptIfNeeded();
}

void World::deliver(Signal* signal, PROCESS from, PROCESS to)
{
    SignalHeader* header = SignalHeader::of(signal);
    header->addressee = to;
    PROCESS target = to;
    for (int hop = 0; hop <= kMaxRedirections; ++hop) {
        Process* process = findProcess(target);
        if (process == nullptr) {
            SSC_TRACE(oseTraceGroup(), 5, "signal %u to process %u that does not exist: freed",
                      static_cast<unsigned>(signal->sigNo), target);
            SignalPool::release(signal);
            return;
        }
        switch (process->kind()) {
        case ProcessKind::Phantom: {
            PROCESS next = redirection(*process, signal->sigNo);
            if (next == 0) {
                SSC_TRACE(oseTraceGroup(), 5, "signal %u to phantom %s that redirects it nowhere: freed",
                          static_cast<unsigned>(signal->sigNo), process->name().c_str());
                SignalPool::release(signal);
                return;
            }
            target = next;
            continue;
        }
        case ProcessKind::Proxy:
            from = senderOnFarSide(from, *process->m_pProxyEnd->pOther);
            target = process->m_proxyTarget;
            continue;
        case ProcessKind::Fiber:
        case ProcessKind::External:
            header->sender = from;
            enqueue(*process, signal);
            return;
        }
    }
    SSC_TRACE(oseTraceGroup(), 1, "signal %u to %u: redirections loop, freed", static_cast<unsigned>(signal->sigNo), to);
    SignalPool::release(signal);
}

PROCESS World::redirection(const Process& phantom, SIGSELECT sigNo)
{
    const auto& table = phantom.m_redirection;
    PROCESS next = table.empty() ? 0 : table[0].pid;
    std::size_t count = table.empty() ? 0 : std::min<std::size_t>(table[0].sig, table.size());
    for (std::size_t i = 1; i < count; ++i)
        if (table[i].sig == sigNo) next = table[i].pid;
    return next;
}

PROCESS World::receiverOf(PROCESS pid, SIGSELECT sigNo) const
{
    PROCESS target = pid;
    for (int hop = 0; hop <= kMaxRedirections; ++hop) {
        const Process* process = findProcess(target);
        if (process == nullptr) return 0;
        if (process->kind() != ProcessKind::Phantom) return target;
        target = redirection(*process, sigNo);
    }
    return 0;
}

void World::enqueue(Process& process, Signal* signal)
{
    process.m_queue.push(signal);
    if (process.kind() == ProcessKind::External) {
        if (process.m_onSignal) process.m_onSignal(process);
        return;
    }
    if (process.m_state != RunState::Receiving || process.m_pWaitSelector == nullptr) return;
    const SignalHeader* header = SignalHeader::of(signal);
    if (!process.m_pWaitSelector->accepts(signal->sigNo)) return;
    if (process.m_waitFrom != 0 && header->sender != process.m_waitFrom) return;
    m_timeouts.cancel(process.m_wakeRef);
    process.m_wakeRef = {};
    makeReady(process);
}

// The sender as the receiver's node sees it: a proxy there, unless the
// sender is itself a proxy for a process of that node.
PROCESS World::senderOnFarSide(PROCESS from, LinkEnd& farEnd)
{
    Process* sender = findProcess(from);
    if (sender == nullptr) return 0;
    if (sender->kind() == ProcessKind::Proxy && sender->m_pProxyEnd == farEnd.pOther) return sender->m_proxyTarget;
    return proxyFor(farEnd, from, farEnd.path + sender->name());
}

PROCESS World::proxyFor(LinkEnd& end, PROCESS farPid, const std::string& name)
{
    auto it = end.proxies.find(farPid);
    if (it != end.proxies.end()) return it->second;
    PROCESS pid = m_nextPid++;
    auto proxy = std::make_unique<Process>(pid, ProcessKind::Proxy, name, *end.pNode, kLowestPriority);
    proxy->m_pProxyEnd = &end;
    proxy->m_proxyTarget = farPid;
    end.proxies.emplace(farPid, pid);
    if (Process* far = findProcess(farPid)) far->m_proxies.push_back(pid);
    // A proxy's name answers no hunt on its own: hunts across links resolve
    // through the link, which is what made this proxy.
    addProcess(std::move(proxy), false);
    return pid;
}

Signal* World::receive(Selector selector, OSTIME timeoutMs, PROCESS from)
{
    Process* process = requireRunningProcess("receive");
    if (process == nullptr) return nullptr;
    SelectorView view(selector);
    if (view.wasTruncated())
        SSC_TRACE(oseTraceGroup(), 1, "receive with a selector whose count exceeds its numbers: count cut to %zu",
                  selector.empty() ? std::size_t{0} : selector.size() - 1);
    if (Signal* signal = process->m_queue.take(view, from)) return signal;
    if (timeoutMs == 0 || process->isDead()) return nullptr;
    process->m_pWaitSelector = &view;
    process->m_waitFrom = from;
    ++process->m_waitToken;
    if (timeoutMs != kWaitForever)
        process->m_wakeRef = m_timeouts.add(m_clock.now() + timeoutMs,
                                            {TimeoutEntry::Kind::WakeProcess, process->pid(), process->m_waitToken, nullptr});
    process->m_state = RunState::Receiving;
    struct ClearWait {
        Process* p;
        ~ClearWait() { p->m_pWaitSelector = nullptr; }
    } clearWait{process};
    block(*process);
    return process->m_queue.take(view, from);
}

void World::delay(OSTIME ms)
{
    Process* process = requireRunningProcess("delay");
    if (process == nullptr || process->isDead()) return;
    ++process->m_waitToken;
    if (ms == 0) {
        makeReady(*process); // gives way to the others of its priority
    } else {
        process->m_state = RunState::Delayed;
        process->m_wakeRef = m_timeouts.add(m_clock.now() + ms,
                                            {TimeoutEntry::Kind::WakeProcess, process->pid(), process->m_waitToken, nullptr});
    }
    block(*process);
}

// --- names ------------------------------------------------------------------

PROCESS World::resolve(Node& node, std::string_view name)
{
    std::size_t slash = name.find('/');
    if (slash == std::string_view::npos) return node.find(name);
    LinkEnd* end = node.linkEnd(name.substr(0, slash + 1));
    if (end == nullptr || !end->pLink->up) return 0;
    PROCESS far = resolve(*end->pOther->pNode, name.substr(slash + 1));
    return far == 0 ? 0 : proxyFor(*end, far, std::string(name));
}

bool World::hunt(PROCESS hunterPid, std::string_view name, PROCESS* pid, Signal** huntSignal)
{
    Process* hunter = findProcess(hunterPid);
    Node& node = hunter != nullptr ? hunter->node() : defaultNode();
    PROCESS found = resolve(node, name);
    if (pid != nullptr) *pid = found;
    if (huntSignal == nullptr || *huntSignal == nullptr) return found != 0;
    Signal* signal = *huntSignal;
    *huntSignal = nullptr;
    if (hunter == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "hunt with a hunt signal by no living process: signal freed");
        SignalPool::release(signal);
    } else if (found != 0) {
        deliver(signal, found, hunter->pid());
        preemptIfNeeded();
    } else {
        m_pendingHunts.push_back({hunter->pid(), &node, std::string(name), signal});
    }
    return found != 0;
}

void World::retryPendingHunts()
{
    if (m_retryingHunts) return;
    m_retryingHunts = true;
    for (auto it = m_pendingHunts.begin(); it != m_pendingHunts.end();) {
        PROCESS found = resolve(*it->pNode, it->name);
        if (found == 0) {
            ++it;
            continue;
        }
        PendingHunt hunt = *it;
        it = m_pendingHunts.erase(it);
        deliver(hunt.signal, found, hunt.hunter);
    }
    m_retryingHunts = false;
}

// --- attach -----------------------------------------------------------------

OSATTREF World::attach(PROCESS attacherPid, Signal** signal, PROCESS pid)
{
    Process* attacher = findProcess(attacherPid);
    Signal* buffer = (signal != nullptr && *signal != nullptr) ? *signal : SignalPool::allocate(4, OS_ATTACH_SIG);
    if (signal != nullptr) *signal = nullptr;
    if (attacher == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "attach by no living process: signal freed");
        SignalPool::release(buffer);
        return 0;
    }
    Process* target = findProcess(pid);
    if (target == nullptr) { // already dead: the signal comes back at once
        deliver(buffer, pid, attacher->pid());
        preemptIfNeeded();
        return 0;
    }
    OSATTREF ref = m_nextAttachRef++;
    m_attaches.emplace(ref, Attach{attacher->pid(), pid, buffer});
    target->m_attachedBy.push_back(ref);
    attacher->m_attaches.push_back(ref);
    return ref;
}

void World::detach(OSATTREF* ref)
{
    if (ref == nullptr) return;
    auto it = m_attaches.find(*ref);
    *ref = 0;
    if (it == m_attaches.end()) return; // fired already, or never was
    SignalPool::release(it->second.signal);
    m_attaches.erase(it);
}

// --- time-outs ----------------------------------------------------------------

OSTMOREF World::requestTimeout(PROCESS requester, OSTIME ms, Signal** signal)
{
    Process* process = findProcess(requester);
    if (signal == nullptr || *signal == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "request_tmo without a signal ignored");
        return {};
    }
    Signal* buffer = *signal;
    *signal = nullptr;
    if (process == nullptr) {
        SSC_TRACE(oseTraceGroup(), 1, "request_tmo by no living process: signal freed");
        SignalPool::release(buffer);
        return {};
    }
    return m_timeouts.add(m_clock.now() + ms, {TimeoutEntry::Kind::DeliverSignal, process->pid(), 0, buffer});
}

Signal* World::cancelTimeout(OSTMOREF* ref)
{
    if (ref == nullptr) return nullptr;
    TimeoutEntry entry;
    bool pending = m_timeouts.cancel(*ref, &entry);
    *ref = {};
    return pending ? entry.signal : nullptr;
}

bool World::restartTimeout(OSTMOREF* ref, OSTIME ms)
{
    if (ref == nullptr) return false;
    TimeoutEntry entry;
    if (!m_timeouts.cancel(*ref, &entry)) return false;
    *ref = m_timeouts.add(m_clock.now() + ms, entry);
    return true;
}

// --- death ------------------------------------------------------------------

void World::terminate(Process& process)
{
    if (process.isDead()) return;
    process.m_state = RunState::Dead;
    m_ready.remove(&process);
    process.node().removeName(process.name(), process.pid());
    for (const std::string& alias : process.m_aliases) process.node().removeName(alias, process.pid());
    m_timeouts.cancel(process.m_wakeRef);
    m_timeouts.dropEntriesOf(process.pid());
    process.m_queue.clear();
    dropOwnedResources(process);
    fireAttaches(process);
    m_dead.push_back(process.pid());
    if (process.kind() == ProcessKind::Fiber && process.m_entered && &process != m_pCurrent &&
        !process.m_pFiber->isFinished())
        m_unwinding.push_back(&process);
}

void World::dropOwnedResources(Process& process)
{
    for (auto it = m_pendingHunts.begin(); it != m_pendingHunts.end();) {
        if (it->hunter != process.pid()) { ++it; continue; }
        SignalPool::release(it->signal);
        it = m_pendingHunts.erase(it);
    }
    for (OSATTREF ref : process.m_attaches) {
        auto it = m_attaches.find(ref);
        if (it == m_attaches.end()) continue;
        SignalPool::release(it->second.signal);
        m_attaches.erase(it);
    }
    process.m_attaches.clear();
    if (process.kind() == ProcessKind::Proxy) process.m_pProxyEnd->proxies.erase(process.m_proxyTarget);
    // The proxies that stand for this process on other nodes die with it.
    std::vector<PROCESS> proxies;
    proxies.swap(process.m_proxies);
    for (PROCESS proxy : proxies)
        if (Process* standIn = findProcess(proxy)) terminate(*standIn);
}

void World::fireAttaches(Process& process)
{
    std::vector<OSATTREF> refs;
    refs.swap(process.m_attachedBy);
    for (OSATTREF ref : refs) {
        auto it = m_attaches.find(ref);
        if (it == m_attaches.end()) continue; // detached
        Attach attach = it->second;
        m_attaches.erase(it);
        if (m_inDestructor) {
            SignalPool::release(attach.signal);
            continue;
        }
        deliver(attach.signal, process.pid(), attach.attacher);
    }
}

void World::reapDeadProcesses()
{
    std::vector<PROCESS> stillUnwinding;
    for (PROCESS pid : m_dead) {
        auto it = m_processes.find(pid);
        if (it == m_processes.end()) continue;
        Process& process = *it->second;
        bool unwinding = std::find(m_unwinding.begin(), m_unwinding.end(), &process) != m_unwinding.end();
        if (&process == m_pCurrent || unwinding) {
            stillUnwinding.push_back(pid);
            continue;
        }
        m_processes.erase(it);
    }
    m_dead.swap(stillUnwinding);
}

} // namespace ose
