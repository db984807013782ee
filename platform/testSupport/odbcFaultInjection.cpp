#include "platform/testSupport/odbcFaultInjection.h"

#include <sql.h>
#include <sqlext.h>

#include <array>
#include <cstring>
#include <dlfcn.h>

namespace {

struct Fault {
    int armed = 0;
    int injected = 0;
};

std::array<Fault, 3> g_faults;
SQLHANDLE g_diagHandle = nullptr; // the handle whose next diagnostics are ours

Fault& fault(odbc_fault::Call call)
{
    return g_faults[static_cast<std::size_t>(call)];
}

bool take(odbc_fault::Call call)
{
    Fault& f = fault(call);
    if (f.armed == 0)
        return false;
    --f.armed;
    ++f.injected;
    return true;
}

template <typename Function>
Function real(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

namespace odbc_fault {

void failNext(Call call, int count)
{
    fault(call).armed = count;
}

int injected(Call call)
{
    return fault(call).injected;
}

void reset()
{
    g_faults = {};
    g_diagHandle = nullptr;
}

} // namespace odbc_fault

extern "C" {

SQLRETURN SQL_API SQLExecDirect(SQLHSTMT statement, SQLCHAR* text, SQLINTEGER length)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLExecDirect");
    if (take(odbc_fault::Call::ExecDirect)) {
        g_diagHandle = statement;
        return SQL_ERROR;
    }
    return next(statement, text, length);
}

SQLRETURN SQL_API SQLFetch(SQLHSTMT statement)
{
    static const auto next = real<SQLRETURN(SQL_API*)(SQLHSTMT)>("SQLFetch");
    if (take(odbc_fault::Call::Fetch)) {
        g_diagHandle = statement;
        return SQL_ERROR;
    }
    return next(statement);
}

SQLRETURN SQL_API SQLDriverConnect(SQLHDBC connection, SQLHWND window, SQLCHAR* in, SQLSMALLINT inLength,
                                   SQLCHAR* out, SQLSMALLINT outMax, SQLSMALLINT* outLength, SQLUSMALLINT completion)
{
    static const auto next =
        real<SQLRETURN(SQL_API*)(SQLHDBC, SQLHWND, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*,
                                 SQLUSMALLINT)>("SQLDriverConnect");
    if (take(odbc_fault::Call::Connect)) {
        g_diagHandle = connection;
        return SQL_ERROR;
    }
    return next(connection, window, in, inLength, out, outMax, outLength, completion);
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
    const char* text = type == SQL_HANDLE_DBC ? "data source not reachable (simulated)"
                                              : "communication link failure (simulated)";
    std::memcpy(state, type == SQL_HANDLE_DBC ? "08001" : "08S01", 6);
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
