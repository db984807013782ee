#include "froBl/froMgmtSwU/export/xmlDocument.h"

std::string_view xmlDocument::Element::tag() const
{
    return m_pDocument->text(m_pDocument->node(m_index).tag);
}

std::optional<std::string_view> xmlDocument::Element::attribute(std::string_view name) const
{
    for (std::size_t i = 0; i < attributeCount(); ++i) {
        const auto [key, value] = attributeAt(i);
        if (key == name)
            return value;
    }
    return std::nullopt;
}

std::size_t xmlDocument::Element::attributeCount() const
{
    return static_cast<std::size_t>(m_pDocument->node(m_index).attributeCount);
}

std::pair<std::string_view, std::string_view> xmlDocument::Element::attributeAt(std::size_t i) const
{
    const std::size_t first = static_cast<std::size_t>(m_pDocument->node(m_index).firstAttribute);
    const auto& [name, value] = m_pDocument->m_attributes[first + i];
    return {m_pDocument->text(name), m_pDocument->text(value)};
}

xmlDocument::Element xmlDocument::Element::firstChild() const
{
    return m_pDocument->element(m_pDocument->node(m_index).firstChild);
}

xmlDocument::Element xmlDocument::Element::nextSibling() const
{
    return m_pDocument->element(m_pDocument->node(m_index).nextSibling);
}

bool xmlDocument::Element::sameAs(const Element& other) const
{
    if (tag() != other.tag() || attributeCount() != other.attributeCount())
        return false;
    for (std::size_t i = 0; i < attributeCount(); ++i)
        if (attributeAt(i) != other.attributeAt(i))
            return false;
    Element mine = firstChild();
    Element theirs = other.firstChild();
    for (; mine && theirs; mine = mine.nextSibling(), theirs = theirs.nextSibling())
        if (!mine.sameAs(theirs))
            return false;
    return !mine && !theirs;
}

void xmlDocument::clear(std::size_t expectedTextBytes)
{
    m_texts.clear();
    m_texts.reserve(expectedTextBytes);
    m_nodes.clear();
    m_attributes.clear();
}

std::int32_t xmlDocument::addElement(std::int32_t parent, std::string_view tag)
{
    const auto index = static_cast<std::int32_t>(m_nodes.size());
    Node node;
    node.tag = keep(tag);
    node.firstAttribute = static_cast<std::int32_t>(m_attributes.size());
    m_nodes.push_back(node);
    if (parent >= 0) {
        Node& up = m_nodes[static_cast<std::size_t>(parent)];
        if (up.lastChild < 0)
            up.firstChild = index;
        else
            m_nodes[static_cast<std::size_t>(up.lastChild)].nextSibling = index;
        up.lastChild = index;
    }
    return index;
}

void xmlDocument::addAttribute(std::string_view name, std::string_view value)
{
    const Text key = keep(name);
    m_attributes.emplace_back(key, keep(value));
    ++m_nodes.back().attributeCount;
}

std::string_view xmlDocument::text(const Text& t) const
{
    return std::string_view(m_texts).substr(t.offset, t.size);
}

xmlDocument::Text xmlDocument::keep(std::string_view value)
{
    const Text kept{static_cast<std::uint32_t>(m_texts.size()), static_cast<std::uint32_t>(value.size())};
    m_texts.append(value);
    return kept;
}
