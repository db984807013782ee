// The one place where the node platform's SQL is adapted to the data source.
//
// The platform's database knows a table option "persistent" and a catalogue
// table "tables" with a column "name" holding lower-case table names. Neither
// exists elsewhere: the option is dropped, and the catalogue query is turned
// into the data source's own catalogue, compared in lower case.

#include "platform/VantoDb.h"

namespace {

constexpr std::string_view kPersistentOption = "(persistent, ";
constexpr std::string_view kCatalogueQuery = "select name from tables where name = ";

std::string dropPersistentOption(std::string_view sql)
{
    const auto at = sql.find(kPersistentOption);
    std::string out(sql.substr(0, at + 1));
    out.append(sql.substr(at + kPersistentOption.size()));
    return out;
}

std::string catalogueQuery(VantoDbDialect dialect, std::string_view comparedName)
{
    std::string out = dialect == VantoDbDialect::Sqlite
                          ? "select lower(name) from sqlite_master where type = 'table' and lower(name) = "
                          : "select lower(table_name) from information_schema.tables where lower(table_name) = ";
    out.append(comparedName);
    return out;
}

} // namespace

std::string VantoDb_adaptSql(VantoDbDialect dialect, std::string_view sql)
{
    if (sql.starts_with("create table ") && sql.find(kPersistentOption) != std::string_view::npos)
        return dropPersistentOption(sql);
    if (sql.starts_with(kCatalogueQuery))
        return catalogueQuery(dialect, sql.substr(kCatalogueQuery.size()));
    return std::string(sql);
}
