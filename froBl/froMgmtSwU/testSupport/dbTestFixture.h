#pragma once
// A fresh SQLite database file per test, the object database on it and a
// transaction server on a connection of its own.

#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"
#include "froBl/froMgmtSwU/testSupport/localTransactionServer.h"
#include "platform/testSupport/odbcFaultInjection.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

class dbTestFixture : public ::testing::Test {
protected:
    using Rows = std::vector<std::vector<std::string>>;

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
    Rows query(const std::string& sql)
    {
        Rows rows;
        if (!m_probe.connected) {
            m_probe.config = m_config;
            EXPECT_EQ(VantoDb_init(m_probe), 1);
        }
        EXPECT_TRUE(SQL_SUCCEEDED(SQLExecDirect(m_probe.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS))) << sql;
        SQLSMALLINT columns = 0;
        SQLNumResultCols(m_probe.stmt, &columns);
        while (columns > 0 && SQL_SUCCEEDED(SQLFetch(m_probe.stmt))) {
            std::vector<std::string> row;
            for (SQLUSMALLINT c = 1; c <= columns; ++c) {
                std::vector<char> buffer(200000);
                SQLLEN indicator = 0;
                SQLGetData(m_probe.stmt, c, SQL_C_CHAR, buffer.data(), static_cast<SQLLEN>(buffer.size()), &indicator);
                row.emplace_back(indicator == SQL_NULL_DATA ? "NULL" : buffer.data());
            }
            rows.push_back(std::move(row));
        }
        SQLFreeStmt(m_probe.stmt, SQL_CLOSE);
        return rows;
    }

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
