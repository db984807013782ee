#pragma once
// A fresh SQLite database file per test, the object database on it and a
// transaction server on a connection of its own.

#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"
#include "platform/testSupport/odbcFaultInjection.h"
#include "platform/testSupport/odbcQuery.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

class dbTestFixture : public ::testing::Test {
protected:
    using Rows = odbc_query::Rows;

    void SetUp() override
    {
        odbc_fault::reset();
        char pattern[] = "/tmp/ssc_fro_db_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_config.connectionString = VantoDb_defaultConnectionString(m_dir);
        m_config.wait = [this](std::chrono::milliseconds) { ++m_waits; };
        m_config.maxConnectAttempts = 3;
        m_server = std::make_unique<localTransactionServer>(m_config);
        m_db = std::make_unique<DatabaseFacade>(m_config, *m_server);
        ASSERT_TRUE(m_db->init());
    }

    void TearDown() override
    {
        m_db.reset();
        m_server.reset();
        VantoDb_disconnect(m_probe);
        odbc_fault::reset();
        std::filesystem::remove_all(m_dir);
    }

    // Straight to the file, beside the object database.
    Rows query(const std::string& sql) { return odbc_query::run(m_probe, m_config, sql); }

    std::vector<std::string> dataTables()
    {
        std::vector<std::string> names;
        for (const auto& row : query("select name from sqlite_master where type = 'table' and name like "
                                     "'apc_frodata_%' order by name"))
            names.push_back(row[0]);
        return names;
    }

    // Commits at the server and tells the database, as the platform does.
    bool commit(std::int32_t transactionId)
    {
        const bool ok = m_server->commit_e(transactionId, 1) == 0;
        const auto signal = localTransactionServer::indication(ok ? 10014 : 10015, transactionId);
        m_db->handleSignal(signal.data(), signal.size());
        return ok;
    }

    std::unique_ptr<fRO> makeObject(const std::string& ldn, std::uint32_t froType)
    {
        return m_factory.createFro(ldn, froType, -1, false, true, true);
    }

    static std::string mimOf(const std::string& ldn, const fRO& object)
    {
        std::vector<std::string> names, types, values;
        for (const AttrNameValue& a : object.attributes()) {
            names.push_back(a.name());
            types.push_back(a.type());
            values.push_back(a.value());
        }
        std::string text;
        EXPECT_TRUE(xmlHandler::instance().build(ldn, "1.0", names, types, values, text));
        return text;
    }

    static std::string mimOf(const std::string& ldn, const std::vector<std::string>& names,
                             const std::vector<std::string>& types, const std::vector<std::string>& values)
    {
        std::string text;
        EXPECT_TRUE(xmlHandler::instance().build(ldn, "1.0", names, types, values, text));
        return text;
    }

    // name -> (type, value) as stored
    std::map<std::string, std::pair<std::string, std::string>> stored(std::int32_t froId, std::uint32_t froType)
    {
        std::vector<std::string> names, values, types;
        EXPECT_TRUE(m_db->retrieveFroAttributes(froId, froType, names, values, types));
        std::map<std::string, std::pair<std::string, std::string>> result;
        for (std::size_t i = 0; i < names.size(); ++i)
            result[names[i]] = {types[i], values[i]};
        return result;
    }

    static std::map<std::string, std::pair<std::string, std::string>> attributesOf(const fRO& object)
    {
        std::map<std::string, std::pair<std::string, std::string>> result;
        for (const AttrNameValue& a : object.attributes())
            result[a.name()] = {a.type(), a.value()};
        return result;
    }

    std::string m_dir;
    VantoDbConfig m_config;
    int m_waits = 0;
    std::unique_ptr<localTransactionServer> m_server;
    std::unique_ptr<DatabaseFacade> m_db;
    VantoDbHandles m_probe;
    froIdHandler m_ids;
    fROFactory m_factory{m_ids};
};
