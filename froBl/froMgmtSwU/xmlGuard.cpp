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
