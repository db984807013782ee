#pragma once
// The one place where texts from outside become parts of SQL statements.
//
// Statements of a transaction travel as text to the platform's transaction
// server, so values cannot be bound as parameters: every value is written as a
// standard SQL literal instead. Texts are quoted with their single quotes
// doubled, integers must be whole decimal numbers in range, and names of
// tables and columns must be plain identifiers. Nothing else reaches SQL.

#include <cstdint>
#include <string>
#include <string_view>

class sqlText {
public:
    enum class SqlType { Integer, Varchar };

    // Integer for S32 and U32 (in any case), varchar for everything else.
    // Whether a type word may be stored at all is decided by the caller.
    static SqlType sqlTypeOf(std::string_view attrType);
    static const char* sqlTypeName(SqlType type);

    // 'text' with every ' doubled.
    static std::string quote(std::string_view text);
    static void appendQuoted(std::string& out, std::string_view text);
    // The literal of an integer attribute of type attrType (S32 or U32), or
    // false for anything that is not such a number. An empty value, the
    // default of some attributes, is stored as 0.
    static bool integerLiteral(std::string_view value, std::string_view attrType, std::string& literal);
    // Letters, digits and '_', not starting with a digit, at most 64 long.
    static bool isIdentifier(std::string_view name);
    // A keyword of SQL (in any case): as a column name it would break or
    // change a statement on some data source.
    static bool isReservedWord(std::string_view name);
    static bool equalsNoCase(std::string_view a, std::string_view b);
    static std::string lowerCase(std::string_view text);
};
