#pragma once
// A fresh SQLite database file in a directory of its own, and plain queries
// on it beside whatever the test runs against it.

#include "platform/VantoDb.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

class sqliteFile {
public:
    using Rows = std::vector<std::vector<std::string>>;

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
    Rows query(const std::string& sql)
    {
        Rows rows;
        if (!m_probe.connected) {
            m_probe.config = m_config;
            if (VantoDb_init(m_probe) != 1) {
                ADD_FAILURE() << "cannot open " << m_dir;
                return rows;
            }
        }
        const SQLRETURN rc = SQLExecDirect(m_probe.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
        EXPECT_TRUE(SQL_SUCCEEDED(rc) || rc == SQL_NO_DATA) << sql;
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
