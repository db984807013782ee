#include "froBl/froMgmtSwU/export/xmlTree.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"
#include "froBl/froMgmtSwU/export/xmlReader.h"
#include "ose/Format.h"

#include <charconv>

using namespace fro_trace;

namespace {

// Whole text as a decimal number, or false.
bool toInt64(const std::string& text, std::int64_t& out)
{
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, out);
    return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

} // namespace

bool xmlTree::isPrimitive(std::string_view type)
{
    return type == "U32" || type == "S32" || type == "STRING";
}

bool xmlTree::isDerived(std::string_view type)
{
    return type == "array" || type == "struct" || type == "moref";
}

xmlTree::xmlTree(const std::string& name, const std::string& type, const std::string& value)
{
    if (isPrimitive(type)) {
        m_tag = "attr";
        m_name = name;
        m_type = type;
        m_value = value;
        return;
    }
    if (!isDerived(type)) {
        SSC_TRACE(xmlGroup(), kError, "xmlTree could not be created, unknown type");
        m_failed = true;
        return;
    }
    xmlDocument document;
    switch (xmlReader::read(value, document)) {
    case xmlReader::Result::Failed:
        SSC_TRACE(xmlGroup(), kError, "xmlTree could not parse the value attribute as XML");
        m_failed = true;
        return;
    case xmlReader::Result::NoRootElement:
        SSC_TRACE(xmlGroup(), kError, "xmlTree could not get root element from string, returned NULL");
        m_failed = true;
        return;
    case xmlReader::Result::Read:
        break;
    }
    buildFrom(document.root());
}

xmlTree::xmlTree(const xmlDocument::Element& element)
{
    buildFrom(element);
}

void xmlTree::buildFrom(const xmlDocument::Element& element)
{
    m_tag = element.tag();
    const std::optional<std::string_view> name = element.attribute("name");
    m_name = name ? xmlEscape::encode(*name) : std::string();
    const std::optional<std::string_view> type = element.attribute("type");
    if (m_tag == "attr" && type && isPrimitive(*type)) {
        m_type = *type;
        const std::optional<std::string_view> value = element.attribute("value");
        if (!value) {
            SSC_TRACE(xmlGroup(), kError, "Primitive XML element does not contain a value tag");
            m_failed = true;
            return;
        }
        m_value = xmlEscape::encode(*value);
    } else if (isDerived(m_tag)) {
        m_type = m_tag;
        for (xmlDocument::Element child = element.firstChild(); child; child = child.nextSibling()) {
            m_children.emplace_back(child);
            m_failed = m_failed || m_children.back().failed();
        }
    } else {
        SSC_TRACE(xmlGroup(), kError, "Xml-element is not of primitive or derived type");
        m_failed = true;
    }
}

std::string xmlTree::toString() const
{
    std::string text;
    appendTo(text);
    return text;
}

// One buffer for the whole tree: no string is built per level and copied up.
void xmlTree::appendTo(std::string& out) const
{
    out += '<';
    out += m_tag;
    if (!m_name.empty()) {
        out += " name=\"";
        out += m_name;
        out += '"';
    }
    if (m_tag == "attr") {
        out += " type=\"";
        out += m_type;
        out += "\" value=\"";
        out += m_value;
        out += "\"/>";
        return;
    }
    out += '>';
    for (const xmlTree& child : m_children) {
        out += '\n';
        child.appendTo(out);
    }
    out += "\n</";
    out += m_tag;
    out += '>';
}

const xmlTree* xmlTree::find(const Path& path, std::size_t step) const
{
    if (m_failed) {
        SSC_TRACE(xmlGroup(), kError, "xmlTree is not correctly set up, cannot return itself or any child");
        return nullptr;
    }
    if (step >= path.size() || path[step].empty())
        return this;
    for (const xmlTree& child : m_children)
        if (child.m_name == path[step])
            return child.find(path, step + 1);
    std::int64_t index = 0;
    if (!toInt64(path[step], index)) {
        SSC_TRACE(xmlGroup(), kFlow, "No Xml-Element with given name or index was found");
        return nullptr;
    }
    if (index < 0 || static_cast<std::uint64_t>(index) >= m_children.size()) {
        SSC_TRACE(xmlGroup(), kFlow, "Index does not exist");
        return nullptr;
    }
    return m_children[static_cast<std::size_t>(index)].find(path, step + 1);
}

bool xmlTree::getName(std::string& out, const Path& path) const
{
    const xmlTree* node = find(path, 0);
    if (!node) {
        SSC_TRACE(xmlGroup(), kFlow, "No Xml-Element with given path was found");
        return false;
    }
    out = node->m_name;
    return true;
}

const xmlTree* xmlTree::findNamed(const Path& path) const
{
    const xmlTree* node = find(path, 0);
    if (!node)
        SSC_TRACE(xmlGroup(), kFlow, "No Xml-Element with given name was found");
    return node;
}

xmlTree* xmlTree::findNamed(const Path& path)
{
    return const_cast<xmlTree*>(static_cast<const xmlTree*>(this)->findNamed(path));
}

bool xmlTree::getType(std::string& out, const Path& path) const
{
    const xmlTree* node = findNamed(path);
    if (!node)
        return false;
    out = node->m_type;
    return true;
}

bool xmlTree::getValue(std::string& out, const Path& path) const
{
    const xmlTree* node = findNamed(path);
    if (!node)
        return false;
    out = node->m_value;
    return true;
}

bool xmlTree::size(std::size_t& out, const Path& path) const
{
    const xmlTree* node = findNamed(path);
    if (!node)
        return false;
    out = node->m_children.size();
    return true;
}

