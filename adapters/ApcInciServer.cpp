#include "adapters/ApcInciServer.h"

ApcInciServer::ApcInciServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}

ApcInciServer::~ApcInciServer() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> ApcInciServer::createSignalIterator()
{
    return makeSignalIterator<ApcInciServer>(*this, {});
}
