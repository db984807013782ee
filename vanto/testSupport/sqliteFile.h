#pragma once
// A fresh SQLite database file in a directory of its own, and plain queries
// on it beside whatever the test runs against it.

#include "platform/VantoDb.h"
#include "platform/testSupport/odbcQuery.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

class sqliteFile {
public:
    using Rows = odbc_query::Rows;

    sqliteFile()
    {
        char pattern[] = "/tmp/ssc_vanto_db_XXXXXX";
        m_dir = mkdtemp(pattern);
        m_config.connectionString = VantoDb_defaultConnectionString(m_dir);
        m_config.maxConnectAttempts = 3;
    }
    ~sqliteFile()
    {
        VantoDb_disconnect(m_probe);
        std::filesystem::remove_all(m_dir);
    }
    sqliteFile(const sqliteFile&) = delete;
    sqliteFile& operator=(const sqliteFile&) = delete;

    const VantoDbConfig& config() const { return m_config; }
    const std::string& dir() const { return m_dir; }

    // Runs sql and gives all rows as text; NULL reads "NULL".
    Rows query(const std::string& sql) { return odbc_query::run(m_probe, m_config, sql); }
    std::string scalar(const std::string& sql)
    {
        const Rows rows = query(sql);
        return rows.empty() || rows[0].empty() ? std::string("<none>") : rows[0][0];
    }
    // The probe lets go of the file, so that another process may take it.
    void closeProbe() { VantoDb_disconnect(m_probe); }

private:
    std::string m_dir;
    VantoDbConfig m_config;
    VantoDbHandles m_probe;
};
