#include "platform/VantoTransactionClient.h"

#include "platform/VantoTransaction.h"

int VantoTransactionClient::serviceAttach_e()
{
    return VantoTransaction_serviceAttach_e();
}

int VantoTransactionClient::create_e(int a, std::int32_t& transactionId, int b)
{
    return VantoTransaction_create_e(a, transactionId, b);
}

int VantoTransactionClient::registerResource_e(std::int32_t transactionId, int a, int b)
{
    return VantoTransaction_registerResource_e(transactionId, a, b);
}

int VantoTransactionClient::awaitRegisterRsp(std::int32_t transactionId, std::uint32_t& result)
{
    return VantoTransaction_awaitRegisterRsp(transactionId, result);
}

int VantoTransactionClient::commit_e(std::int32_t transactionId, int b)
{
    return VantoTransaction_commit_e(transactionId, b);
}

int VantoTransactionClient::rollBack_e(std::int32_t transactionId, int b)
{
    return VantoTransaction_rollBack_e(transactionId, b);
}

void VantoTransactionClient::databaseUpdateSQL(std::int32_t transactionId, const std::string& statement)
{
    VantoTransaction_databaseUpdateSQL(transactionId, statement.c_str());
}
