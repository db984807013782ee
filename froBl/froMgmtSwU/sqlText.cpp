#include "froBl/froMgmtSwU/sqlText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <strings.h>

sqlText::SqlType sqlText::sqlTypeOf(std::string_view attrType)
{
    return equalsNoCase(attrType, "S32") || equalsNoCase(attrType, "U32") ? SqlType::Integer : SqlType::Varchar;
}

bool sqlText::equalsNoCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool sqlText::isReservedWord(std::string_view name)
{
    constexpr std::array<std::string_view, 64> words{
        "add",      "all",        "alter",   "and",       "as",       "asc",     "between", "by",
        "case",     "check",      "column",  "constraint", "create",  "cross",   "current", "default",
        "delete",   "desc",       "distinct", "drop",     "else",     "end",     "escape",  "except",
        "exists",   "foreign",    "from",    "full",      "group",    "having",  "in",      "index",
        "inner",    "insert",     "intersect", "into",    "is",       "join",    "key",     "left",
        "like",     "limit",      "natural", "not",       "null",     "offset",  "on",      "or",
        "order",    "outer",      "persistent", "primary", "references", "right", "select", "set",
        "table",    "then",       "to",      "union",     "unique",   "update",  "values",  "where"};
    if (name.size() < 2 || name.size() > 10) // the shortest and the longest word
        return false;
    for (std::string_view word : words)
        if (equalsNoCase(name, word))
            return true;
    return false;
}

const char* sqlText::sqlTypeName(SqlType type)
{
    return type == SqlType::Integer ? "integer" : "varchar(0)";
}

std::string sqlText::quote(std::string_view text)
{
    std::string out;
    appendQuoted(out, text);
    return out;
}

void sqlText::appendQuoted(std::string& out, std::string_view text)
{
    out.reserve(out.size() + text.size() + 2);
    out += '\'';
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t quote = std::min(text.find('\'', at), text.size());
        out.append(text.substr(at, quote - at));
        if (quote < text.size())
            out += "''";
        at = quote + 1;
    }
    out += '\'';
}

bool sqlText::integerLiteral(std::string_view value, std::string_view attrType, std::string& literal)
{
    if (value.empty())
        value = "0";
    std::int64_t number = 0;
    const char* end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end)
        return false;
    const bool unsignedType = equalsNoCase(attrType, "U32");
    const std::int64_t low = unsignedType ? 0 : INT32_MIN;
    const std::int64_t high = unsignedType ? UINT32_MAX : INT32_MAX;
    if (number < low || number > high)
        return false;
    literal = std::to_string(number);
    return true;
}

// ASCII only, whatever the locale: a column name must mean the same to every
// database.
bool sqlText::isIdentifier(std::string_view name)
{
    if (name.empty() || name.size() > 64 || (name[0] >= '0' && name[0] <= '9'))
        return false;
    for (char c : name)
        if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'))
            return false;
    return true;
}

std::string sqlText::lowerCase(std::string_view text)
{
    std::string out(text);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}
