#pragma once
// A SQLite object database of its own, and 10,000 unit objects (seven
// attributes, one of them the product data struct) stored in it as the
// management client's commit stores them: what the benchmarks of the object
// database and of the node's start read.

#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace stored_objects {

inline constexpr int kObjects = 10000;

struct Body {
    std::int32_t froId;
    std::string xml;
};

// The objects as the management client would send them.
inline std::vector<Body> makeBodies()
{
    froIdHandler ids;
    fROFactory factory(ids);
    std::vector<Body> bodies;
    std::vector<std::unique_ptr<fRO>> units; // each keeps its id while the others are made
    for (int i = 0; i < kObjects; ++i) {
        const std::string ldn = "Cabinet=1,HwUnit=" + std::to_string(i);
        auto unit = factory.createFro(ldn, fro_types::kHwUnit, -1, false, true, true);
        std::vector<std::string> names, types, values;
        for (const AttrNameValue& a : unit->attributes()) {
            names.push_back(a.name());
            types.push_back(a.type());
            values.push_back(a.value());
        }
        Body body{unit->getExternalId(), {}};
        xmlHandler::instance().build(ldn, "1.0", names, types, values, body.xml);
        bodies.push_back(std::move(body));
        units.push_back(std::move(unit));
    }
    return bodies;
}

inline const std::vector<Body>& bodies()
{
    static const std::vector<Body> all = makeBodies();
    return all;
}

class Database {
public:
    Database()
    {
        char pattern[] = "/tmp/ssc_fro_bench_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_config.connectionString = VantoDb_defaultConnectionString(m_dir);
        m_server = std::make_unique<localTransactionServer>(m_config);
        m_db = std::make_unique<DatabaseFacade>(m_config, *m_server);
        m_db->init();
    }
    ~Database()
    {
        m_db.reset();
        m_server.reset();
        std::filesystem::remove_all(m_dir);
    }

    bool saveAll()
    {
        const std::int32_t tx = m_server->newTransaction();
        for (const Body& body : bodies())
            if (!m_db->saveFRO(tx, body.froId, fro_types::kHwUnit, body.xml))
                return false;
        const bool ok = m_server->commit_e(tx, 1) == 0;
        if (!ok)
            std::fprintf(stderr, "commit failed: %s\n", m_server->lastError().c_str());
        const auto signal = localTransactionServer::indication(10014, tx);
        m_db->handleSignal(signal.data(), signal.size());
        return ok;
    }

    DatabaseFacade& db() { return *m_db; }
    const VantoDbConfig& config() const { return m_config; }

private:
    std::string m_dir;
    VantoDbConfig m_config;
    std::unique_ptr<localTransactionServer> m_server;
    std::unique_ptr<DatabaseFacade> m_db;
};

} // namespace stored_objects
