#pragma once
// A transaction server on a database connection of its own: statements handed
// over are kept per transaction and run in one database transaction at
// commit, as the platform's server does. For tests and benchmarks.

#include "platform/VantoDb.h"
#include "platform/VantoTransactionApi.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class localTransactionServer : public VantoTransactionApi {
public:
    explicit localTransactionServer(VantoDbConfig config);
    ~localTransactionServer() override;

    int serviceAttach_e() override;
    int create_e(int a, std::int32_t& transactionId, int b) override;
    // Only counted: this server sends no signals.
    int registerResource_e(std::int32_t transactionId, int a, int b) override;
    // Answers at once: registered.
    int awaitRegisterRsp(std::int32_t transactionId, std::uint32_t& result) override;
    int commit_e(std::int32_t transactionId, int b) override;
    int rollBack_e(std::int32_t transactionId, int b) override;
    void databaseUpdateSQL(std::int32_t transactionId, const std::string& statement) override;

    std::int32_t newTransaction();
    const std::vector<std::string>& pending(std::int32_t transactionId) { return m_pending[transactionId]; }
    const std::string& lastError() const { return m_lastError; }
    int attachCount() const { return m_attachCount; }
    int registerCount() const { return m_registerCount; }

    // The indication that the platform sends to a resource: number, a word,
    // the transaction id at offset 8, all big-endian.
    static std::array<std::uint8_t, 12> indication(std::uint32_t sigNo, std::int32_t transactionId);

private:
    bool runAll(const std::vector<std::string>& statements);

    VantoDbHandles m_handles;
    std::map<std::int32_t, std::vector<std::string>> m_pending;
    std::int32_t m_nextId = 1;
    int m_attachCount = 0;
    int m_registerCount = 0;
    std::string m_lastError;
};
