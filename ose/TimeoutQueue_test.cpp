#include "ose/TimeoutQueue.h"

#include "ose/SignalPool.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

namespace ose {
namespace {

// The queue against a plain ordered model: whatever mix of requests,
// cancels and expiries, entries come out by time and, at equal times, in the
// order they were requested, and a cancel finds exactly the pending ones.
TEST(TimeoutQueueTest, ExpiriesComeByTimeThenRequestOrderWhateverWasCancelledBetween)
{
    std::mt19937 random(11);
    TimeoutQueue queue;
    std::map<std::pair<std::uint64_t, std::uint64_t>, PROCESS> model; // (when, seq) -> pid as a tag
    std::vector<OSTMOREF> refs;
    std::uint64_t now = 0;
    std::uint64_t seq = 0;
    for (int step = 0; step < 20000; ++step) {
        const unsigned choice = random() % 10;
        if (choice < 5) {
            const std::uint64_t when = now + random() % 1000; // some equal times, a deep heap
            const PROCESS tag = static_cast<PROCESS>(++seq);
            refs.push_back(queue.add(when, {TimeoutEntry::Kind::WakeProcess, tag, 0, nullptr}));
            model[{when, seq}] = tag;
        } else if (choice < 9 && !refs.empty()) {
            const std::size_t pick = random() % refs.size();
            const OSTMOREF ref = refs[pick];
            TimeoutEntry entry;
            const bool pending = model.erase({ref.when, ref.seq}) == 1;
            ASSERT_EQ(queue.cancel(ref, &entry), pending) << "step " << step;
            if (pending) {
                EXPECT_EQ(entry.pid, static_cast<PROCESS>(ref.seq));
            }
        } else {
            now += random() % 40;
            TimeoutEntry entry;
            while (queue.popDue(now, entry)) {
                ASSERT_FALSE(model.empty());
                ASSERT_LE(model.begin()->first.first, now);
                ASSERT_EQ(entry.pid, model.begin()->second) << "step " << step;
                model.erase(model.begin());
            }
            ASSERT_TRUE(model.empty() || model.begin()->first.first > now);
        }
        ASSERT_EQ(queue.size(), model.size());
        if (model.empty()) ASSERT_FALSE(queue.nextTime());
        else ASSERT_EQ(queue.nextTime(), model.begin()->first.first);
    }
}

TEST(TimeoutQueueTest, AStaleOrForgedReferenceCancelsNothingAlsoWhenItsRowIsReused)
{
    TimeoutQueue queue;
    const OSTMOREF first = queue.add(10, {TimeoutEntry::Kind::WakeProcess, 1, 0, nullptr});
    EXPECT_TRUE(queue.cancel(first));
    const OSTMOREF second = queue.add(10, {TimeoutEntry::Kind::WakeProcess, 2, 0, nullptr});
    EXPECT_EQ(second.slot, first.slot); // the row was reused
    EXPECT_FALSE(queue.cancel(first));
    EXPECT_FALSE(queue.cancel(OSTMOREF{10, second.seq, second.slot + 100}));
    EXPECT_FALSE(queue.cancel(OSTMOREF{}));
    EXPECT_EQ(queue.size(), 1u);
    TimeoutEntry entry;
    ASSERT_TRUE(queue.popDue(10, entry));
    EXPECT_EQ(entry.pid, 2u);
}

TEST(TimeoutQueueTest, ADeadProcessLosesItsEntriesAndTheirSignalsTheOthersKeepTheirOrder)
{
    const std::size_t liveBefore = SignalPool::liveCount();
    {
        TimeoutQueue queue;
        for (std::uint64_t i = 1; i <= 9; ++i) {
            const PROCESS pid = i % 3 == 0 ? 7 : 8;
            queue.add(10 - i, {TimeoutEntry::Kind::DeliverSignal, pid, 10 - i, SignalPool::allocate(8, 1)});
        }
        queue.dropEntriesOf(7);
        EXPECT_EQ(SignalPool::liveCount(), liveBefore + 6);
        std::vector<std::uint64_t> times;
        TimeoutEntry entry;
        while (queue.popDue(5, entry)) {
            EXPECT_EQ(entry.pid, 8u);
            SignalPool::release(entry.signal);
            times.push_back(entry.token);
        }
        EXPECT_EQ(times, (std::vector<std::uint64_t>{2, 3, 5}));
        EXPECT_EQ(queue.size(), 3u);
    }
    // What was still pending went with the queue.
    EXPECT_EQ(SignalPool::liveCount(), liveBefore);
}

} // namespace
} // namespace ose
