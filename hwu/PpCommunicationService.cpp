#include "hwu/PpCommunicationService.h"

#include "frame/SscTrace.h"

using namespace ssc_trace;

namespace {

PpCommunicationHandler* g_pHandler = nullptr;

// Without a handler (a unit test that set none, or a process that is gone)
// every call fails with a trace instead of following a NIL pointer.
PpCommunicationHandler* handlerOrTrace()
{
    if (g_pHandler == nullptr) SSC_TRACE(a4ciGroup(), kError, "PpCommunicationService: no handler set");
    return g_pHandler;
}

} // namespace

void PpCommunicationService::setHandler(PpCommunicationHandler* handler) { g_pHandler = handler; }
PpCommunicationHandler* PpCommunicationService::getHandler() { return g_pHandler; }

bool PpCommunicationService::resetDevice(std::uint32_t address, std::uint32_t port)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr && handler->resetDevice(address, port);
}

bool PpCommunicationService::clearStartFlag(std::uint8_t sequence, std::uint32_t address, std::uint32_t port,
                                            bool commOk)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr && handler->clearStartFlag(sequence, address, port, commOk);
}

bool PpCommunicationService::setDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                                           const PpSetData& data, std::uint32_t port, bool commOk, std::uint8_t* cause)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr && handler->setDeviceData(message, sequence, address, data, port, commOk, cause);
}

bool PpCommunicationService::setDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                                           const PpSetData& data, std::uint32_t port, bool commOk)
{
    return setDeviceData(message, sequence, address, data, port, commOk, nullptr);
}

bool PpCommunicationService::getDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                                           PpDeviceData& out, std::uint32_t port, bool commOk)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr && handler->getDeviceData(message, sequence, address, out, port, commOk);
}

bool PpCommunicationService::sendFwd(pp::MessageNo message, std::uint32_t address, std::uint8_t data,
                                     std::uint32_t port)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr && handler->sendFwd(message, address, data, port);
}

bool PpCommunicationService::sendCommand(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                                         std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out,
                                         bool waitForAnswer, std::uint32_t port)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr &&
           handler->sendCommand(address, inLength, data, bufferLength, outLength, out, waitForAnswer, port);
}

bool PpCommunicationService::getProductData(std::uint32_t address, PpProductIdentity& out, std::uint32_t port,
                                            bool commOk)
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr && handler->getProductData(address, out, port, commOk);
}

std::uint8_t PpCommunicationService::nextSequenceNumber()
{
    PpCommunicationHandler* handler = handlerOrTrace();
    return handler != nullptr ? handler->nextSequenceNumber() : 0;
}
