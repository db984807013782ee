#include "ose/TestWorld.h"
#include "ose/Trace.h"

#include <cstdio>
#include <poll.h>
#include <unistd.h>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

namespace ose::testing {
namespace {

using WorldTest = TestWorld;

TEST_F(WorldTest, HigherPriorityRunsFirstAndEqualsTakeTurnsInArrivalOrder)
{
    std::vector<std::string> order;
    auto step = [&](const char* name) {
        return [&order, name] {
            order.push_back(name);
            delay(0);
            order.push_back(std::string(name) + "'");
        };
    };
    spawn("low", step("low"), 20);
    spawn("a", step("a"), 10);
    spawn("b", step("b"), 10);
    spawn("high", step("high"), 2);
    world().runUntilIdle();
    EXPECT_EQ(order, (std::vector<std::string>{"high", "high'", "a", "b", "a'", "b'", "low", "low'"}));
}

TEST_F(WorldTest, SendingToAHigherPriorityProcessPreemptsTheSender)
{
    std::vector<std::string> order;
    PROCESS urgent = spawn("urgent", [&] {
        Signal* s = receive(kAnySignal);
        order.push_back("urgent got it");
        free_buf(&s);
    }, 5);
    spawn("worker", [&] {
        Signal* s = word(1, 0);
        send(&s, urgent);
        order.push_back("worker goes on");
    }, 16);
    world().runUntilIdle();
    EXPECT_EQ(order, (std::vector<std::string>{"urgent got it", "worker goes on"}));
}

TEST_F(WorldTest, HuntFindsAnExistingNameAtOnceAndALaterOneWhenItAppears)
{
    PROCESS foundNow = 0;
    PROCESS huntSender = 0;
    std::uint64_t huntArrivedAt = 0;
    PROCESS late = 0;
    spawn("hunter", [&] {
        EXPECT_TRUE(hunt("early", 0, &foundNow, nullptr));
        PROCESS none = 1;
        Signal* huntSignal = word(99, 7);
        EXPECT_FALSE(hunt("late", 0, &none, &huntSignal));
        EXPECT_EQ(none, 0u);
        EXPECT_EQ(huntSignal, nullptr);
        Signal* s = receive(kAnySignal);
        huntSender = sender(&s);
        huntArrivedAt = get_time_ms();
        EXPECT_EQ(valueOf(s), 7u);
        free_buf(&s);
    });
    PROCESS early = spawn("early", [] { delay(10000); });
    spawn("creator", [&] {
        delay(300);
        late = create_process(ProcessType::Prioritized, "late", [] { delay(10000); }, 1024, 16);
        start(late);
    });
    world().runUntilIdle();
    EXPECT_EQ(foundNow, early);
    EXPECT_EQ(huntSender, late);
    EXPECT_EQ(huntArrivedAt, 300u);
}

TEST_F(WorldTest, HuntOfAnExistingNameSendsTheHuntSignalAtOnceAndFindsTheFirstOfEqualNames)
{
    PROCESS first = spawn("twin", [] { delay(1000); });
    spawn("twin", [] { delay(1000); });
    PROCESS from = 0;
    spawn("hunter", [&] {
        Signal* huntSignal = alloc(4, 13);
        PROCESS pid = 0;
        EXPECT_TRUE(hunt("twin", 0, &pid, &huntSignal));
        EXPECT_EQ(pid, first);
        Signal* s = receive_w_tmo(0, kAnySignal);
        ASSERT_NE(s, nullptr);
        from = sender(&s);
        free_buf(&s);
    });
    world().runUntilIdle();
    EXPECT_EQ(from, first);
}

TEST_F(WorldTest, TwoNodesWithTheSameNameEachFindTheirOwn)
{
    Node& north = world().addNode("north");
    Node& south = world().addNode("south");
    PROCESS northServer = spawn(north, "APC_INCI_Server", [] { delay(100); });
    PROCESS southServer = spawn(south, "APC_INCI_Server", [] { delay(100); });
    PROCESS seenNorth = 0;
    PROCESS seenSouth = 0;
    spawn(north, "client", [&] { hunt("APC_INCI_Server", 0, &seenNorth, nullptr); });
    spawn(south, "client", [&] { hunt("APC_INCI_Server", 0, &seenSouth, nullptr); });
    world().runUntilIdle();
    EXPECT_EQ(seenNorth, northServer);
    EXPECT_EQ(seenSouth, southServer);
}

TEST_F(WorldTest, AttachFiresFromTheDeadProcessForEveryAttacherAndAtOnceForTheDead)
{
    std::vector<std::pair<std::string, PROCESS>> fired;
    PROCESS victim = spawn("victim", [] { receive(kAnySignal); });
    auto watcher = [&](const char* name, SIGSELECT no) {
        return [&fired, &victim, name, no] {
            Signal* s = word(no, 0);
            attach(&s, victim);
            Signal* got = receive(kAnySignal);
            fired.emplace_back(name, sender(&got));
            free_buf(&got);
        };
    };
    spawn("w1", watcher("w1", 500));
    spawn("w2", watcher("w2", 501));
    spawn("killer", [&] {
        delay(50);
        kill_proc(victim);
        attach(nullptr, victim); // dead already: OS_ATTACH_SIG at once
        Signal* got = receive_w_tmo(0, kAnySignal);
        ASSERT_NE(got, nullptr);
        EXPECT_EQ(signalNumber(got), OS_ATTACH_SIG);
        fired.emplace_back("late", sender(&got));
        free_buf(&got);
    });
    world().runUntilIdle();
    // The killer runs on until it blocks; the watchers then run in attach order.
    ASSERT_EQ(fired.size(), 3u);
    EXPECT_EQ(fired[0], std::make_pair(std::string("late"), victim));
    EXPECT_EQ(fired[1], std::make_pair(std::string("w1"), victim));
    EXPECT_EQ(fired[2], std::make_pair(std::string("w2"), victim));
}

TEST_F(WorldTest, DetachedOrOrphanedAttachesNeverFire)
{
    int fired = 0;
    PROCESS victim = spawn("victim", [] { delay(100); });
    spawn("detacher", [&] {
        Signal* s = word(1, 0);
        OSATTREF ref = attach(&s, victim);
        detach(&ref);
        if (receive_w_tmo(500, kAnySignal) != nullptr) ++fired;
    });
    spawn("gone-first", [&] {
        Signal* s = word(2, 0);
        attach(&s, victim); // this process dies before the victim: its signal must be freed
    });
    world().runUntilIdle();
    EXPECT_EQ(fired, 0);
}

TEST_F(WorldTest, PhantomRedirectsEverySignalKeepingTheOriginalSender)
{
    PROCESS target = 0;
    PROCESS special = 0;
    std::vector<std::pair<std::string, PROCESS>> seen;
    auto sink = [&](const char* name) {
        return [&seen, name] {
            for (;;) {
                Signal* s = receive(kAnySignal);
                seen.emplace_back(std::string(name) + ":" + std::to_string(signalNumber(s)), addressee(&s));
                free_buf(&s);
            }
        };
    };
    target = spawn("SSC_THREAD", sink("core"));
    special = spawn("special", sink("special"));
    ProcessSpec phantom;
    phantom.type = ProcessType::Phantom;
    phantom.name = "ssc_equipment_management_server";
    phantom.redirection = {{2, target}, {77, special}};
    PROCESS phantomPid = world().createProcess(node(), phantom);
    PROCESS client = spawn("client", [&] {
        PROCESS server = 0;
        ASSERT_TRUE(hunt("ssc_equipment_management_server", 0, &server, nullptr));
        Signal* a = word(5, 0);
        send(&a, server);
        Signal* b = word(77, 0);
        send(&b, server);
        delay(1);
    });
    world().runFor(10);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].first, "core:5");
    EXPECT_EQ(seen[1].first, "special:77");
    EXPECT_EQ(seen[0].second, phantomPid) << "the addressee is the phantom the client sent to";
    (void)client;
}

