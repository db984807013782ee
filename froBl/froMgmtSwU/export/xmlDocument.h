#pragma once
// A parsed document as the object layer reads it: elements with their tags,
// their attributes in document order with values decoded, and their child
// elements. Text, comments and declarations are not kept: nothing reads them.
//
// All elements and attributes of a document share two arrays and all its
// texts one store, so reading a document costs a few allocations, not a few
// per element.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class xmlDocument {
public:
    // A handle to one element; valid while its document is unchanged.
    class Element {
    public:
        Element() = default;
        explicit operator bool() const { return m_pDocument != nullptr; }
        std::string_view tag() const;
        // The decoded value of the attribute, or nothing.
        std::optional<std::string_view> attribute(std::string_view name) const;
        std::size_t attributeCount() const;
        std::pair<std::string_view, std::string_view> attributeAt(std::size_t i) const;
        Element firstChild() const;
        Element nextSibling() const;
        // Same tags, attributes in the same order and the same children.
        bool sameAs(const Element& other) const;

    private:
        friend class xmlDocument;
        Element(const xmlDocument* document, std::int32_t index) : m_pDocument(document), m_index(index) {}
        const xmlDocument* m_pDocument = nullptr;
        std::int32_t m_index = -1;
    };

    // The first element, or an empty handle.
    Element root() const { return element(m_nodes.empty() ? -1 : 0); }

    // Building, in document order: an element's attributes directly after
    // it, before any child. The texts are copied.
    void clear(std::size_t expectedTextBytes = 0);
    std::int32_t addElement(std::int32_t parent, std::string_view tag);
    void addAttribute(std::string_view name, std::string_view value);

private:
    // A text in the store, by offset: the store moves as it grows.
    struct Text {
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
    };
    struct Node {
        Text tag;
        std::int32_t firstAttribute = 0;
        std::int32_t attributeCount = 0;
        std::int32_t firstChild = -1;
        std::int32_t lastChild = -1;
        std::int32_t nextSibling = -1;
    };

    const Node& node(std::int32_t index) const { return m_nodes[static_cast<std::size_t>(index)]; }
    Element element(std::int32_t index) const { return index < 0 ? Element() : Element(this, index); }
    std::string_view text(const Text& t) const;
    Text keep(std::string_view value);

    std::string m_texts;
    std::vector<Node> m_nodes;
    std::vector<std::pair<Text, Text>> m_attributes;
};
