#pragma once
// Signals between the transaction client and the node platform's transaction
// server "VantoTransaction". The numbers, the transaction id at offset 4 of
// the register response and of the SQL pieces, at offset 8 of the commit and
// rollback indications, and the piece size are fixed by the platform; the
// other fields are this platform's own.
//
// A request that waits for an answer carries a client reference, echoed in
// the answer, so that a late answer to an earlier request that timed out is
// never taken for the answer to the current one.

#include "ose/BigEndian.h"
#include "ose/Types.h"

#include <cstdint>

namespace vanto_trans {

inline constexpr const char* kServerName = "VantoTransaction";

inline constexpr ose::SIGSELECT VANTO_TRANS_CREATE_REQ = 10001;
inline constexpr ose::SIGSELECT VANTO_TRANS_CREATE_CFM = 10002;
inline constexpr ose::SIGSELECT VANTO_TRANS_REGISTER_REQ = 10003;
inline constexpr ose::SIGSELECT VANTO_TRANS_REGISTER_RSP = 10004;
inline constexpr ose::SIGSELECT VANTO_TRANS_COMMIT_REQ = 10007;
inline constexpr ose::SIGSELECT VANTO_TRANS_COMMIT_CFM = 10008;
inline constexpr ose::SIGSELECT VANTO_TRANS_ROLLBACK_REQ = 10009;
inline constexpr ose::SIGSELECT VANTO_TRANS_ROLLBACK_CFM = 10010;
inline constexpr ose::SIGSELECT VANTO_TRANS_SERVER_DOWN_IND = 10011;
inline constexpr ose::SIGSELECT VANTO_TRANS_CONNECT_REQ = 10012;
inline constexpr ose::SIGSELECT VANTO_TRANS_CONNECT_CFM = 10013;
inline constexpr ose::SIGSELECT VANTO_TRANS_COMMIT_IND = 10014;
inline constexpr ose::SIGSELECT VANTO_TRANS_ROLLBACK_IND = 10015;
// The server's own attach signal: a client it supervises has died.
inline constexpr ose::SIGSELECT VANTO_TRANS_CLIENT_DOWN_IND = 10016;
inline constexpr ose::SIGSELECT VANTO_TRANS_SQL_IND = 10017;      // the last piece, with its NUL
inline constexpr ose::SIGSELECT VANTO_TRANS_SQL_PART_IND = 10018; // a full piece of 16000 bytes

// Results in the answers.
enum class TransResult : std::uint32_t {
    Ok = 0,                 // VANTO_TRANSACTION_OK
    UnknownTransaction = 1,
    RolledBack = 2,         // a commit that could not be carried out; the transaction is rolled back
    BadRequest = 3,
    NoServer = 4,           // client side: server not found or no answer in time
    NoTransactionId = 5,    // no free transaction id
    OutcomeUnknown = 6,     // the database link broke inside the commit and could not be asked since
};
inline constexpr int VANTO_TRANSACTION_OK = 0;

// Why a transaction was rolled back, at offset 4 of the rollback indication.
enum class RollbackReason : std::uint32_t {
    Requested = 0,
    StatementFailed = 1,
    BadStatement = 2, // a piece chain without its end, or a malformed piece
    ClientDown = 3,
    OutcomeUnknown = 4, // the transaction is over; whether it was stored is not known yet
};

inline constexpr std::uint32_t kSqlPieceBytes = 16000;

// Create, commit and rollback requests (10001, 10007, 10009).
struct VANTO_TRANS_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_i32 transactionId; // 0 in a create request
    ose::be_u32 option;        // the caller's extra argument; carried, not interpreted
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_REQ_S, 16);

// Answers to them (10002, 10008, 10010).
struct VANTO_TRANS_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_i32 transactionId;
    ose::be_u32 result; // TransResult
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_CFM_S, 16);

struct VANTO_TRANS_REGISTER_REQ_S {
    ose::be_u32 sigNo;
    ose::be_i32 transactionId;
    ose::be_u16 a;
    ose::be_u16 b;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_REGISTER_REQ_S, 12);

struct VANTO_TRANS_REGISTER_RSP_S {
    ose::be_u32 sigNo;
    ose::be_i32 transactionId;
    ose::be_u32 reserved;
    ose::be_u32 result; // TransResult
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_REGISTER_RSP_S, 16);

// Commit and rollback indications to every registered resource (10014, 10015).
struct VANTO_TRANS_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 reason; // RollbackReason; 0 in a commit indication
    ose::be_i32 transactionId;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_IND_S, 12);

struct VANTO_TRANS_CONNECT_REQ_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_CONNECT_REQ_S, 8);

struct VANTO_TRANS_CONNECT_CFM_S {
    ose::be_u32 sigNo;
    ose::be_u32 clientRef;
    ose::be_u32 result;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_CONNECT_CFM_S, 12);

// The attach signal the client leaves at the server (10011).
struct VANTO_TRANS_SERVER_DOWN_IND_S {
    ose::be_u32 sigNo;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_SERVER_DOWN_IND_S, 4);

// The attach signal the server leaves at a client (10016).
struct VANTO_TRANS_CLIENT_DOWN_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 client;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_CLIENT_DOWN_IND_S, 8);

// A full piece of a statement (10018): 16000 bytes of text without a NUL,
// then a zero word.
struct VANTO_TRANS_SQL_PART_IND_S {
    ose::be_u32 sigNo;
    ose::be_i32 transactionId;
    char text[kSqlPieceBytes];
    ose::be_u32 reserved;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_SQL_PART_IND_S, 16012);

// The last piece (10017): this head, then the rest of the text and its NUL;
// the signal is as long as that.
struct VANTO_TRANS_SQL_IND_S {
    ose::be_u32 sigNo;
    ose::be_i32 transactionId;
};
OSE_SIGNAL_LAYOUT(VANTO_TRANS_SQL_IND_S, 8);

} // namespace vanto_trans
