#pragma once
// The platform's transaction client behind the interface that the object
// database and transMgr take, so that tests can put a fake in its place.

#include "platform/VantoTransactionApi.h"

class VantoTransactionClient : public VantoTransactionApi {
public:
    int serviceAttach_e() override;
    int create_e(int a, std::int32_t& transactionId, int b) override;
    int registerResource_e(std::int32_t transactionId, int a, int b) override;
    int awaitRegisterRsp(std::int32_t transactionId, std::uint32_t& result) override;
    int commit_e(std::int32_t transactionId, int b) override;
    int rollBack_e(std::int32_t transactionId, int b) override;
    void databaseUpdateSQL(std::int32_t transactionId, const std::string& statement) override;
};
