#include "hwu/PpCommunicationHandler.h"

#include "frame/OsService.h"
#include "frame/SscTrace.h"

#include <algorithm>

using namespace ssc_trace;

bool PpCommunicationHandler::canSend(pp::MessageNo message, std::uint32_t address, std::uint32_t port,
                                     const char* operation)
{
    const std::uint32_t now = OsService::getSystemTicks();
    for (ResetEntry* row = m_resetEntries.first(); row != nullptr; row = m_resetEntries.next()) {
        if (row->address != address || row->port != port) continue;
        // Unsigned difference: right across a wrap of the tick counter.
        if (now - row->tick <= kResetGuardTicks) {
            SSC_TRACE(a4ciGroup(), kUnexpected,
                      "Trying to send signal 0x%x with HWU on address 0x%x port %d to early after it has been reset.",
                      message, address, static_cast<int>(port));
            SSC_TRACE(a4ciGroup(), kUnexpected,
                      "PpCommunicationHandler::%s: Trying to send too soon after reset to address 0x%02x", operation,
                      address);
            return false;
        }
        m_resetEntries.removeCurrent();
        break;
    }
    if (message == pp::CC_RESET_FWD) m_resetEntries.add({address, port, now});
    return true;
}

bool PpCommunicationHandler::setExpectedResponse(pp::MessageNo message, pp::MessageNo& confirm, pp::MessageNo& reject)
{
    if (pp::findRequest(message) == nullptr) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Unexpected messageNo: 0x%02X in PpCommunicationHandler::setExpectedResponse",
                  message);
        return false;
    }
    confirm = pp::confirmOf(message);
    reject = pp::rejectOf(message);
    return true;
}

bool PpCommunicationHandler::sendWithRetry(std::uint32_t address, std::uint32_t port, const std::uint8_t* frame,
                                           std::uint32_t length, std::uint8_t* answer, std::uint32_t bufferLength,
                                           std::uint32_t& answerLength, bool commOk)
{
    const pp::MessageNo message = frame[0];
    const pp::CatalogueEntry* entry = pp::findRequest(message);
    const unsigned sends = entry != nullptr ? entry->sends : 3;
    for (unsigned attempt = 0; attempt < sends; ++attempt) {
        answerLength = 0;
        if (sendCommand(address, length, frame, bufferLength, &answerLength, answer, true, port)) return true;
    }
    if (commOk)
        SSC_TRACE(a4ciGroup(), kError, "Repeated message %d (0x%02x) timeout towards HWU on address 0x%X port %d",
                  message, message, address, static_cast<int>(port));
    return false;
}

bool PpCommunicationHandler::resetDevice(std::uint32_t address, std::uint32_t port)
{
    if (!canSend(pp::CC_RESET_FWD, address, port, "resetDevice")) return false;
    const std::uint8_t frame[] = {pp::CC_RESET_FWD, 0};
    std::uint32_t outLength = 0;
    return sendCommand(address, sizeof frame, frame, 0, &outLength, nullptr, false, port);
}

bool PpCommunicationHandler::clearStartFlag(std::uint8_t sequence, std::uint32_t address, std::uint32_t port,
                                            bool commOk)
{
    const std::uint8_t frame[] = {pp::CC_CLEAR_START_FLAG_REQ, sequence};
    if (!canSend(pp::CC_CLEAR_START_FLAG_REQ, address, port, "clearStartFlag")) return false;
    std::uint8_t answer[kSetAnswerBufferSize] = {};
    std::uint32_t answerLength = 0;
    if (!sendWithRetry(address, port, frame, sizeof frame, answer, sizeof answer, answerLength, commOk)) return false;
    if (answerLength != 2) {
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "Command Failed, clear start flag not confirmed at address 0x%02x (Invalid response length)!", address);
        return false;
    }
    if (answer[0] != pp::confirmOf(pp::CC_CLEAR_START_FLAG_REQ)) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Command Failed, clear start flag not confirmed at address 0x%02x!", address);
        return false;
    }
    return true;
}

