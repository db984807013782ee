#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "platform/VantoTransactionClient.h"

#include "ose/Kernel.h"

using namespace fro_trace;

namespace {

struct ProcessDatabase {
    VantoDbConfig config;
    int living = 0; // object processes' databases that use config now
};

ProcessDatabase& processDatabase()
{
    static ProcessDatabase database;
    return database;
}

// The configuration, read by the database of each object process; while one
// lives it is not changed.
VantoDbConfig takeConfiguration()
{
    VantoDbConfig config = processDatabase().config;
    // The waits between connection attempts let the rest of the node run.
    if (!config.wait)
        config.wait = [](std::chrono::milliseconds interval) { ose::delay(static_cast<ose::OSTIME>(interval.count())); };
    return config;
}

// The database of an object process, counted while it lives.
class ProcessDatabaseFacade : public DatabaseFacade {
public:
    ProcessDatabaseFacade()
        : DatabaseFacade(takeConfiguration(), SupSysSingletons::get<VantoTransactionClient>(),
                         &SignalDistributor::instance())
    {
        ++processDatabase().living;
    }
    ~ProcessDatabaseFacade() override { --processDatabase().living; }
};

} // namespace

bool DatabaseFacade::configure(VantoDbConfig config)
{
    ProcessDatabase& database = processDatabase();
    if (database.living > 0) {
        SSC_TRACE(dbGroup(), kError, "NC::DatabaseFacade::configure: the database is in use already, not changed");
        return false;
    }
    database.config = std::move(config);
    return true;
}

DatabaseFacade& DatabaseFacade::instance()
{
    return SupSysSingletons::get<ProcessDatabaseFacade>();
}

bool DatabaseFacade::retrieveFroAttributes(std::int32_t froId, std::uint32_t froType,
                                           std::vector<std::string>& names, std::vector<std::string>& values,
                                           std::vector<std::string>& types)
{
    std::string xml;
    if (!retrieveFRO(froId, froType, xml))
        return false;
    if (xml.empty())
        return true;
    xmlDocumentRecord record;
    if (!xmlHandler::instance().parse(xml, record))
        return false;
    names = std::move(record.names);
    values = std::move(record.values);
    types = std::move(record.types);
    return true;
}

bool DatabaseFacade::ncRetrieveFroIds(std::uint32_t typeFrom, std::uint32_t typeTo,
                                      std::vector<std::uint32_t>& froTypes)
{
    const std::string sql = "select frotype from apc_fro_versions where frotype >= " + std::to_string(typeFrom) +
                            " AND frotype < " + std::to_string(typeTo) + " order by frotype";
    SSC_TRACE(dbGroup(), kFlow, "Executing SQL: %s %d", sql.c_str(), static_cast<int>(sql.size()));
    std::vector<Row> rows;
    if (fetchRepeating("ncRetrieveFroIds", sql, {{1, ColumnKind::Unsigned}}, rows,
                       "NC::DatabaseFacade DB Disconnected while executing " + sql) != DBI_OPERATION_SUCCESS) {
        SSC_TRACE(dbGroup(), kError, "NC::DatabaseFacade::Failed when trying to execute %s", sql.c_str());
        return false;
    }
    for (const Row& row : rows) {
        if (!row[0]) {
            SSC_TRACE(dbGroup(), kError, "NC::DatabaseFacade::returned null data after calling SQLGetData");
            return false;
        }
        froTypes.push_back(static_cast<std::uint32_t>(std::stoul(*row[0])));
    }
    SSC_TRACE(dbGroup(), kFlow, "NC::DatabaseFacade::ncRetrieveFroIds: Fetched %zu data from the database",
              froTypes.size());
    return true;
}

bool DatabaseFacade::retrieveFros(std::uint32_t typeFrom, std::uint32_t typeTo, std::vector<froRecord>& records)
{
    std::vector<std::uint32_t> froTypes;
    if (!ncRetrieveFroIds(typeFrom, typeTo, froTypes))
        return false;
    std::vector<froRecord> stored;
    for (std::uint32_t froType : froTypes) {
        std::vector<std::int32_t> froIds;
        if (!getFroIds(froType, froIds))
            return false;
        for (std::int32_t froId : froIds)
            stored.push_back({froId, froType, {}});
    }
    // An object that cannot be read is left out and the others still come:
    // one bad row must not cost the restore of all the rest.
    for (froRecord& record : stored) {
        std::string xml;
        xmlDocumentRecord parsed;
        if (!retrieveFRO(record.froId, record.froType, xml) || !xmlHandler::instance().parse(xml, parsed)) {
            SSC_TRACE(dbGroup(), kError,
                      "NC::DatabaseFacade::retrieveFros: object %d of froType 0x%08x cannot be read, left out",
                      record.froId, record.froType);
            continue;
        }
        record.ldn = parsed.ldn;
        records.push_back(std::move(record));
    }
    return true;
}
