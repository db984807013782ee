#pragma once
// The node platform's transaction client, as the object process calls it.
// Every call acts from the calling process of a world and finds the server
// "VantoTransaction" on that process's node. Results: 0 success
// (VANTO_TRANSACTION_OK), otherwise a vanto_trans::TransResult number.

#include <cstdint>

// Finds the server, exchanges 10012 and 10013 with it and supervises it, so
// that 10011 arrives when it goes down. Tries again every 100 ms until this
// works; maxAttempts 0 tries for ever. Each successful call leaves one
// supervision, and so gives one 10011.
int VantoTransaction_serviceAttach_e(unsigned maxAttempts = 0);
// 10001, then at most 10000 ms for 10002; the new id in transactionId.
int VantoTransaction_create_e(int a, std::int32_t& transactionId, int b);
// 10003: the caller becomes a resource of the transaction. 0 means sent; the
// server answers with 10004, which the caller waits for itself.
int VantoTransaction_registerResource_e(std::int32_t transactionId, int a, int b);
// Waits at most 10000 ms for 10004 of this transaction, taking no other
// signal; 0 when it came, with its result.
int VantoTransaction_awaitRegisterRsp(std::int32_t transactionId, std::uint32_t& result);
// 10007, then at most 10000 ms for 10008.
int VantoTransaction_commit_e(std::int32_t transactionId, int b);
// 10009, then at most 10000 ms for 10010.
int VantoTransaction_rollBack_e(std::int32_t transactionId, int b);
// One statement to run at the transaction's commit: pieces of 16000 bytes by
// 10018, the rest with its NUL by 10017. No answer.
void VantoTransaction_databaseUpdateSQL(std::int32_t transactionId, const char* statement);