TEST_F(WorldTest, PhantomRedirectionLoopIsCutAndTheSignalFreed)
{
    ProcessSpec a;
    a.type = ProcessType::Phantom;
    a.name = "a";
    PROCESS pa = world().createProcess(node(), a);
    ProcessSpec b = a;
    b.name = "b";
    b.redirection = {{1, pa}};
    PROCESS pb = world().createProcess(node(), b);
    // Point a at b afterwards through a third table: a -> b -> a ...
    ProcessSpec c = a;
    c.name = "c";
    c.redirection = {{1, pb}};
    PROCESS pc = world().createProcess(node(), c);
    spawn("sender", [&] {
        Signal* s = word(1, 0);
        send(&s, pc); // c -> b -> a (a redirects nowhere): freed with a trace
    });
    world().runUntilIdle();
    SUCCEED();
}

struct Guard {
    int* counter;
    ~Guard() { ++*counter; }
};

TEST_F(WorldTest, KillUnwindsTheVictimsStackAndFiresItsAttaches)
{
    int destroyed = 0;
    PROCESS victim = spawn("victim", [&] {
        Guard guard{&destroyed};
        std::vector<int> owned(1000, 1); // must not leak when killed
        receive(kAnySignal);
    });
    PROCESS selfKiller = spawn("self", [&] {
        Guard guard{&destroyed};
        kill_proc(current_process());
        ADD_FAILURE() << "a process that killed itself went on";
    });
    PROCESS attachSender = 0;
    spawn("killer", [&] {
        Signal* s = word(3, 0);
        attach(&s, victim);
        delay(10);
        kill_proc(victim);
        Signal* got = receive(kAnySignal);
        attachSender = sender(&got);
        free_buf(&got);
        kill_proc(victim); // dead already: traced, nothing else
    });
    world().runUntilIdle();
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(attachSender, victim);
    (void)selfKiller;
}

