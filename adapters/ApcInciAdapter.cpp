#include "adapters/ApcInciAdapter.h"

ApcInciAdapter::ApcInciAdapter(SignalDispatcherIf* dispatcher) : AdapterBase(dispatcher) {}

ApcInciAdapter::~ApcInciAdapter() { deregisterSignals(); }

std::unique_ptr<SSC_Server::SignalIterator> ApcInciAdapter::createSignalIterator()
{
    return makeSignalIterator<ApcInciAdapter>(*this, {});
}
