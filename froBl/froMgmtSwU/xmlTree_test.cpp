#include "froBl/froMgmtSwU/export/xmlTree.h"

#include <gtest/gtest.h>

namespace {

const std::string kValue = "<struct name=\"unit\">\n"
                           "<attr name=\"0\" type=\"STRING\" value=\"named zero\"/>\n"
                           "<attr name=\"count\" type=\"S32\" value=\"-3\"/>\n"
                           "<attr name=\"mask\" type=\"U32\" value=\"4294967295\"/>\n"
                           "<array name=\"ports\">\n"
                           "<attr type=\"S32\" value=\"7\"/>\n"
                           "<attr type=\"S32\" value=\"8\"/>\n"
                           "</array>\n"
                           "</struct>\n";

TEST(xmlTreeTest, NodesAreFoundByNameFirstThenByIndex)
{
    xmlTree tree("unit", "struct", kValue);
    ASSERT_FALSE(tree.failed());
    std::string text;
    ASSERT_TRUE(tree.getValue(text, {"0"}));
    EXPECT_EQ(text, "named zero");
    ASSERT_TRUE(tree.getName(text, {"1"}));
    EXPECT_EQ(text, "count");
    ASSERT_TRUE(tree.getType(text, {"ports", "1"}));
    EXPECT_EQ(text, "S32");
    EXPECT_FALSE(tree.getValue(text, {"ports", "2"}));
    EXPECT_FALSE(tree.getValue(text, {"nothing"}));
    EXPECT_FALSE(tree.getValue(text, {"-1"}));
    ASSERT_TRUE(tree.getName(text));
    EXPECT_EQ(text, "unit");
}

TEST(xmlTreeTest, NumbersAreReadOnlyFromTheirOwnType)
{
    xmlTree tree("unit", "struct", kValue);
    std::int32_t s = 0;
    std::uint32_t u = 0;
    EXPECT_TRUE(tree.getS32(s, {"count"}));
    EXPECT_EQ(s, -3);
    EXPECT_FALSE(tree.getU32(u, {"count"}));
    EXPECT_TRUE(tree.getU32(u, {"mask"}));
    EXPECT_EQ(u, 4294967295u);
    EXPECT_FALSE(tree.getS32(s, {"mask"}));
    std::vector<std::int32_t> ports;
    EXPECT_TRUE(tree.getS32Array(ports, {"ports"}));
    EXPECT_EQ(ports, (std::vector<std::int32_t>{7, 8}));
    EXPECT_FALSE(tree.getS32Array(ports, {"count"}));

    xmlTree negative("unit", "struct", "<struct><attr name=\"m\" type=\"U32\" value=\"-1\"/>"
                                       "<attr name=\"g\" type=\"S32\" value=\"12abc\"/></struct>");
    EXPECT_FALSE(negative.getU32(u, {"m"}));
    EXPECT_FALSE(negative.getS32(s, {"g"}));

    xmlTree mixed("a", "array", "<array><attr type=\"S32\" value=\"1\"/><attr type=\"STRING\" value=\"x\"/></array>");
    ports.clear();
    EXPECT_FALSE(mixed.getS32Array(ports));
    EXPECT_TRUE(ports.empty()) << "nothing is appended from a mixed array";
}

TEST(xmlTreeTest, ValuesCanBeSetAndAddedWithinTheRules)
{
    xmlTree tree("unit", "struct", "<struct name=\"unit\"></struct>");
    EXPECT_TRUE(tree.addString("label", "a<b"));
    EXPECT_TRUE(tree.addS32("count", -1));
    EXPECT_TRUE(tree.addArray("list"));
    EXPECT_TRUE(tree.addArrayS32(5, {"list"}));
    EXPECT_TRUE(tree.addStruct("inner"));
    EXPECT_TRUE(tree.addU32("n", 9, {"inner"}));
    EXPECT_FALSE(tree.addString("label", "again"));
    EXPECT_FALSE(tree.addS32("named", 1, {"list"}));
    EXPECT_FALSE(tree.addS32("below", 1, {"count"}));
    EXPECT_TRUE(tree.setS32(4, {"count"}));
    EXPECT_FALSE(tree.setU32(4, {"count"}));
    EXPECT_TRUE(tree.setString("x&y", {"label"}));

    EXPECT_EQ(tree.toString(), "<struct name=\"unit\">\n"
                               "<attr name=\"label\" type=\"STRING\" value=\"x&amp;y\"/>\n"
                               "<attr name=\"count\" type=\"S32\" value=\"4\"/>\n"
                               "<array name=\"list\">\n"
                               "<attr type=\"S32\" value=\"5\"/>\n"
                               "</array>\n"
                               "<struct name=\"inner\">\n"
                               "<attr name=\"n\" type=\"U32\" value=\"9\"/>\n"
                               "</struct>\n"
                               "</struct>");
    xmlTree again("unit", "struct", tree.toString());
    EXPECT_EQ(again.toString(), tree.toString());
}

TEST(xmlTreeTest, WhatIsNotAValueTreeFails)
{
    EXPECT_TRUE(xmlTree("a", "struct", "<struct><attr name=\"b\" type=\"U64\" value=\"1\"/></struct>").failed());
    EXPECT_TRUE(xmlTree("a", "struct", "<struct><attr name=\"b\" type=\"S32\"/></struct>").failed());
    EXPECT_TRUE(xmlTree("a", "struct", "<struct>").failed());
    EXPECT_TRUE(xmlTree("a", "struct", "").failed());
    EXPECT_TRUE(xmlTree("a", "bool", "1").failed());
    EXPECT_FALSE(xmlTree("a", "S32", "1").failed());
    xmlTree broken("a", "struct", "<struct><other/></struct>");
    std::string text;
    EXPECT_TRUE(broken.failed());
    EXPECT_FALSE(broken.getName(text));
}

} // namespace
