#include "hwu/WLPpCommunicationHandler.h"

#include "frame/HuntService.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcherIf.h"
#include "frame/SscTrace.h"
#include "hwu/A4ciSignals.h"

#include <algorithm>
#include <cstring>

using namespace ssc_trace;

WLPpCommunicationHandler::WLPpCommunicationHandler(SignalDispatcherIf* dispatcher) : m_pDispatcher(dispatcher)
{
    connect();
}

bool WLPpCommunicationHandler::connect()
{
    const char* name = a4ci::kServerName;
    SSC_TRACE(a4ciGroup(), kInfo, "Hunting for %s...", name);
    ose::Signal* huntSignal = OsService::alloc(sizeof(a4ci::A4CI_HUNT_S), a4ci::A4CI_HUNT_SIG);
    m_serverPid = HuntService::huntAndWait(name, huntSignal, kHuntTimeoutMs);
    if (m_serverPid == 0) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Timeout waiting for hunt response from %s", name);
        return false;
    }
    SSC_TRACE(a4ciGroup(), kInfo, "Hunt response received from %s with PID: %d", name, static_cast<int>(m_serverPid));
    SSC_TRACE(a4ciGroup(), kInfo, "Trying to connect to %s...", name);
    auto* request = OsService::allocAs<a4ci::A4CI_CONN_ESTABLISH_REQ_S>(a4ci::A4CI_CONN_ESTABLISH_REQ);
    request->protocolVersion = a4ci::kProtocolVersion;
    ose::Signal* answer =
        m_pDispatcher->sendAndReceive(reinterpret_cast<ose::Signal*>(request), m_serverPid,
                                      a4ci::A4CI_CONN_ESTABLISH_CFM, a4ci::A4CI_CONN_ESTABLISH_REJ, kAnswerTimeoutMs);
    if (answer == nullptr) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Timeout waiting for %s", name);
        return false;
    }
    const bool confirmed = ose::signalNumber(answer) == a4ci::A4CI_CONN_ESTABLISH_CFM;
    OsService::free(&answer);
    if (!confirmed) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Received A4CI_CONN_ESTABLISH_REJ from %s", name);
        return false;
    }
    SSC_TRACE(a4ciGroup(), kInfo, "Connection established with %s", name);
    m_connected = true;
    return true;
}

bool WLPpCommunicationHandler::sendCommand(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                                           std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out,
                                           bool waitForAnswer, std::uint32_t port)
{
    if (outLength != nullptr) *outLength = 0;
    if (data == nullptr) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Received NIL-pointer in sendCommand.");
        return false;
    }
    if (inLength > pp::BCP_A4CI_MAX_DATA_SIZE) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Data to long to fit in A4CI signal! inDataLength: %d, BCP_A4CI_MAX_DATA_SIZE %d",
                  static_cast<int>(inLength), static_cast<int>(pp::BCP_A4CI_MAX_DATA_SIZE));
        return false;
    }
    if (!m_connected && !connect()) return false;
    if (!waitForAnswer) return forward(address, inLength, data, port);
    if (!purgeStaleAnswers()) return false;
    for (unsigned attempt = 0; attempt < kAttempts; ++attempt) {
        // An empty request asks the server again for the answer to the last.
        if (attempt > 0) OsService::delay(kReaskDelayMs);
        const int result = exchange(address, attempt == 0 ? inLength : 0, data, bufferLength, outLength, out, port);
        if (result != 0) return result > 0;
    }
    return false;
}

bool WLPpCommunicationHandler::forward(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                                       std::uint32_t port)
{
    auto* fwd = OsService::allocAs<a4ci::A4CI_DATA_REQ_S>(a4ci::A4CI_DATA_FWD);
    if (fwd == nullptr) {
        SSC_TRACE(a4ciGroup(), kError, "Could not allocate memory for signal A4CI_DATA_FWD.");
        return false;
    }
    fwd->port = static_cast<std::uint16_t>(port);
    fwd->address = static_cast<std::uint8_t>(address);
    fwd->length = static_cast<std::uint16_t>(inLength);
    std::memcpy(fwd->data, data, inLength);
    m_pDispatcher->sendSignal(reinterpret_cast<ose::Signal*>(fwd), m_serverPid);
    return true;
}

bool WLPpCommunicationHandler::purgeStaleAnswers()
{
    for (unsigned call = 0; call < kPurgeLimit; ++call) {
        ose::Signal* stale = m_pDispatcher->receiveWithTimeout(a4ci::A4CI_DATA_CFM, a4ci::A4CI_DATA_REJ, 1);
        if (stale == nullptr) return true;
        SSC_TRACE(a4ciGroup(), kUnexpected, "INCONSISTENCY, invalid signal %d, in inbox",
                  static_cast<int>(ose::signalNumber(stale)));
        OsService::free(&stale);
    }
    SSC_TRACE(a4ciGroup(), kError, "Safety counter reached. Too many invalid messages in inbox.");
    return false;
}

