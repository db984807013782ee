#include "froBl/froMgmtSwU/export/xmlReader.h"

#include "froBl/froMgmtSwU/export/xmlGuard.h"

#include <tinyxml.h>

#include <algorithm>
#include <array>

namespace {

// The declarations the quick reader knows. The parser is told the encoding,
// so a declaration never changes what is read; others go to the parser.
constexpr std::array<std::string_view, 3> kDeclarations{
    "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>",
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
    "<?xml version=\"1.0\"?>",
};

// The entities the parser decodes by name; character references go to it.
struct NamedEntity {
    std::string_view text;
    char character;
};
constexpr std::array<NamedEntity, 5> kEntities{{
    {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

bool startsName(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool continuesName(char c)
{
    return startsName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == ':';
}

// A cursor over the text. Every step checks the end, so no length from
// outside is trusted; any surprise declines and leaves the text to the
// parser. What it takes, the guard would pass: no '<' in a value (so no
// "<!"), no NUL, only the named entities, no deeper nesting.
class QuickReader {
public:
    QuickReader(std::string_view text, xmlDocument& document) : m_text(text), m_document(document) {}

    bool document()
    {
        m_document.clear(m_text.size());
        skipSpace();
        for (std::string_view declaration : kDeclarations)
            if (m_text.substr(m_at).starts_with(declaration)) {
                m_at += declaration.size();
                break;
            }
        skipSpace();
        if (!element(-1, 0))
            return false;
        skipSpace();
        return m_at == m_text.size();
    }

private:
    // The guard counts the root as depth 1 and allows kMaxDepth.
    bool element(std::int32_t parent, int depth)
    {
        std::string_view tag;
        if (depth >= xmlGuard::kMaxDepth || !take('<') || !name(tag))
            return false;
        const std::int32_t self = m_document.addElement(parent, tag);
        m_keys.clear();
        for (;;) {
            const bool spaced = skipSpace();
            if (take('/'))
                return take('>');
            if (take('>'))
                return content(self, depth) && endTag(tag);
            // The parser also takes attributes without a blank between
            // them; the plain form never has them.
            if ((!spaced && !m_keys.empty()) || !attribute())
                return false;
        }
    }

    bool content(std::int32_t self, int depth)
    {
        for (;;) {
            skipSpace();
            if (m_at + 1 >= m_text.size() || m_text[m_at] != '<')
                return false;
            if (m_text[m_at + 1] == '/')
                return true;
            if (!startsName(m_text[m_at + 1]) || !element(self, depth + 1))
                return false;
        }
    }

    bool endTag(std::string_view tag)
    {
        if (!take('<') || !take('/') || m_text.substr(m_at, tag.size()) != tag)
            return false;
        m_at += tag.size();
        skipSpace();
        return take('>');
    }

    bool attribute()
    {
        std::string_view key;
        if (!name(key) || std::find(m_keys.begin(), m_keys.end(), key) != m_keys.end())
            return false;
        skipSpace();
        if (!take('='))
            return false;
        skipSpace();
        if (m_at >= m_text.size() || (m_text[m_at] != '"' && m_text[m_at] != '\''))
            return false;
        const char quote = m_text[m_at++];
        m_value.clear();
        if (!quoted(quote))
            return false;
        m_keys.push_back(key);
        m_document.addAttribute(key, m_value);
        return true;
    }

    // The value up to the closing quote, decoded into m_value.
    bool quoted(char quote)
    {
        std::size_t start = m_at;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at];
            if (c == quote) {
                m_value.append(m_text.substr(start, m_at - start));
                ++m_at;
                return true;
            }
            if (c == '\0' || c == '<' || static_cast<unsigned char>(c) >= 0x80)
                return false;
            if (c != '&') {
                ++m_at;
                continue;
            }
            m_value.append(m_text.substr(start, m_at - start));
            if (!entity())
                return false;
            start = m_at;
        }
        return false;
    }

    bool entity()
    {
        for (const NamedEntity& named : kEntities)
            if (m_text.substr(m_at).starts_with(named.text)) {
                m_value += named.character;
                m_at += named.text.size();
                return true;
            }
        return false;
    }

    bool name(std::string_view& out)
    {
        if (m_at >= m_text.size() || !startsName(m_text[m_at]))
            return false;
        const std::size_t start = m_at;
        while (m_at < m_text.size() && continuesName(m_text[m_at]))
            ++m_at;
        out = m_text.substr(start, m_at - start);
        return true;
    }

    bool take(char c)
    {
        if (m_at >= m_text.size() || m_text[m_at] != c)
            return false;
        ++m_at;
        return true;
    }

    bool skipSpace()
    {
        const std::size_t start = m_at;
        while (m_at < m_text.size() && isSpace(m_text[m_at]))
            ++m_at;
        return m_at != start;
    }

    std::string_view m_text;
    xmlDocument& m_document;
    std::size_t m_at = 0;
    std::vector<std::string_view> m_keys; // of the element being read
    std::string m_value;
};

void convert(const TiXmlElement& from, std::int32_t parent, xmlDocument& to)
{
    const std::int32_t self = to.addElement(parent, from.ValueStr());
    for (const TiXmlAttribute* a = from.FirstAttribute(); a; a = a->Next())
        to.addAttribute(a->NameTStr(), a->ValueStr());
    for (const TiXmlElement* child = from.FirstChildElement(); child; child = child->NextSiblingElement())
        convert(*child, self, to);
}

} // namespace

xmlReader::Result xmlReader::read(const std::string& text, xmlDocument& document, bool& alone)
{
    // A text the quick reader takes would pass the guard (the fuzzer holds
    // it to that); only the others are checked.
    if (readQuick(text, document)) {
        alone = true;
        return Result::Read;
    }
    if (!xmlGuard::check(text)) {
        document.clear(); // nothing half-read is left behind
        return Result::Failed;
    }
    return readFull(text, document, alone);
}

xmlReader::Result xmlReader::read(const std::string& text, xmlDocument& document)
{
    bool alone = false;
    return read(text, document, alone);
}

bool xmlReader::readQuick(std::string_view text, xmlDocument& document)
{
    return text.size() <= xmlGuard::kMaxDocumentBytes && QuickReader(text, document).document();
}

xmlReader::Result xmlReader::readFull(const std::string& text, xmlDocument& document, bool& alone)
{
    document.clear(text.size());
    if (text.size() > xmlGuard::kMaxDocumentBytes)
        return Result::Failed;
    TiXmlDocument parsed;
    // Rows and columns are not tracked: nothing reports them, and counting
    // them is a tenth of the parse.
    parsed.SetTabSize(0);
    parsed.Parse(text.c_str(), nullptr, TIXML_ENCODING_UTF8);
    if (parsed.Error())
        return Result::Failed;
    const TiXmlElement* first = parsed.RootElement();
    if (!first)
        return Result::NoRootElement;
    convert(*first, -1, document);
    alone = first->NextSiblingElement() == nullptr;
    return Result::Read;
}