TEST_F(WorldTest, DestroyingAWorldUnwindsBlockedProcesses)
{
    int destroyed = 0;
    spawn("blocked", [&] {
        Guard guard{&destroyed};
        Signal* held = alloc(100, 1); // a buffer held on the stack is leaked by design; free it on unwind
        struct Free { Signal** s; ~Free() { free_buf(s); } } release{&held};
        receive(kAnySignal);
    });
    world().runFor(5);
    m_world.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(WorldTest, ExceptionEscapingAProcessEndsOnlyThatProcess)
{
    bool otherRan = false;
    spawn("thrower", [] { throw std::runtime_error("boom"); });
    spawn("other", [&] {
        delay(5);
        otherRan = true;
    });
    world().runUntilIdle();
    EXPECT_TRUE(otherRan);
}

TEST_F(WorldTest, PostFromAnotherThreadRunsOnTheWorldAndStopEndsRun)
{
    std::vector<std::uint32_t> got;
    PROCESS receiver = spawn("receiver", [&] {
        for (;;) {
            Signal* s = receive(kAnySignal);
            got.push_back(valueOf(s));
            free_buf(&s);
        }
    });
    std::thread outside([&] {
        for (std::uint32_t i = 1; i <= 3; ++i)
            world().post([this, receiver, i] {
                Signal* s = word(1, i);
                world().send(&s, 0, receiver);
            });
        world().post([this] { world().stop(); });
    });
    world().run();
    outside.join();
    EXPECT_EQ(got, (std::vector<std::uint32_t>{1, 2, 3}));
}

// Processes that only give way to each other switch straight from one to the
// other; outside work, a stop and watched descriptors must still get their
// turn, or such a pair would hold the world for ever.
TEST_F(WorldTest, ProcessesThatOnlyGiveWayToEachOtherStillLetPostedWorkAndStopIn)
{
    std::uint64_t turns = 0;
    bool posted = false;
    spawn("ping", [&] {
        for (;;) {
            if (++turns == 1000) world().post([&] {
                posted = true;
                world().stop();
            });
            delay(0);
        }
    });
    spawn("pong", [] {
        for (;;) delay(0);
    });
    world().run();
    EXPECT_TRUE(posted);
    EXPECT_GE(turns, 1000u);
}

TEST_F(WorldTest, ProcessesThatOnlyGiveWayToEachOtherStillLetAWatchedDescriptorBeHeard)
{
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    const char byte = 'x';
    ASSERT_EQ(write(fds[1], &byte, 1), 1);
    bool heard = false;
    world().watchFd(fds[0], POLLIN, [this, &heard, &fds](short) {
        char in = 0;
        EXPECT_EQ(read(fds[0], &in, 1), 1);
        heard = true;
        world().stop();
    });
    auto busy = [] {
        for (;;) delay(0);
    };
    spawn("ping", busy);
    spawn("pong", busy);
    world().run();
    EXPECT_TRUE(heard);
    world().unwatchFd(fds[0]);
    close(fds[0]);
    close(fds[1]);
}

// Order across a switch straight from process to process: a time-out that is
// due when one blocks is fired before the next is chosen, and a higher
// priority made ready still comes first.
TEST_F(WorldTest, ASwitchBetweenProcessesFiresDueTimeOutsFirstAndKeepsPriorities)
{
    std::vector<std::string> order;
    PROCESS urgent = spawn("urgent", [&] {
        Signal* s = receive(kAnySignal);
        order.push_back("urgent");
        free_buf(&s);
    }, 5);
    spawn("b", [&] {
        for (const char* name : {"b", "b'", "b''"}) {
            order.push_back(name);
            delay(0);
        }
    });
    spawn("a", [&] {
        Signal* s = word(1, 0);
        request_tmo(0, &s); // due at once
        order.push_back("a");
        delay(0);
        Signal* back = receive(kAnySignal);
        order.push_back("a got its time-out");
        free_buf(&back);
        Signal* wake = word(2, 0);
        send(&wake, urgent);
        order.push_back("a after urgent");
    });
    world().runUntilIdle();
    EXPECT_EQ(order, (std::vector<std::string>{"b", "a", "b'", "a got its time-out", "urgent", "a after urgent",
                                               "b''"}));
}

TEST_F(WorldTest, ExternalProcessQueuesItsSignalsAndIsToldOfEach)
{
    int told = 0;
    PROCESS outside = world().createExternalProcess(node(), "A4ciServer", [&](Process&) { ++told; });
    world().publishName(outside, "HBX_0");
    PROCESS sawFrom = 0;
    spawn("inside", [&] {
        PROCESS pid = 0;
        ASSERT_TRUE(hunt("HBX_0", 0, &pid, nullptr));
        EXPECT_EQ(pid, outside);
        Signal* s = word(8, 1);
        send(&s, pid);
        sawFrom = current_process();
    });
    world().runUntilIdle();
    EXPECT_EQ(told, 1);
    static const SIGSELECT sel[] = {1, 8};
    Signal* s = world().takeSignal(outside, sel);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(sender(&s), sawFrom);
    free_buf(&s);
}

// A small scenario with priorities, time-outs and hunts, traced.
void tracedScenario(World& world)
{
    static const TraceGroupId group = Trace::registerGroup("scenario");
    Node& node = world.defaultNode();
    auto make = [&](const std::string& name, OSPRIORITY priority, std::function<void()> body) {
        ProcessSpec definition;
        definition.name = name;
        definition.priority = priority;
        definition.entry = std::move(body);
        world.start(world.createProcess(node, definition));
    };
    make("echo", 10, [] {
        for (int i = 0; i < 20; ++i) {
            Signal* s = receive(kAnySignal);
            SSC_TRACE(group, 7, "echo %u", valueOf(s));
            PROCESS back = sender(&s);
            send(&s, back);
        }
    });
    for (int n = 0; n < 4; ++n)
        make("client" + std::to_string(n), static_cast<OSPRIORITY>(12 + n), [n] {
            PROCESS echo = 0;
            hunt("echo", 0, &echo, nullptr);
            for (int i = 0; i < 5; ++i) {
                delay(static_cast<OSTIME>(100 * (n + 1)));
                Signal* s = word(1, static_cast<std::uint32_t>(n * 10 + i));
                send(&s, echo);
                Signal* r = receive(kAnySignal);
                SSC_TRACE(group, 7, "reply %u at %u", valueOf(r), get_ticks());
                free_buf(&r);
            }
        });
}

std::string runTraced(const std::string& path)
{
    std::remove(path.c_str());
    Trace::setOutputFile(path);
    Trace::configure("scenario:7");
    {
        World world;
        tracedScenario(world);
        world.runUntilIdle();
    }
    Trace::setOutputStderr();
    Trace::reset();
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    std::remove(path.c_str());
    return text.str();
}

TEST(WorldDeterminism, TheSameScenarioTracesTheSameBytesTwice)
{
    std::string first = runTraced(::testing::TempDir() + "run1.trace");
    std::string second = runTraced(::testing::TempDir() + "run2.trace");
    EXPECT_GT(first.size(), 1000u);
    EXPECT_EQ(first, second);
    EXPECT_NE(first.find("node0/client3 scenario 7"), std::string::npos);
}

} // namespace
} // namespace ose::testing
