#pragma once
// Simulated loss of the database connection for tests. The test binary
// defines the ODBC entry points below itself; they pass every call to the
// driver manager unless a fault is armed. An armed SQLExecDirect or SQLFetch
// fails with SQLSTATE 08S01 (communication link failure), and an armed
// SQLDriverConnect fails as if the data source were away.

namespace odbc_fault {

enum class Call { ExecDirect, Fetch, Connect };

void failNext(Call call, int count);
int injected(Call call);
void reset();

} // namespace odbc_fault