bool PpCommunicationHandler::setDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                                           const PpSetData& data, std::uint32_t port, bool commOk, std::uint8_t* cause)
{
    pp::MessageNo confirm = 0;
    pp::MessageNo reject = 0;
    if (!setExpectedResponse(message, confirm, reject)) return false;
    PpFrameCodec::Frame frame{};
    std::uint32_t length = 0;
    if (!PpFrameCodec::encodeSet(message, sequence, data, frame, length)) return false;
    if (!canSend(message, address, port, "setDeviceData")) return false;
    std::uint8_t answer[kSetAnswerBufferSize] = {};
    std::uint32_t answerLength = 0;
    if (!sendWithRetry(address, port, frame.data(), length, answer, sizeof answer, answerLength, commOk)) return false;
    if (answerLength < 2) {
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "PpCommunicationHandler::setDeviceData: PP response too short, cmd %02X,  rspDataLength %d", message,
                  static_cast<int>(answerLength));
        return false;
    }
    if (answer[0] == confirm) return true;
    if (answer[0] == reject) {
        // The cause byte is there only when the reject carried it.
        const std::uint8_t causeByte = answerLength > 2 ? answer[2] : 0;
        SSC_TRACE(a4ciGroup(), kUnexpected, "PpCommunicationHandler::setDeviceData: Message %02X rejected, cause %02X",
                  message, causeByte);
        if (cause != nullptr) *cause = causeByte;
        return false;
    }
    SSC_TRACE(a4ciGroup(), kUnexpected, "PpCommunicationHandler::setDeviceData: Unexpected PP rsp, cmd %02X,  rsp %02X",
              message, answer[0]);
    return false;
}

bool PpCommunicationHandler::getDeviceData(pp::MessageNo message, std::uint8_t sequence, std::uint32_t address,
                                           PpDeviceData& out, std::uint32_t port, bool commOk)
{
    pp::MessageNo confirm = 0;
    pp::MessageNo reject = 0;
    if (!setExpectedResponse(message, confirm, reject)) return false;
    if (!canSend(message, address, port, "getDeviceData")) return false;
    const std::uint8_t frame[] = {message, sequence};
    std::uint8_t answer[kAnswerBufferSize] = {};
    std::uint32_t answerLength = 0;
    if (!sendWithRetry(address, port, frame, sizeof frame, answer, sizeof answer, answerLength, commOk)) return false;
    // An answer longer than the buffer is read as far as it was kept.
    const std::uint32_t kept = std::min<std::uint32_t>(answerLength, sizeof answer);
    if (kept > 0 && answer[0] == reject) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Message %02X rejected, error code %02X", message,
                  kept > 2 ? answer[2] : 0);
        return false;
    }
    if (kept == 0 || answer[0] != confirm) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Unexpected message in getDeviceData: 0x%02X", kept > 0 ? answer[0] : 0);
        return false;
    }
    return PpFrameCodec::decodeAnswer(answer, kept, out);
}

bool PpCommunicationHandler::sendFwd(pp::MessageNo message, std::uint32_t address, std::uint8_t data,
                                     std::uint32_t port)
{
    if (message != pp::CLU_SET_FAN_SPEED_FWD) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "PpCommunicationHandler::sendFwd: Unexpected message: 0x%02X", message);
        return false;
    }
    if (!canSend(message, address, port, "sendFwd")) return false;
    const std::uint8_t frame[] = {message, 0, data};
    std::uint32_t outLength = 0;
    return sendCommand(address, sizeof frame, frame, 0, &outLength, nullptr, false, port);
}

bool PpCommunicationHandler::getProductData(std::uint32_t address, PpProductIdentity& out, std::uint32_t port,
                                            bool commOk)
{
    // The guard runs here and again in getDeviceData: a refusal shows twice.
    PpDeviceData answer;
    bool ok = canSend(pp::CC_HW_PID_REQ, address, port, "getProductData") &&
              getDeviceData(pp::CC_HW_PID_REQ, 0, address, answer, port, commOk);
    if (ok) {
        if (const auto* identity = std::get_if<PpProductIdentity>(&answer)) out = *identity;
        else ok = false;
    }
    if (!ok) SSC_TRACE(a4ciGroup(), kInfo, "Production data for HWU on address 0x%02x not available", address);
    return ok;
}