bool xmlTree::getS32(std::int32_t& out, const Path& path) const
{
    const xmlTree* node = findNamed(path);
    if (!node)
        return false;
    if (node->m_type != "S32") {
        SSC_TRACE(xmlGroup(), kError, "Element is not of type S32 but of type: %s", node->m_type.c_str());
        return false;
    }
    std::int64_t value = 0;
    if (!toInt64(node->m_value, value) || value < INT32_MIN || value > INT32_MAX) {
        SSC_TRACE(xmlGroup(), kError, "Element value %s is not a 32-bit number", node->m_value.c_str());
        return false;
    }
    out = static_cast<std::int32_t>(value);
    return true;
}

bool xmlTree::getU32(std::uint32_t& out, const Path& path) const
{
    const xmlTree* node = findNamed(path);
    if (!node)
        return false;
    if (node->m_type != "U32") {
        SSC_TRACE(xmlGroup(), kError, "Element is not of type U32 but of type: %s", node->m_type.c_str());
        return false;
    }
    std::int64_t value = 0;
    if (!toInt64(node->m_value, value) || value > UINT32_MAX || value < INT32_MIN) {
        SSC_TRACE(xmlGroup(), kError, "Element value %s is not a 32-bit number", node->m_value.c_str());
        return false;
    }
    if (value < 0) {
        SSC_TRACE(xmlGroup(), kError, "Element stored is negative (%d) and cannot be converted to U32",
                  static_cast<int>(value));
        return false;
    }
    out = static_cast<std::uint32_t>(value);
    return true;
}

bool xmlTree::getS32Array(std::vector<std::int32_t>& out, const Path& path) const
{
    const xmlTree* node = findNamed(path);
    if (!node)
        return false;
    if (node->m_type != "array") {
        SSC_TRACE(xmlGroup(), kError, "Element is not of type array but of type: %s", node->m_type.c_str());
        return false;
    }
    std::vector<std::int32_t> numbers;
    bool allS32 = true;
    for (const xmlTree& child : node->m_children) {
        if (child.m_type != "S32") {
            SSC_TRACE(xmlGroup(), kError, "Element is not S32 in array of S32 but of type: %s", child.m_type.c_str());
            allS32 = false;
            continue;
        }
        std::int32_t number = 0;
        if (!child.getS32(number)) {
            SSC_TRACE(xmlGroup(), kError, "Type or Value retrieval failure");
            return false;
        }
        numbers.push_back(number);
    }
    if (!allS32) {
        SSC_TRACE(xmlGroup(), kError, "Array contains non S32 elements");
        return false;
    }
    out.insert(out.end(), numbers.begin(), numbers.end());
    return true;
}

bool xmlTree::setTyped(const char* type, const std::string& value, const Path& path)
{
    xmlTree* node = findNamed(path);
    if (!node)
        return false;
    if (node->m_type != type) {
        SSC_TRACE(xmlGroup(), kError, "Element is not of type U32 but of type: %s", node->m_type.c_str());
        return false;
    }
    node->m_value = value;
    return true;
}

bool xmlTree::setString(const std::string& value, const Path& path)
{
    return setTyped("STRING", xmlEscape::encode(value), path);
}

bool xmlTree::setS32(std::int32_t value, const Path& path)
{
    return setTyped("S32", ose::format("%d", value), path);
}

bool xmlTree::setU32(std::uint32_t value, const Path& path)
{
    return setTyped("U32", ose::format("%u", value), path);
}

bool xmlTree::add(const std::string& name, const std::string& type, const std::string& value, const Path& path)
{
    xmlTree* parent = findNamed(path);
    if (!parent)
        return false;
    if (parent->m_type.empty()) {
        SSC_TRACE(xmlGroup(), kError, "Unexpected error reading type of xmlTree internally");
        return false;
    }
    if (isPrimitive(parent->m_type)) {
        SSC_TRACE(xmlGroup(), kError, "Cannot add attribute to xmlTree, cannot add attribute below primitive");
        return false;
    }
    const bool array = parent->m_type == "array";
    if (array && !name.empty()) {
        SSC_TRACE(xmlGroup(), kError, "Cannot add attribute to xmlTree, array attributes cannot have names");
        return false;
    }
    for (const xmlTree& child : parent->m_children) {
        if (!array && child.m_name == name) {
            SSC_TRACE(xmlGroup(), kError, "Cannot add attribute to xmlTree, attribute already exists");
            return false;
        }
    }
    xmlTree node(name, type, value);
    if (node.failed())
        return false;
    parent->m_children.push_back(std::move(node));
    return true;
}

bool xmlTree::addString(const std::string& name, const std::string& value, const Path& path)
{
    return add(xmlEscape::encode(name), "STRING", xmlEscape::encode(value), path);
}

bool xmlTree::addS32(const std::string& name, std::int32_t value, const Path& path)
{
    return add(xmlEscape::encode(name), "S32", ose::format("%d", value), path);
}

bool xmlTree::addU32(const std::string& name, std::uint32_t value, const Path& path)
{
    return add(xmlEscape::encode(name), "U32", ose::format("%u", value), path);
}

bool xmlTree::addStruct(const std::string& name, const Path& path)
{
    const std::string encoded = xmlEscape::encode(name);
    return add(encoded, "struct", "<struct name=\"" + encoded + "\"></struct>", path);
}

bool xmlTree::addArray(const std::string& name, const Path& path)
{
    const std::string encoded = xmlEscape::encode(name);
    return add(encoded, "array", "<array name=\"" + encoded + "\"></array>", path);
}

bool xmlTree::addArrayS32(std::int32_t value, const Path& path)
{
    return add("", "S32", ose::format("%d", value), path);
}
