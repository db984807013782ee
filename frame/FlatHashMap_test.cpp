#include "frame/FlatHashMap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <unordered_map>

namespace {

// Every key of a few falls on one of four homes: long runs that wrap around
// the end of the table, where removal by shifting back goes wrong first.
struct CrowdingHash {
    std::size_t operator()(std::uint32_t key) const { return key % 4; }
};

struct PlainHash {
    std::size_t operator()(std::uint32_t key) const { return key; }
};

template <typename Hash>
void compareWithModel(unsigned seed, std::uint32_t keyRange, int steps)
{
    FlatHashMap<std::uint32_t, std::uint32_t, Hash> map;
    std::unordered_map<std::uint32_t, std::uint32_t> model;
    std::mt19937 random(seed);
    for (int step = 0; step < steps; ++step) {
        const std::uint32_t key = random() % keyRange;
        switch (random() % 3) {
        case 0: {
            const bool added = model.emplace(key, static_cast<std::uint32_t>(step)).second;
            ASSERT_EQ(map.insert(key, static_cast<std::uint32_t>(step)), added) << "step " << step;
            break;
        }
        case 1:
            ASSERT_EQ(map.erase(key), model.erase(key) == 1) << "step " << step;
            break;
        default:
            break;
        }
        ASSERT_EQ(map.size(), model.size());
        // Every key the model holds is still found with its value; the others are not.
        for (std::uint32_t probe = 0; probe < keyRange; ++probe) {
            auto expected = model.find(probe);
            const std::uint32_t* found = map.find(probe);
            if (expected == model.end()) {
                ASSERT_EQ(found, nullptr) << "key " << probe << " at step " << step;
            } else {
                ASSERT_NE(found, nullptr) << "key " << probe << " at step " << step;
                ASSERT_EQ(*found, expected->second);
            }
        }
    }
}

TEST(FlatHashMapTest, InsertsAndRemovalsInCrowdedRunsKeepEveryOtherKeyFindable)
{
    for (unsigned seed = 1; seed <= 20; ++seed) compareWithModel<CrowdingHash>(seed, 40, 400);
}

TEST(FlatHashMapTest, GrowsAndKeepsItsKeysWithAPlainHash)
{
    compareWithModel<PlainHash>(7, 3000, 6000);
}

TEST(FlatHashMapTest, ASecondInsertOfAKeyChangesNothingAndClearEmptiesTheMap)
{
    FlatHashMap<std::uint32_t, std::uint32_t, PlainHash> map;
    EXPECT_EQ(map.find(5), nullptr);
    EXPECT_FALSE(map.erase(5));
    EXPECT_TRUE(map.insert(5, 50));
    EXPECT_FALSE(map.insert(5, 51));
    ASSERT_NE(map.find(5), nullptr);
    EXPECT_EQ(*map.find(5), 50u);
    map.clear();
    EXPECT_EQ(map.size(), 0u);
    EXPECT_EQ(map.find(5), nullptr);
    EXPECT_TRUE(map.insert(5, 52));
    EXPECT_EQ(*map.find(5), 52u);
}

} // namespace
