#include "adapters/EmiAdapter.h"

EmiAdapter::EmiAdapter(SignalDispatcherIf* dispatcher) : AdapterBase(dispatcher) {}

EmiAdapter::~EmiAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> EmiAdapter::createSignalIterator()
{
    return makeSignalIterator<EmiAdapter>(*this, {});
}
