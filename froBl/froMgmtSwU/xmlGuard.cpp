#include "froBl/froMgmtSwU/export/xmlGuard.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"

using namespace fro_trace;

bool xmlGuard::check(std::string_view text)
{
    if (text.size() > kMaxDocumentBytes) {
        SSC_TRACE(xmlGroup(), kError, "XML body refused: %zu bytes, more than %zu", text.size(), kMaxDocumentBytes);
        return false;
    }
    if (text.find('\0') != std::string_view::npos) {
        SSC_TRACE(xmlGroup(), kError, "XML body refused: it contains a NUL character");
        return false;
    }
    if (!isUtf8(text)) {
        SSC_TRACE(xmlGroup(), kError, "XML body refused: it is not valid UTF-8");
        return false;
    }
    for (std::size_t at = text.find("<!"); at != std::string_view::npos; at = text.find("<!", at + 2)) {
        if (text.substr(at, 4) != "<!--") {
            SSC_TRACE(xmlGroup(), kError, "XML body refused: declarations and CDATA are not allowed");
            return false;
        }
    }
    if (!referencesKnown(text)) {
        SSC_TRACE(xmlGroup(), kError, "XML body refused: a '&' that starts no known entity");
        return false;
    }
    return nestingWithinLimit(text);
}

// The parser is told the text is UTF-8 and steps over a character by the
// length its first byte announces: a broken or cut sequence would make it
// step past the end of the text.
bool xmlGuard::isUtf8(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        std::size_t length = 0;
        unsigned char low = 0x80; // the range of the second byte, which rules out
        unsigned char high = 0xBF; // overlong forms, surrogates and beyond U+10FFFF
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            low = lead == 0xE0 ? 0xA0 : 0x80;
            high = lead == 0xED ? 0x9F : 0xBF;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            low = lead == 0xF0 ? 0x90 : 0x80;
            high = lead == 0xF4 ? 0x8F : 0xBF;
        } else {
            return false;
        }
        if (text.size() - i < length)
            return false;
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if (next < (k == 1 ? low : 0x80) || next > (k == 1 ? high : 0xBF))
                return false;
        }
        i += length;
    }
    return true;
}

bool xmlGuard::referencesKnown(std::string_view text)
{
    // The parser drops the '&' of a reference it does not know, which would
    // change the value silently.
    for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
        const std::size_t end = text.find(';', at);
        if (end == std::string_view::npos || end - at > 12 || !xmlEscape::isEncoded(text.substr(at, end - at + 1)))
            return false;
    }
    return true;
}

// The parser starts an element at '<' followed by a letter, '_' or any byte
// above ASCII; anything else ("< b>", "<1>") it reads as an unknown node that
// holds no children.
bool xmlGuard::opensElement(char next)
{
    const auto c = static_cast<unsigned char>(next);
    return c >= 0x7F || c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool xmlGuard::nestingWithinLimit(std::string_view text)
{
    int depth = 0;
    std::size_t i = 0;
    while ((i = text.find('<', i)) != std::string_view::npos) {
        if (text.substr(i, 4) == "<!--") {
            i = text.find("-->", i + 4);
            if (i == std::string_view::npos)
                return true; // unterminated: the parser refuses it
            continue;
        }
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        // Find the end of the tag, outside quoted attribute values.
        char quote = '\0';
        std::size_t end = i + 1;
        for (; end < text.size(); ++end) {
            const char c = text[end];
            if (quote != '\0') {
                if (c == quote)
                    quote = '\0';
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>') {
                break;
            }
        }
        if (end >= text.size())
            return true; // unterminated: the parser refuses it
        if (next == '/') {
            // The parser takes a closing tag outside every element as an
            // unknown node and goes on at the same depth: so must the count,
            // or stray closing tags would buy room for deeper nesting.
            if (depth > 0) --depth;
        } else if (opensElement(next) && text[end - 1] != '/' && ++depth > kMaxDepth) {
            SSC_TRACE(xmlGroup(), kError, "XML body refused: elements nest deeper than %d", kMaxDepth);
            return false;
        }
        i = end + 1;
    }
    return true;
}
