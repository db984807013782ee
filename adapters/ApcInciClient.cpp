#include "adapters/ApcInciClient.h"

ApcInciClient::ApcInciClient(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}

ApcInciClient::~ApcInciClient() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> ApcInciClient::createSignalIterator()
{
    return makeSignalIterator<ApcInciClient>(*this, {});
}
