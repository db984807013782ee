#pragma once
// Whole attribute documents: text to lists of names, types and values, and
// back.
//
//   <?xml version="1.0" encoding="UTF-8" ?>
//   <mim version="1.0">
//   <class ldn="Cabinet=1">
//   <attr name="smokeDetector" type="S32" value="0"/>
//   <struct name="productData">
//   ...
//   </struct>
//   </class>
//   </mim>
//
// The attribute elements may stand inside an <action name=".."> or a
// <fault name=".."> element below <class>.

#include "froBl/froMgmtSwU/export/xmlDocument.h"

#include <string>
#include <vector>

struct xmlDocumentRecord {
    enum Kind : int { Plain = 0, Action = 1, Fault = 2 };

    std::string version;
    std::string ldn;
    int kind = Plain;
    std::string actionName;
    std::string faultName;
    int attributeCount = 0;
    // Equal length. A struct, array or moref has its element word as type and
    // its complete XML text as value.
    std::vector<std::string> names;
    std::vector<std::string> types;
    std::vector<std::string> values;
};

class xmlHandler {
public:
    static xmlHandler& instance();

    bool parse(const std::string& text, xmlDocumentRecord& record) const;
    // An empty version gives a text without the mim element.
    bool build(const std::string& ldn, const std::string& version, const std::vector<std::string>& names,
               const std::vector<std::string>& types, const std::vector<std::string>& values,
               std::string& text) const;
    // Appends the element and all below it.
    bool serialise(const xmlDocument::Element& element, std::string& text) const;

    static bool isPrimitiveType(std::string_view type);
    static bool isDerivedType(std::string_view type);

private:
    bool readAttributes(xmlDocument::Element first, xmlDocumentRecord& record) const;
    static bool isSingleElement(const std::string& text, const std::string& tag);
};
