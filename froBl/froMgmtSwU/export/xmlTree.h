#pragma once
// One complex attribute value (struct, array, moref) as a navigable tree.
// Values in the tree are kept escaped, as everywhere in the object layer; the
// setters and adders take plain text and escape it.

#include "froBl/froMgmtSwU/export/xmlDocument.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class xmlTree {
public:
    // Each step is a child's name or, if no child has that name, a decimal
    // index; the first empty step ends the path.
    using Path = std::array<std::string, 5>;

    // A primitive type (U32, S32, STRING) gives a leaf; a derived one (array,
    // struct, moref) parses value as its XML text.
    xmlTree(const std::string& name, const std::string& type, const std::string& value);
    explicit xmlTree(const xmlDocument::Element& element);

    bool failed() const { return m_failed; }
    std::string toString() const;

    bool getName(std::string& out, const Path& path = {}) const;
    bool getType(std::string& out, const Path& path = {}) const;
    bool getValue(std::string& out, const Path& path = {}) const;
    bool getS32(std::int32_t& out, const Path& path = {}) const;
    bool getU32(std::uint32_t& out, const Path& path = {}) const;
    bool getS32Array(std::vector<std::int32_t>& out, const Path& path = {}) const;
    bool size(std::size_t& out, const Path& path = {}) const;

    bool setString(const std::string& value, const Path& path = {});
    bool setS32(std::int32_t value, const Path& path = {});
    bool setU32(std::uint32_t value, const Path& path = {});

    bool addString(const std::string& name, const std::string& value, const Path& path = {});
    bool addS32(const std::string& name, std::int32_t value, const Path& path = {});
    bool addU32(const std::string& name, std::uint32_t value, const Path& path = {});
    bool addStruct(const std::string& name, const Path& path = {});
    bool addArray(const std::string& name, const Path& path = {});
    bool addArrayS32(std::int32_t value, const Path& path = {});

    static bool isPrimitive(std::string_view type);
    static bool isDerived(std::string_view type);

private:
    void buildFrom(const xmlDocument::Element& element);
    void appendTo(std::string& out) const;
    const xmlTree* find(const Path& path, std::size_t step) const;
    // find, with the callers' trace when nothing is found.
    const xmlTree* findNamed(const Path& path) const;
    xmlTree* findNamed(const Path& path);
    bool setTyped(const char* type, const std::string& value, const Path& path);
    bool add(const std::string& name, const std::string& type, const std::string& value, const Path& path);

    bool m_failed = false;
    std::string m_tag;
    std::string m_name;
    std::string m_type;
    std::string m_value;
    std::vector<xmlTree> m_children;
};
