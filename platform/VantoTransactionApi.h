#pragma once
// The transaction client of the node platform as the object database sees it.
// Statements handed over by databaseUpdateSQL take effect when the platform's
// transaction server commits the transaction.

#include <cstdint>
#include <string>

class VantoTransactionApi {
public:
    virtual ~VantoTransactionApi() = default;

    // 0 on success, as the platform's calls give it.
    virtual int serviceAttach_e() = 0;
    virtual int create_e(int a, std::int32_t& transactionId, int b) = 0;
    // Makes the caller a resource of the transaction, told of its commit or
    // rollback. 0 means asked; the answer comes as a signal.
    virtual int registerResource_e(std::int32_t transactionId, int a, int b) = 0;
    // Waits for the answer to that registration (10004) and takes no other
    // signal meanwhile. 0 when it came, with its result; otherwise none came
    // in time.
    virtual int awaitRegisterRsp(std::int32_t transactionId, std::uint32_t& result) = 0;
    virtual int commit_e(std::int32_t transactionId, int b) = 0;
    virtual int rollBack_e(std::int32_t transactionId, int b) = 0;
    // One statement to run in the transaction; there is no answer.
    virtual void databaseUpdateSQL(std::int32_t transactionId, const std::string& statement) = 0;
};
