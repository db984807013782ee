#include "adapters/PmiAdapter.h"

PmiAdapter::PmiAdapter(SignalDispatcherIf* dispatcher) : AdapterBase(dispatcher) {}

PmiAdapter::~PmiAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> PmiAdapter::createSignalIterator()
{
    return makeSignalIterator<PmiAdapter>(*this, {});
}
