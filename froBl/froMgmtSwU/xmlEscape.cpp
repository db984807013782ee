#include "froBl/froMgmtSwU/export/xmlEscape.h"

#include <algorithm>

#include <array>
#include <charconv>
#include <cstdint>

namespace {

bool isCharacterReference(std::string_view body)
{
    // body is what stands between '&' and ';'
    if (body.size() < 2 || body[0] != '#')
        return false;
    const bool hex = body[1] == 'x';
    const std::string_view digits = body.substr(hex ? 2 : 1);
    if (digits.empty() || digits.size() > 8)
        return false;
    std::uint32_t code = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size())
        return false;
    // NUL would cut the value; surrogates and numbers past Unicode are no
    // characters and would come out as bytes that are not UTF-8.
    return code != 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

bool isEntity(std::string_view body)
{
    constexpr std::array<std::string_view, 5> named{"amp", "quot", "apos", "lt", "gt"};
    for (std::string_view entity : named)
        if (body == entity)
            return true;
    return isCharacterReference(body);
}

} // namespace

std::string xmlEscape::encode(std::string_view text)
{
    std::string out;
    appendEncoded(out, text);
    return out;
}

void xmlEscape::appendEncoded(std::string& out, std::string_view text)
{
    out.reserve(out.size() + text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t special = std::min(text.find_first_of("&\"'<>", at), text.size());
        out.append(text.substr(at, special - at));
        if (special == text.size())
            break;
        switch (text[special]) {
        case '&': out += "&amp;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        case '<': out += "&lt;"; break;
        default: out += "&gt;"; break;
        }
        at = special + 1;
    }
}

bool xmlEscape::isEncoded(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '<' || c == '>' || c == '"' || c == '\'' || c == '\0')
            return false;
        if (c != '&')
            continue;
        const std::size_t end = text.find(';', i + 1);
        if (end == std::string_view::npos || !isEntity(text.substr(i + 1, end - i - 1)))
            return false;
        i = end;
    }
    return true;
}
