#include "climate/ClimateCtrlServer.h"

ClimateCtrlServer::ClimateCtrlServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}

ClimateCtrlServer::~ClimateCtrlServer() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> ClimateCtrlServer::createSignalIterator()
{
    return makeSignalIterator<ClimateCtrlServer>(*this, {});
}