int WLPpCommunicationHandler::exchange(std::uint32_t address, std::uint32_t inLength, const std::uint8_t* data,
                                       std::uint32_t bufferLength, std::uint32_t* outLength, std::uint8_t* out,
                                       std::uint32_t port)
{
    auto* request = OsService::allocAs<a4ci::A4CI_DATA_REQ_S>(a4ci::A4CI_DATA_REQ);
    if (request == nullptr) {
        SSC_TRACE(a4ciGroup(), kError, "Could not allocate memory for signal A4CI_DATA_REQ.");
        return -1;
    }
    request->port = static_cast<std::uint16_t>(port);
    request->address = static_cast<std::uint8_t>(address);
    request->length = static_cast<std::uint16_t>(inLength);
    std::memcpy(request->data, data, inLength);
    ose::Signal* answer = m_pDispatcher->sendAndReceive(reinterpret_cast<ose::Signal*>(request), m_serverPid,
                                                        a4ci::A4CI_DATA_CFM, a4ci::A4CI_DATA_REJ, kAnswerTimeoutMs);
    if (answer == nullptr) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Timeout. No signal is received, try to reconnect next time.");
        SSC_TRACE(a4ciGroup(), kUnexpected, "Timed out when signal %d was sent to address: 0x%X, port: %d",
                  static_cast<int>(a4ci::A4CI_DATA_REQ), address, static_cast<int>(port));
        m_connected = false;
        return -1;
    }
    const int result = readConfirm(answer, bufferLength, outLength, out);
    OsService::free(&answer);
    return result;
}

namespace {

void traceReject(std::uint16_t errorCode)
{
    const char* text = "Undefined errorCode from A4CI Server";
    if (errorCode == a4ci::BCP_A4CI_UNEXPECTED_PARAMETER_VALUE) text = "BCP_A4CI_UNEXPECTED_PARAMETER_VALUE";
    if (errorCode == a4ci::BCP_A4CI_OTHER_ERROR) text = "BCP_A4CI_OTHER_ERROR";
    if (errorCode == a4ci::BCP_A4CI_TIME_OUT) text = "BCP_A4CI_TIME_OUT";
    SSC_TRACE(a4ciGroup(), kUnexpected, "%s", text);
}

} // namespace

int WLPpCommunicationHandler::readConfirm(ose::Signal* answer, std::uint32_t bufferLength, std::uint32_t* outLength,
                                          std::uint8_t* out)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(answer);
    const ose::OSBUFSIZE size = OsService::sigsize(answer);
    if (sigNo == a4ci::A4CI_DATA_REJ) {
        // A reject too short to hold its code is traced as an unknown code.
        const bool whole = size >= sizeof(a4ci::A4CI_DATA_REJ_S);
        traceReject(whole ? static_cast<std::uint16_t>(reinterpret_cast<const a4ci::A4CI_DATA_REJ_S*>(answer)->errorCode)
                          : 0);
        return -1;
    }
    if (sigNo != a4ci::A4CI_DATA_CFM || size < a4ci::kDataCfmHeadSize) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Neither A4CI_DATA_CFM nor A4CI_DATA_REJ received from A4CI Server");
        return -1;
    }
    const auto* confirm = reinterpret_cast<const a4ci::A4CI_DATA_CFM_S*>(answer);
    std::uint32_t length = confirm->length;
    const std::uint32_t carried = size - a4ci::kDataCfmHeadSize;
    if (length > carried) {
        // The length field is the server's word; the bytes are what came.
        SSC_TRACE(a4ciGroup(), kUnexpected, "A4CI_DATA_CFM claims %d answer bytes but carries %d",
                  static_cast<int>(length), static_cast<int>(carried));
        length = carried;
    }
    if (length == 0) return 0;
    if (outLength != nullptr) *outLength = length;
    if (length > bufferLength)
        SSC_TRACE(a4ciGroup(), kUnexpected, "Buffer length (%d) shorter than answer length (%d). Possible loss of data.",
                  static_cast<int>(bufferLength), static_cast<int>(length));
    if (out != nullptr)
        std::memcpy(out, reinterpret_cast<const std::uint8_t*>(answer) + a4ci::kDataCfmHeadSize,
                    std::min(length, bufferLength));
    return 1;
}
