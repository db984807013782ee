#include "adapters/AlmAdapter.h"

AlmAdapter::AlmAdapter(SignalDispatcherIf* dispatcher) : AdapterBase(dispatcher) {}

AlmAdapter::~AlmAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> AlmAdapter::createSignalIterator()
{
    return makeSignalIterator<AlmAdapter>(*this, {});
}
