#pragma once
// Plain queries on a test's database beside the code under test: every row
// as text, NULL read as "NULL". The probe connects on first use.

#include "platform/VantoDb.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace odbc_query {

using Rows = std::vector<std::vector<std::string>>;

inline Rows run(VantoDbHandles& probe, const VantoDbConfig& config, const std::string& sql)
{
    Rows rows;
    if (!probe.connected) {
        probe.config = config;
        if (VantoDb_init(probe) != 1) {
            ADD_FAILURE() << "cannot open the test database";
            return rows;
        }
    }
    const SQLRETURN rc = SQLExecDirect(probe.stmt, (SQLCHAR*)sql.c_str(), SQL_NTS);
    EXPECT_TRUE(SQL_SUCCEEDED(rc) || rc == SQL_NO_DATA) << sql;
    SQLSMALLINT columns = 0;
    SQLNumResultCols(probe.stmt, &columns);
    while (columns > 0 && SQL_SUCCEEDED(SQLFetch(probe.stmt))) {
        std::vector<std::string> row;
        for (SQLUSMALLINT c = 1; c <= columns; ++c) {
            std::vector<char> buffer(200000);
            SQLLEN indicator = 0;
            SQLGetData(probe.stmt, c, SQL_C_CHAR, buffer.data(), static_cast<SQLLEN>(buffer.size()), &indicator);
            row.emplace_back(indicator == SQL_NULL_DATA ? "NULL" : buffer.data());
        }
        rows.push_back(std::move(row));
    }
    SQLFreeStmt(probe.stmt, SQL_CLOSE);
    return rows;
}

} // namespace odbc_query
