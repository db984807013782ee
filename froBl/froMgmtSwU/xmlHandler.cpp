#include "froBl/froMgmtSwU/export/xmlHandler.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"
#include "froBl/froMgmtSwU/export/xmlGuard.h"
#include "froBl/froMgmtSwU/export/xmlReader.h"

#include <array>

using namespace fro_trace;

namespace {

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";

using Element = xmlDocument::Element;

std::string encodedAttribute(const Element& element, std::string_view name)
{
    const std::optional<std::string_view> text = element.attribute(name);
    return text ? xmlEscape::encode(*text) : std::string();
}

// Appends name="text" (with a blank before it), the text escaped.
void appendEncodedAttribute(std::string& text, std::string_view name, std::string_view value)
{
    text += ' ';
    text += name;
    text += "=\"";
    xmlEscape::appendEncoded(text, value);
    text += '"';
}

void appendAttr(std::string& text, const std::string& name, const std::string& type, const std::string& value,
                bool withEmptyName)
{
    text += "<attr ";
    if (withEmptyName || !name.empty()) {
        text += "name=\"";
        text += name;
        text += "\" ";
    }
    if (!type.empty()) {
        text += "type=\"";
        text += type;
        text += "\" ";
    }
    text += "value=\"";
    text += value;
    text += "\"/>\n";
}

} // namespace

xmlHandler& xmlHandler::instance()
{
    static xmlHandler handler;
    return handler;
}

bool xmlHandler::isPrimitiveType(std::string_view type)
{
    constexpr std::array<const char*, 5> words{"S32", "U32", "U64", "S64", "STRING"};
    for (const char* word : words)
        if (type == word)
            return true;
    return false;
}

bool xmlHandler::isDerivedType(std::string_view type)
{
    return type == "array" || type == "struct" || type == "moref";
}

bool xmlHandler::parse(const std::string& text, xmlDocumentRecord& record) const
{
    record.names.clear();
    record.types.clear();
    record.values.clear();
    xmlDocument document;
    const xmlReader::Result result = xmlReader::read(text, document);
    if (result == xmlReader::Result::Failed) {
        SSC_TRACE(xmlGroup(), kError, "Parsing of xmlbuffer Failed");
        return false;
    }
    const Element mim = document.root();
    if (result != xmlReader::Result::Read || mim.tag() != "mim")
        return false;
    record.version = encodedAttribute(mim, "version");
    const Element cls = mim.firstChild();
    if (!cls || cls.tag() != "class")
        return false;
    record.ldn = encodedAttribute(cls, "ldn");
    record.kind = xmlDocumentRecord::Plain;
    record.attributeCount = 0;
    Element first = cls.firstChild();
    if (first && first.tag() == "action") {
        record.kind = xmlDocumentRecord::Action;
        record.actionName = encodedAttribute(first, "name");
        first = first.firstChild();
    } else if (first && first.tag() == "fault") {
        record.kind = xmlDocumentRecord::Fault;
        record.faultName = encodedAttribute(first, "name");
        first = first.firstChild();
    }
    return readAttributes(first, record);
}

bool xmlHandler::readAttributes(Element first, xmlDocumentRecord& record) const
{
    std::size_t count = 0;
    for (Element element = first; element; element = element.nextSibling())
        ++count;
    record.names.reserve(count);
    record.types.reserve(count);
    record.values.reserve(count);
    for (Element element = first; element; element = element.nextSibling()) {
        const std::string_view tag = element.tag();
        std::string value;
        if (tag == "attr") {
            value = encodedAttribute(element, "value");
        } else if (isDerivedType(tag)) {
            if (record.kind == xmlDocumentRecord::Fault) {
                SSC_TRACE(xmlGroup(), kError, "Parsing of XML-element failed: fault supplied with a array or "
                                              "struct child instead of only attr");
                return false;
            }
            if (!serialise(element, value))
                return false;
        } else {
            SSC_TRACE(xmlGroup(), kError,
                      "Parsing of XML-element failed: element not attr, array or struct. Element not included.");
            return false;
        }
        std::string name = encodedAttribute(element, "name");
        if (value.size() > xmlGuard::kMaxValueBytes) {
            SSC_TRACE(xmlGroup(), kError, "Parsing of XML-element failed: value of %s has %zu bytes, more than %zu",
                      name.c_str(), value.size(), xmlGuard::kMaxValueBytes);
            return false;
        }
        record.names.push_back(std::move(name));
        record.types.push_back(tag == "attr" ? encodedAttribute(element, "type") : std::string(tag));
        record.values.push_back(std::move(value));
        record.attributeCount = static_cast<int>(record.names.size());
    }
    return true;
}

bool xmlHandler::serialise(const Element& element, std::string& text) const
{
    const std::string_view tag = element.tag();
    const std::optional<std::string_view> name = element.attribute("name");
    const bool named = name && !name->empty();
    if (tag == "attr") {
        const std::optional<std::string_view> type = element.attribute("type");
        if (type && isPrimitiveType(*type)) {
            text += "<attr";
            if (named)
                appendEncodedAttribute(text, "name", *name);
            appendEncodedAttribute(text, "type", *type);
            appendEncodedAttribute(text, "value", element.attribute("value").value_or(std::string_view()));
            text += "/>\n";
            return true;
        }
    } else if (isDerivedType(tag)) {
        text += '<';
        text += tag;
        if (named)
            appendEncodedAttribute(text, "name", *name);
        text += ">\n";
        for (Element child = element.firstChild(); child; child = child.nextSibling())
            if (!serialise(child, text))
                return false;
        text += "</";
        text += tag;
        text += ">\n";
        return true;
    }
    SSC_TRACE(xmlGroup(), kError, "Creation of XML failed: unknown type found");
    return false;
}

bool xmlHandler::isSingleElement(const std::string& text, const std::string& tag)
{
    xmlDocument document;
    bool alone = false;
    return xmlReader::read(text, document, alone) == xmlReader::Result::Read && document.root().tag() == tag && alone;
}

bool xmlHandler::build(const std::string& ldn, const std::string& version, const std::vector<std::string>& names,
                       const std::vector<std::string>& types, const std::vector<std::string>& values,
                       std::string& text) const
{
    if (names.size() != types.size() || names.size() != values.size()) {
        SSC_TRACE(xmlGroup(), kError, "Vectors of names, types and values are not of the same length");
        return false;
    }
    // Everything is written as it stands, so it must already be escaped: a
    // raw quote from a damaged store would otherwise change the document.
    if (!xmlEscape::isEncoded(ldn) || !xmlEscape::isEncoded(version)) {
        SSC_TRACE(xmlGroup(), kError, "Creation XML from stored fRO failed: ldn or version not escaped");
        return false;
    }
    text = kDeclaration;
    if (!version.empty())
        text += "<mim version=\"" + version + "\">\n";
    text += "<class ldn=\"" + ldn + "\">\n";
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool primitive = types[i].empty() || isPrimitiveType(types[i]);
        const bool valid = primitive ? xmlEscape::isEncoded(names[i]) && xmlEscape::isEncoded(values[i])
                                     : isDerivedType(types[i]) && isSingleElement(values[i], types[i]);
        if (!valid) {
            SSC_TRACE(xmlGroup(), kError, "Creation XML from stored fRO failed: non-valid type read");
            return false;
        }
        if (primitive)
            appendAttr(text, names[i], types[i], values[i], true);
        else
            text += values[i];
    }
    text += "</class>";
    if (!version.empty())
        text += "\n</mim>";
    return true;
}
