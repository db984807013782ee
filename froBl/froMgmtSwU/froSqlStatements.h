#pragma once
// The SQL texts of the object database. Names and values go through sqlText;
// a builder refuses (false, with a trace) what cannot be written safely.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class froSqlStatements {
public:
    static constexpr const char* kVersionsTable = "apc_fro_versions";
    static constexpr const char* kAttributesTable = "apc_fro_attributes";
    static constexpr const char* kDataTablePrefix = "apc_frodata_";
    static constexpr const char* kDataTableSuffix = "_INITIAL";
    // Never stored: the parent is known from the ldn.
    static constexpr const char* kParentRef = "parentRef";
    static constexpr const char* kVersionsColumns =
        "frotype integer, froTypeName varchar(0), frodataTableName varchar(0), primary key(frotype)";
    static constexpr const char* kAttributesColumns =
        "frotype integer, attrname varchar(0), attrtype varchar(0), primary key(frotype, attrname)";

    static std::string dataTableName(std::string_view className);
    static std::string createTable(const std::string& name, const std::string& columns);
    static std::string insertVersion(std::uint32_t froType, std::string_view className);
    static std::string insertAttributeType(std::uint32_t froType, const std::string& name, const std::string& type);

    // "froid integer, ldn varchar(0) not null, <name> <type> not null, ... primary key(froid)"
    static bool dataColumns(const std::vector<std::string>& names, const std::vector<std::string>& types,
                            std::string& columns);
    static bool insertObject(const std::string& table, std::int32_t froId, const std::string& ldn,
                             const std::vector<std::string>& names, const std::vector<std::string>& types,
                             const std::vector<std::string>& values, std::string& statement);
    // An empty statement when nothing is left to update.
    static bool updateObject(const std::string& table, std::int32_t froId, const std::vector<std::string>& names,
                             const std::vector<std::string>& types, const std::vector<std::string>& values,
                             std::string& statement);
    static bool selectObject(const std::string& table, std::int32_t froId, const std::vector<std::string>& names,
                             std::string& statement);

    static bool isParentRef(const std::string& name) { return name == kParentRef; }
    // A type word that the attribute format can write back: the primitive
    // words, the complex ones, or none at all.
    static bool isStorableType(const std::string& type);
    // Names that can all be columns of one table beside froid and ldn:
    // identifiers, no keyword, none twice (case does not count, as in SQL).
    static bool checkColumnNames(const char* who, const std::vector<std::string>& names);

private:
    static bool checkName(const char* who, const std::string& name);
    static bool checkType(const char* who, const std::string& name, const std::string& type);
    // Appends the value as an SQL literal of its type to out.
    static bool literal(const char* who, const std::string& name, const std::string& type,
                        const std::string& value, std::string& out);
};
