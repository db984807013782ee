#include "adapters/AlarmCtrlServer.h"

AlarmCtrlServer::AlarmCtrlServer(SignalDispatcherIf* dispatcher) : SSC_Server(dispatcher) {}

AlarmCtrlServer::~AlarmCtrlServer() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> AlarmCtrlServer::createSignalIterator()
{
    return makeSignalIterator<AlarmCtrlServer>(*this, {});
}
