#include "adapters/PciAdapter.h"

PciAdapter::PciAdapter(SignalDispatcherIf* dispatcher) : AdapterBase(dispatcher) {}

PciAdapter::~PciAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> PciAdapter::createSignalIterator()
{
    return makeSignalIterator<PciAdapter>(*this, {});
}
