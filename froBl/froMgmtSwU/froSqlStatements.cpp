#include "froBl/froMgmtSwU/froSqlStatements.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/sqlText.h"

using namespace fro_trace;

std::string froSqlStatements::dataTableName(std::string_view className)
{
    return std::string(kDataTablePrefix) + std::string(className) + kDataTableSuffix;
}

std::string froSqlStatements::createTable(const std::string& name, const std::string& columns)
{
    return "create table " + name + " (persistent, " + columns + ")";
}

std::string froSqlStatements::insertVersion(std::uint32_t froType, std::string_view className)
{
    return std::string("insert into ") + kVersionsTable + " (frotype, froTypeName, frodataTableName) values (" +
           std::to_string(froType) + ", " + sqlText::quote(className) + ", " +
           sqlText::quote(dataTableName(className)) + ")";
}

std::string froSqlStatements::insertAttributeType(std::uint32_t froType, const std::string& name,
                                                  const std::string& type)
{
    return std::string("insert into ") + kAttributesTable + " (frotype, attrname, attrtype) values (" +
           std::to_string(froType) + ", " + sqlText::quote(name) + ", " + sqlText::quote(type) + ")";
}

bool froSqlStatements::checkName(const char* who, const std::string& name)
{
    if (sqlText::isIdentifier(name))
        return true;
    SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: attribute name %s cannot be a column name", who,
              name.c_str());
    return false;
}

bool froSqlStatements::isStorableType(const std::string& type)
{
    return type.empty() || xmlHandler::isPrimitiveType(type) || xmlHandler::isDerivedType(type);
}

bool froSqlStatements::checkColumnNames(const char* who, const std::vector<std::string>& names)
{
    std::vector<const std::string*> seen{};
    for (const std::string& name : names) {
        if (isParentRef(name))
            continue;
        if (!checkName(who, name))
            return false;
        bool clash = sqlText::isReservedWord(name) || sqlText::equalsNoCase(name, "froid") ||
                     sqlText::equalsNoCase(name, "ldn");
        for (const std::string* other : seen)
            clash = clash || sqlText::equalsNoCase(name, *other);
        if (clash) {
            SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: attribute name %s cannot be a column name "
                                         "here", who, name.c_str());
            return false;
        }
        seen.push_back(&name);
    }
    return true;
}

bool froSqlStatements::checkType(const char* who, const std::string& name, const std::string& type)
{
    if (isStorableType(type))
        return true;
    if (std::string_view(who) == "saveFRO")
        SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::saveFRO: Received attribute has an unknown type: %s",
                  type.c_str());
    else
        SSC_TRACE(dbGroup(), kError,
                  "ELIB::ElibDbFroDatabase::saveAttributes: Received attribute %s has an unknown type: %s and will "
                  "not be updated",
                  name.c_str(), type.c_str());
    return false;
}

bool froSqlStatements::literal(const char* who, const std::string& name, const std::string& type,
                               const std::string& value, std::string& out)
{
    if (sqlText::sqlTypeOf(type) != sqlText::SqlType::Integer) {
        sqlText::appendQuoted(out, value);
        return true;
    }
    std::string number;
    if (sqlText::integerLiteral(value, type, number)) {
        out += number;
        return true;
    }
    SSC_TRACE(dbGroup(), kError, "ELIB::ElibDbFroDatabase::%s: value of %s is not a number of type %s", who,
              name.c_str(), type.c_str());
    return false;
}

bool froSqlStatements::dataColumns(const std::vector<std::string>& names, const std::vector<std::string>& types,
                                   std::string& columns)
{
    if (!checkColumnNames("createTable", names))
        return false;
    columns = "froid integer, ldn varchar(0) not null, ";
    for (std::size_t i = 0; i < names.size() && i < types.size(); ++i) {
        if (isParentRef(names[i]))
            continue;
        columns += names[i] + " " + sqlText::sqlTypeName(sqlText::sqlTypeOf(types[i])) + " not null, ";
    }
    columns += "primary key(froid)";
    return true;
}

bool froSqlStatements::insertObject(const std::string& table, std::int32_t froId, const std::string& ldn,
                                    const std::vector<std::string>& names, const std::vector<std::string>& types,
                                    const std::vector<std::string>& values, std::string& statement)
{
    std::string literals = ") values (" + std::to_string(froId) + ", ";
    sqlText::appendQuoted(literals, ldn);
    statement = "insert into " + table + " (froid, ldn";
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (isParentRef(names[i]))
            continue;
        if (!checkName("saveFRO", names[i]) || !checkType("saveFRO", names[i], types[i]))
            return false;
        literals += ", ";
        if (!literal("saveFRO", names[i], types[i], values[i], literals))
            return false;
        statement += ", ";
        statement += names[i];
    }
    statement += literals;
    statement += ')';
    return true;
}

bool froSqlStatements::updateObject(const std::string& table, std::int32_t froId,
                                    const std::vector<std::string>& names, const std::vector<std::string>& types,
                                    const std::vector<std::string>& values, std::string& statement)
{
    std::string assignments;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (isParentRef(names[i]))
            continue;
        std::string value;
        if (!checkName("saveAttributes", names[i]) || !checkType("saveAttributes", names[i], types[i]) ||
            !literal("saveAttributes", names[i], types[i], values[i], value))
            return false;
        assignments += (assignments.empty() ? "" : ", ") + names[i] + " = " + value;
    }
    statement.clear();
    if (!assignments.empty())
        statement = "update " + table + " set " + assignments + " where froid = " + std::to_string(froId);
    return true;
}

bool froSqlStatements::selectObject(const std::string& table, std::int32_t froId,
                                    const std::vector<std::string>& names, std::string& statement)
{
    statement = "select froId, ldn";
    for (const std::string& name : names) {
        if (!checkName("fetchFRO", name))
            return false;
        statement += ", " + name;
    }
    statement += " from " + table + " where froid = " + std::to_string(froId);
    return true;
}
