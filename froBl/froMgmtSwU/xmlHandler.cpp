#include "froBl/froMgmtSwU/export/xmlHandler.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/xmlEscape.h"
#include "froBl/froMgmtSwU/export/xmlGuard.h"

#include <tinyxml.h>

#include <array>

using namespace fro_trace;

namespace {

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";

std::string encodedAttribute(const TiXmlElement& element, const char* name)
{
    const char* text = element.Attribute(name);
    return text ? xmlEscape::encode(text) : std::string();
}

void appendAttr(std::string& text, const std::string& name, const std::string& type, const std::string& value,
                bool withEmptyName)
{
    text += "<attr ";
    if (withEmptyName || !name.empty())
        text += "name=\"" + name + "\" ";
    if (!type.empty())
        text += "type=\"" + type + "\" ";
    text += "value=\"" + value + "\"/>\n";
}

} // namespace

xmlHandler& xmlHandler::instance()
{
    static xmlHandler handler;
    return handler;
}

bool xmlHandler::isPrimitiveType(const std::string& type)
{
    constexpr std::array<const char*, 5> words{"S32", "U32", "U64", "S64", "STRING"};
    for (const char* word : words)
        if (type == word)
            return true;
    return false;
}

bool xmlHandler::isDerivedType(const std::string& type)
{
    return type == "array" || type == "struct" || type == "moref";
}

bool xmlHandler::parse(const std::string& text, xmlDocumentRecord& record) const
{
    record.names.clear();
    record.types.clear();
    record.values.clear();
    TiXmlDocument document;
    if (!xmlGuard::check(text) || (document.Parse(text.c_str(), nullptr, TIXML_ENCODING_UTF8), document.Error())) {
        SSC_TRACE(xmlGroup(), kError, "Parsing of xmlbuffer Failed");
        return false;
    }
    const TiXmlElement* mim = document.RootElement();
    if (!mim || mim->ValueStr() != "mim")
        return false;
    record.version = encodedAttribute(*mim, "version");
    const TiXmlElement* cls = mim->FirstChildElement();
    if (!cls || cls->ValueStr() != "class")
        return false;
    record.ldn = encodedAttribute(*cls, "ldn");
    record.kind = xmlDocumentRecord::Plain;
    record.attributeCount = 0;
    const TiXmlElement* first = cls->FirstChildElement();
    if (first && first->ValueStr() == "action") {
        record.kind = xmlDocumentRecord::Action;
        record.actionName = encodedAttribute(*first, "name");
        first = first->FirstChildElement();
    } else if (first && first->ValueStr() == "fault") {
        record.kind = xmlDocumentRecord::Fault;
        record.faultName = encodedAttribute(*first, "name");
        first = first->FirstChildElement();
    }
    return readAttributes(first, record);
}

bool xmlHandler::readAttributes(const TiXmlElement* first, xmlDocumentRecord& record) const
{
    for (const TiXmlElement* element = first; element; element = element->NextSiblingElement()) {
        const std::string& tag = element->ValueStr();
        std::string value;
        if (tag == "attr") {
            value = encodedAttribute(*element, "value");
        } else if (isDerivedType(tag)) {
            if (record.kind == xmlDocumentRecord::Fault) {
                SSC_TRACE(xmlGroup(), kError, "Parsing of XML-element failed: fault supplied with a array or "
                                              "struct child instead of only attr");
                return false;
            }
            if (!serialise(*element, value))
                return false;
        } else {
            SSC_TRACE(xmlGroup(), kError,
                      "Parsing of XML-element failed: element not attr, array or struct. Element not included.");
            return false;
        }
        const std::string name = encodedAttribute(*element, "name");
        if (value.size() > xmlGuard::kMaxValueBytes) {
            SSC_TRACE(xmlGroup(), kError, "Parsing of XML-element failed: value of %s has %zu bytes, more than %zu",
                      name.c_str(), value.size(), xmlGuard::kMaxValueBytes);
            return false;
        }
        record.names.push_back(name);
        record.types.push_back(tag == "attr" ? encodedAttribute(*element, "type") : tag);
        record.values.push_back(std::move(value));
        record.attributeCount = static_cast<int>(record.names.size());
    }
    return true;
}

bool xmlHandler::serialise(const TiXmlElement& element, std::string& text) const
{
    const std::string& tag = element.ValueStr();
    const std::string name = encodedAttribute(element, "name");
    if (tag == "attr") {
        const std::string type = encodedAttribute(element, "type");
        if (isPrimitiveType(type)) {
            appendAttr(text, name, type, encodedAttribute(element, "value"), false);
            return true;
        }
    } else if (isDerivedType(tag)) {
        text += "<" + tag + (name.empty() ? std::string() : " name=\"" + name + "\"") + ">\n";
        for (const TiXmlElement* child = element.FirstChildElement(); child; child = child->NextSiblingElement())
            if (!serialise(*child, text))
                return false;
        text += "</" + tag + ">\n";
        return true;
    }
    SSC_TRACE(xmlGroup(), kError, "Creation of XML failed: unknown type found");
    return false;
}

bool xmlHandler::isSingleElement(const std::string& text, const std::string& tag)
{
    TiXmlDocument document;
    if (!xmlGuard::check(text))
        return false;
    document.Parse(text.c_str(), nullptr, TIXML_ENCODING_UTF8);
    const TiXmlElement* root = document.RootElement();
    return !document.Error() && root && root->ValueStr() == tag && !root->NextSiblingElement();
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
