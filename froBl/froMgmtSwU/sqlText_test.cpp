#include "froBl/froMgmtSwU/froSqlStatements.h"
#include "froBl/froMgmtSwU/sqlText.h"

#include <gtest/gtest.h>

namespace {

TEST(sqlTextTest, TextsBecomeLiteralsWithTheirQuotesDoubled)
{
    EXPECT_EQ(sqlText::quote("it's"), "'it''s'");
    EXPECT_EQ(sqlText::quote("');drop table x;--"), "''');drop table x;--'");
    EXPECT_EQ(sqlText::quote(""), "''");
}

TEST(sqlTextTest, IntegersMustBeWholeNumbersInRange)
{
    std::string literal;
    EXPECT_TRUE(sqlText::integerLiteral("-2147483648", "S32", literal));
    EXPECT_EQ(literal, "-2147483648");
    EXPECT_TRUE(sqlText::integerLiteral("4294967295", "u32", literal));
    EXPECT_TRUE(sqlText::integerLiteral("", "S32", literal));
    EXPECT_EQ(literal, "0");
    for (const char* bad : {"2147483648", "-1 ", " 1", "1); drop table x; --", "0x10", "1e3", "--1"})
        EXPECT_FALSE(sqlText::integerLiteral(bad, "S32", literal)) << bad;
    EXPECT_FALSE(sqlText::integerLiteral("-1", "U32", literal));
    EXPECT_FALSE(sqlText::integerLiteral("4294967296", "U32", literal));
}

TEST(sqlTextTest, OnlyPlainNamesAreIdentifiers)
{
    EXPECT_TRUE(sqlText::isIdentifier("apc_frodata_HwUnit_INITIAL"));
    for (const char* bad : {"", "1a", "a b", "a;", "a)", "n&amp;", "ä", "a-b"})
        EXPECT_FALSE(sqlText::isIdentifier(bad)) << bad;
    EXPECT_FALSE(sqlText::isIdentifier(std::string(65, 'a')));
}

TEST(sqlTextTest, TypeWordsMapToTwoColumnTypes)
{
    EXPECT_EQ(sqlText::sqlTypeOf("s32"), sqlText::SqlType::Integer);
    EXPECT_EQ(sqlText::sqlTypeOf("U32"), sqlText::SqlType::Integer);
    EXPECT_EQ(sqlText::sqlTypeOf("U64"), sqlText::SqlType::Varchar);
    EXPECT_EQ(sqlText::sqlTypeOf("struct"), sqlText::SqlType::Varchar);
    for (const char* other : {"float", "bool", "", "S32 ", "U3"})
        EXPECT_EQ(sqlText::sqlTypeOf(other), sqlText::SqlType::Varchar) << other;
}

TEST(froSqlStatementsTest, ColumnNamesMustBeDistinctAndFreeOfTheFixedColumnsAndKeywords)
{
    std::string text;
    EXPECT_TRUE(froSqlStatements::dataColumns({"a", "parentRef", "b"}, {"S32", "STRING", "STRING"}, text));
    for (const std::vector<std::string>& names : std::vector<std::vector<std::string>>{
             {"a", "a"}, {"a", "A"}, {"froid"}, {"FroId"}, {"ldn"}, {"select"}, {"WHERE"}, {"table"}})
        EXPECT_FALSE(froSqlStatements::dataColumns(names, std::vector<std::string>(names.size(), "STRING"), text))
            << names.back();
}

TEST(froSqlStatementsTest, StatementsAreBuiltAsTheSchemaExpects)
{
    const std::vector<std::string> names{"a", "parentRef", "b"};
    const std::vector<std::string> types{"S32", "STRING", "STRING"};
    const std::vector<std::string> values{"-1", "P=1", "it's"};
    std::string text;
    ASSERT_TRUE(froSqlStatements::dataColumns(names, types, text));
    EXPECT_EQ(froSqlStatements::createTable("t", text),
              "create table t (persistent, froid integer, ldn varchar(0) not null, a integer not null, "
              "b varchar(0) not null, primary key(froid))");
    ASSERT_TRUE(froSqlStatements::insertObject("t", 7, "X=1", names, types, values, text));
    EXPECT_EQ(text, "insert into t (froid, ldn, a, b) values (7, 'X=1', -1, 'it''s')");
    ASSERT_TRUE(froSqlStatements::updateObject("t", 7, names, types, values, text));
    EXPECT_EQ(text, "update t set a = -1, b = 'it''s' where froid = 7");
    ASSERT_TRUE(froSqlStatements::updateObject("t", 7, {"parentRef"}, {"STRING"}, {"x"}, text));
    EXPECT_EQ(text, "");
    EXPECT_EQ(froSqlStatements::insertVersion(0x7040002, "HwUnit"),
              "insert into apc_fro_versions (frotype, froTypeName, frodataTableName) values (117702658, 'HwUnit', "
              "'apc_frodata_HwUnit_INITIAL')");
    EXPECT_EQ(froSqlStatements::insertAttributeType(5, "a", "S32"),
              "insert into apc_fro_attributes (frotype, attrname, attrtype) values (5, 'a', 'S32')");
}

TEST(froSqlStatementsTest, NamesAndNumbersThatCouldChangeAStatementAreRefused)
{
    std::string text;
    EXPECT_FALSE(froSqlStatements::dataColumns({"a integer); drop table t; --"}, {"S32"}, text));
    EXPECT_FALSE(froSqlStatements::insertObject("t", 1, "X=1", {"a"}, {"S32"}, {"1); drop table t; --"}, text));
    EXPECT_FALSE(froSqlStatements::updateObject("t", 1, {"a"}, {"U32"}, {"-5"}, text));
    EXPECT_FALSE(froSqlStatements::selectObject("t", 1, {"a, (select 1)"}, text));
}

} // namespace
