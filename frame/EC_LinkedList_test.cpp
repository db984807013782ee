#include "frame/EC_LinkedList.h"
#include "frame/EC_LinkedListIterator.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

std::vector<int> rows(EC_LinkedList<int>& list)
{
    std::vector<int> seen;
    EC_LinkedListIterator<int> walk(list);
    while (int* row = walk.next()) seen.push_back(*row);
    return seen;
}

TEST(EC_LinkedListTest, AddGoesToTheHeadAndAddLastToTheTailAlsoAfterTheTailWasRemoved)
{
    EC_LinkedList<int> list;
    list.add(1);
    list.add(2);
    list.addLast(3);
    EXPECT_EQ(rows(list), (std::vector<int>{2, 1, 3}));
    EXPECT_EQ(list.count(), 3u);

    EXPECT_TRUE(list.remove(3));
    list.addLast(4);
    EXPECT_EQ(rows(list), (std::vector<int>{2, 1, 4}));
    list.clear();
    EXPECT_TRUE(list.isEmpty());
    list.addLast(5);
    list.add(6);
    EXPECT_EQ(rows(list), (std::vector<int>{6, 5}));
}

TEST(EC_LinkedListTest, RemoveTakesTheFirstEqualRowAndRemoveIfAllMatches)
{
    EC_LinkedList<int> list;
    for (int value : {1, 2, 1, 3, 1}) list.addLast(value);
    EXPECT_TRUE(list.remove(1));
    EXPECT_EQ(rows(list), (std::vector<int>{2, 1, 3, 1}));
    EXPECT_FALSE(list.remove(7));
    EXPECT_EQ(list.removeIf([](int v) { return v == 1; }), 2u);
    EXPECT_EQ(rows(list), (std::vector<int>{2, 3}));
    EXPECT_TRUE(list.contains(3));
    EXPECT_FALSE(list.contains(1));
    ASSERT_NE(list.find([](int v) { return v > 2; }), nullptr);
    EXPECT_EQ(*list.find([](int v) { return v > 2; }), 3);
    EXPECT_EQ(list.count(), 2u);
}

TEST(EC_LinkedListTest, CursorWalkSurvivesRemovalOfTheRowInHandAndOfTheRowBehindIt)
{
    EC_LinkedList<int> list;
    for (int value : {1, 2, 3, 4, 5}) list.addLast(value);
    std::vector<int> seen;
    for (int* row = list.first(); row != nullptr; row = list.next()) {
        const int value = *row;
        seen.push_back(value);
        if (value == 2) list.remove(2);       // the row in hand, by value
        if (value == 3) list.remove(4);       // the row behind
        if (value == 5) list.removeCurrent(); // the last row, through the cursor
    }
    EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 5}));
    EXPECT_EQ(rows(list), (std::vector<int>{1, 3}));
    EXPECT_EQ(list.current(), nullptr);
}

TEST(EC_LinkedListTest, RowInHandAndItsSuccessorBothRemovedGivesTheRowAfterThem)
{
    EC_LinkedList<int> list;
    for (int value : {1, 2, 3, 4}) list.addLast(value);
    ASSERT_EQ(*list.first(), 1);
    list.next();
    list.removeCurrent(); // 2
    EXPECT_EQ(list.current(), nullptr);
    list.remove(3);
    ASSERT_NE(list.next(), nullptr);
    EXPECT_EQ(*list.current(), 4);
    EXPECT_EQ(list.next(), nullptr);
}

TEST(EC_LinkedListTest, IteratorsNestAndLeaveTheCursorAlone)
{
    EC_LinkedList<int> list;
    for (int value : {1, 2, 3}) list.addLast(value);
    ASSERT_EQ(*list.first(), 1);
    std::vector<std::pair<int, int>> pairs;
    EC_LinkedListIterator<int> outer(list);
    while (int* a = outer.next()) {
        EC_LinkedListIterator<int> inner(list);
        while (int* b = inner.next())
            if (*a < *b) pairs.emplace_back(*a, *b);
    }
    EXPECT_EQ(pairs, (std::vector<std::pair<int, int>>{{1, 2}, {1, 3}, {2, 3}}));
    EXPECT_EQ(*list.current(), 1) << "the cursor did not move";
    EXPECT_EQ(*list.next(), 2);
}

TEST(EC_LinkedListTest, IteratorSurvivesRemovalThroughAnotherWalkAndACopyWalksOnFromTheSamePlace)
{
    EC_LinkedList<int> list;
    for (int value : {1, 2, 3, 4}) list.addLast(value);
    EC_LinkedListIterator<int> walk(list);
    walk.next();
    walk.next(); // at 2
    EC_LinkedListIterator<int> copy(walk);
    list.removeIf([](int v) { return v == 2 || v == 3; });
    EXPECT_EQ(walk.current(), nullptr);
    ASSERT_NE(walk.next(), nullptr);
    EXPECT_EQ(*walk.current(), 4);
    ASSERT_NE(copy.next(), nullptr);
    EXPECT_EQ(*copy.current(), 4);
    EXPECT_EQ(walk.next(), nullptr);
    walk.reset();
    EXPECT_EQ(*walk.next(), 1);
}

TEST(EC_LinkedListTest, IteratorOfADestroyedListGivesNoMoreRows)
{
    auto list = std::make_unique<EC_LinkedList<int>>();
    list->add(1);
    list->add(2);
    EC_LinkedListIterator<int> walk(*list);
    walk.next();
    list.reset();
    EXPECT_EQ(walk.current(), nullptr);
    EXPECT_EQ(walk.next(), nullptr);
}

TEST(EC_LinkedListTest, OwnedRowsAreDestroyedWithTheListAndALongListDoesNotRecurse)
{
    auto counter = std::make_shared<int>(0);
    {
        EC_LinkedList<std::shared_ptr<int>> list;
        for (int i = 0; i < 200000; ++i) list.add(counter);
        EXPECT_EQ(counter.use_count(), 200001);
    }
    EXPECT_EQ(counter.use_count(), 1);
}

} // namespace
