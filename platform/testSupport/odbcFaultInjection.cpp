#include "platform/testSupport/odbcFaultInjection.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <map>

namespace {

struct Fault {
    int armed = 0;
    int injected = 0;
    std::string statementContains;
    std::string sqlState; // empty: the call's own
    int passFirst = 0;    // matching calls let through before the first fault
};

std::array<Fault, 6> g_faults;

struct Death {
    odbc_fault::Call call;
    int countdown = 0; // 0: none armed
    std::string statementContains;
};
Death g_death;
SQLHANDLE g_diagHandle = nullptr;              // the handle whose next diagnostics are ours
std::string g_diagState;                       // and the state they report
std::map<SQLHANDLE, std::string> g_statements; // last text run on each statement handle

Fault& fault(odbc_fault::Call call)
{
    return g_faults[static_cast<std::size_t>(call)];
}

// The next call is to fail: the diagnostics of handle will tell state.
bool take(odbc_fault::Call call, SQLHANDLE handle, const char* defaultState, const std::string& statement = {})
{
    Fault& f = fault(call);
    if (f.armed == 0)
        return false;
    if (!f.statementContains.empty() && statement.find(f.statementContains) == std::string::npos)
        return false;
    if (f.passFirst > 0) {
        --f.passFirst;
        return false;
    }
    --f.armed;
    ++f.injected;
    g_diagHandle = handle;
    g_diagState = f.sqlState.empty() ? defaultState : f.sqlState;
    return true;
}

void dieIfDue(odbc_fault::Call call, const std::string& statement = {})
{
    if (g_death.countdown == 0 || g_death.call != call)
        return;
    if (!g_death.statementContains.empty() && statement.find(g_death.statementContains) == std::string::npos)
        return;
    if (--g_death.countdown == 0)
        raise(SIGKILL);
}

template <typename Function>
Function real(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

namespace odbc_fault {

void failNext(Call call, int count, std::string statementContains, std::string sqlState, int passFirst)
{
    fault(call).armed = count;
    fault(call).statementContains = std::move(statementContains);
    fault(call).sqlState = std::move(sqlState);
    fault(call).passFirst = passFirst;
}

int injected(Call call)
{
    return fault(call).injected;
}

void dieAt(Call call, int nth, std::string statementContains)
{
    g_death = {call, nth, std::move(statementContains)};
}

void reset()
{
    g_faults = {};
    g_death = {};
    g_diagHandle = nullptr;
    g_diagState.clear();
    g_statements.clear();
}

} // namespace odbc_fault

extern "C" {

SQLRETURN SQL_API SQLExecDirect(SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLExecDirect");
    std::string& current = g_statements[statement];
    if (text == nullptr)
        current.clear();
    else if (length == SQL_NTS)
        current = reinterpret_cast<const char*>(text);
    else
        current.assign(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length < 0 ? 0 : length));
    dieIfDue(odbc_fault::Call::ExecDirect, current);
    if (take(odbc_fault::Call::ExecDirect, statement, "08S01", current))
        return SQL_ERROR;
    return next(statement, text, length);
}

SQLRETURN SQL_API SQLFetch(SQLHSTMT statement)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLHSTMT)>("SQLFetch");
    if (take(odbc_fault::Call::Fetch, statement, "08S01", g_statements[statement]))
        return SQL_ERROR;
    return next(statement);
}

SQLRETURN SQL_API SQLCloseCursor(SQLHSTMT statement)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLHSTMT)>("SQLCloseCursor");
    // The cursor is closed all the same, so that the handle stays usable.
    const SQLRETURN rc = next(statement);
    // Nobody asks for its diagnostics: they must not stand for a later error.
    if (take(odbc_fault::Call::CloseCursor, nullptr, "HY000", g_statements[statement]))
        return SQL_ERROR;
    return rc;
}

SQLRETURN SQL_API SQLDriverConnect(SQLHDBC connection, SQLHWND window, SQLCHAR* in, SQLSMALLINT inLength,
                                   SQLCHAR* out, SQLSMALLINT outMax, SQLSMALLINT* outLength, SQLUSMALLINT completion)
{
    static const auto next =
        real<SQLRETURN(SQL_API*)(SQLHDBC, SQLHWND, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*,
                                 SQLUSMALLINT)>("SQLDriverConnect");
    const std::string text = in == nullptr              ? std::string()
                             : inLength == SQL_NTS ? std::string(reinterpret_cast<const char*>(in))
                                                   : std::string(reinterpret_cast<const char*>(in),
                                                                 static_cast<std::size_t>(inLength < 0 ? 0 : inLength));
    if (take(odbc_fault::Call::Connect, connection, "08001", text))
        return SQL_ERROR;
    return next(connection, window, in, inLength, out, outMax, outLength, completion);
}

SQLRETURN SQL_API SQLEndTran(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT completion)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLSMALLINT, SQLHANDLE, SQLSMALLINT)>("SQLEndTran");
    if (completion != SQL_COMMIT)
        return next(type, handle, completion);
    dieIfDue(odbc_fault::Call::EndTran);
    if (take(odbc_fault::Call::EndTran, handle, "08S01")) {
        next(type, handle, SQL_ROLLBACK); // the commit never reached the database
        return SQL_ERROR;
    }
    const SQLRETURN rc = next(type, handle, completion);
    dieIfDue(odbc_fault::Call::EndTranAfterCommit);
    if (SQL_SUCCEEDED(rc) && take(odbc_fault::Call::EndTranAfterCommit, handle, "08S01"))
        return SQL_ERROR; // committed, but the answer was lost on the way
    return rc;
}

SQLRETURN SQL_API SQLGetDiagRec(SQLSMALLINT type, SQLHANDLE handle, SQLSMALLINT record, SQLCHAR* state,
                                SQLINTEGER* native, SQLCHAR* message, SQLSMALLINT messageMax, SQLSMALLINT* length)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLCHAR*, SQLINTEGER*,
                                                      SQLCHAR*, SQLSMALLINT, SQLSMALLINT*)>("SQLGetDiagRec");
    if (handle == nullptr || handle != g_diagHandle)
        return next(type, handle, record, state, native, message, messageMax, length);
    if (record != 1) {
        g_diagHandle = nullptr;
        return SQL_NO_DATA;
    }
    const char* text = g_diagState == "08001"   ? "data source not reachable (simulated)"
                       : g_diagState == "08S01" ? "communication link failure (simulated)"
                                                : "general error (simulated)";
    std::memset(state, 0, 6);
    std::memcpy(state, g_diagState.c_str(), std::min<std::size_t>(g_diagState.size(), 5));
    if (native)
        *native = 0;
    if (message && messageMax > 0) {
        std::strncpy(reinterpret_cast<char*>(message), text, static_cast<std::size_t>(messageMax) - 1);
        message[messageMax - 1] = '\0';
    }
    if (length)
        *length = static_cast<SQLSMALLINT>(std::strlen(text));
    return SQL_SUCCESS;
}

} // extern "C"
