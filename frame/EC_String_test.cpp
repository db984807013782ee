#include "frame/EC_String.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(EC_StringTest, SizeCountsTheNulAndNilIsTheEmptyText)
{
    EC_String nil(nullptr);
    EXPECT_STREQ(nil.c_str(), "");
    EXPECT_EQ(nil.size(), 1u);
    EXPECT_TRUE(nil.empty());
    EC_String text("PSU 1");
    EXPECT_EQ(text.size(), 6u);
    EXPECT_EQ(text.length(), 5u);
    EXPECT_EQ(nil, EC_String());
}

TEST(EC_StringTest, FormattingBuildsTheWholeTextWhateverItsLength)
{
    EC_String text = EC_String::format("%s:%d", "fault", 21503);
    EXPECT_EQ(text, "fault:21503");
    EXPECT_EQ(text.size(), 12u);
    EC_String longText = EC_String::format("%0300d", 7);
    EXPECT_EQ(longText.length(), 300u);
    EXPECT_EQ(longText.c_str()[299], '7');
    EXPECT_TRUE(EC_String::format("%s", "").empty());
}

TEST(EC_StringTest, EqualityComparesTextAndCopiesAreIndependent)
{
    EC_String a("abc");
    EC_String b = a;
    EXPECT_EQ(a, b);
    b = "abd";
    EXPECT_FALSE(a == b);
    EXPECT_EQ(a, "abc");
    EXPECT_FALSE(a == "ab") << "a prefix is not equal";
    EC_String moved = std::move(b);
    EXPECT_EQ(moved, "abd");
    EXPECT_STREQ(b.c_str(), ""); // NOLINT: the moved-from text stays usable
    a = a;
    EXPECT_EQ(a, "abc");
}

} // namespace
