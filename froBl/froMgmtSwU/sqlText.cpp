#include "froBl/froMgmtSwU/sqlText.h"

#include <array>
#include <cctype>
#include <charconv>
#include <strings.h>

namespace {

bool equalsNoCase(std::string_view a, const char* b)
{
    return a.size() == std::char_traits<char>::length(b) && strncasecmp(a.data(), b, a.size()) == 0;
}

} // namespace

sqlText::SqlType sqlText::sqlTypeOf(std::string_view attrType)
{
    if (equalsNoCase(attrType, "S32") || equalsNoCase(attrType, "U32"))
        return SqlType::Integer;
    constexpr std::array<const char*, 7> textTypes{"U64", "S64", "STRING", "struct", "array", "moref", "bool"};
    for (const char* word : textTypes)
        if (attrType == word)
            return SqlType::Varchar;
    return SqlType::Unknown;
}

const char* sqlText::sqlTypeName(SqlType type)
{
    return type == SqlType::Integer ? "integer" : "varchar(0)";
}

std::string sqlText::quote(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + 2);
    out += '\'';
    for (char c : text) {
        if (c == '\'')
            out += '\'';
        out += c;
    }
    out += '\'';
    return out;
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

bool sqlText::isIdentifier(std::string_view name)
{
    if (name.empty() || name.size() > 64 || std::isdigit(static_cast<unsigned char>(name[0])))
        return false;
    for (char c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_')
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
