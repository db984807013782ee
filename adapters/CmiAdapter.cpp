#include "adapters/CmiAdapter.h"

CmiAdapter::CmiAdapter(SignalDispatcherIf* dispatcher) : AdapterBase(dispatcher) {}

CmiAdapter::~CmiAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> CmiAdapter::createSignalIterator()
{
    return makeSignalIterator<CmiAdapter>(*this, {});
}
