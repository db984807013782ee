#pragma once
// Simulated loss of the database connection for tests. The test binary
// defines the ODBC entry points below itself; they pass every call to the
// driver manager unless a fault is armed. An armed SQLExecDirect or SQLFetch
// fails with SQLSTATE 08S01 (communication link failure), and an armed
// SQLDriverConnect fails as if the data source were away (08001). An armed
// SQLCloseCursor fails with a plain error (HY000). An armed commit
// (SQLEndTran with SQL_COMMIT) reports a lost link (08S01) either before the
// database saw it (EndTran: the transaction is rolled back) or after it
// committed (EndTranAfterCommit): the two cases a caller cannot tell apart.
// Another SQLSTATE may be given instead.
//
// A fault may be aimed: it then waits for a statement whose text contains
// the given words (for SQLFetch and SQLCloseCursor: the statement last run
// on that handle; for SQLDriverConnect: the connection string) and lets every
// other call pass, and it may let the first passFirst matching calls through
// (a fetch that fails after some rows were read).

#include <string>

namespace odbc_fault {

enum class Call { ExecDirect, Fetch, Connect, CloseCursor, EndTran, EndTranAfterCommit };

void failNext(Call call, int count, std::string statementContains = {}, std::string sqlState = {},
              int passFirst = 0);
int injected(Call call);
// The process kills itself (SIGKILL, as a crash would) at the nth matching
// call, before it reaches the database; for EndTranAfterCommit, right after
// the commit took effect. For crash tests in a child process.
void dieAt(Call call, int nth, std::string statementContains = {});
void reset();

} // namespace odbc_fault
