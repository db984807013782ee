// The wire rules of the PP transport and protocol, on the virtual clock:
// frame size, empty answers and their re-asks, the reset guard, stale
// answers, reconnection, the repeat rule, rejects, and hostile answers.

#include "hwu/testSupport/PpBusHarness.h"

#include "frame/testSupport/TraceCapture.h"
#include "hwu/A4ciSignals.h"

#include "ose/Kernel.h"

#include <gtest/gtest.h>

#include <cstring>

using sim::BusLogEntry;
using sim::UnitType;

namespace {

constexpr std::uint32_t kPort = 1;
constexpr const char* kA4ciTrace = "supSysCtrlA4ci:16";

bool poll(WLPpCommunicationHandler& pp, pp::MessageNo message, std::uint32_t address, PpDeviceData& out,
          std::uint32_t port = kPort, bool commOk = true)
{
    return pp.getDeviceData(message, pp.nextSequenceNumber(), address, out, port, commOk);
}

bool poll(WLPpCommunicationHandler& pp, pp::MessageNo message, std::uint32_t address, std::uint32_t port = kPort,
          bool commOk = true)
{
    PpDeviceData out;
    return poll(pp, message, address, out, port, commOk);
}

std::string bytes(std::initializer_list<int> values)
{
    std::string s;
    for (int v : values) s += static_cast<char>(v);
    return s;
}

class PpWireTest : public PpBusHarness {
protected:
    std::vector<BusLogEntry> logOf(std::uint8_t address) const
    {
        std::vector<BusLogEntry> found;
        for (const BusLogEntry& entry : m_cabinet.busLog())
            if (entry.address == address) found.push_back(entry);
        return found;
    }
};

TEST_F(PpWireTest, AFrameOf78BytesGoesOutAndOneOf79IsRefused)
{
    addUnit(UnitType::PSU, kPort, 48);
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        std::uint8_t frame[79] = {pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 1, 0x12, 0x34};
        std::uint8_t answer[10];
        std::uint32_t length = 0;
        EXPECT_TRUE(pp.sendCommand(48, 78, frame, sizeof answer, &length, answer, true, kPort));
        EXPECT_FALSE(pp.sendCommand(48, 79, frame, sizeof answer, &length, answer, true, kPort));
        EXPECT_EQ(length, 0u);
        EXPECT_FALSE(pp.sendCommand(48, 2, nullptr, sizeof answer, &length, answer, true, kPort));
    });
    ASSERT_EQ(m_cabinet.busLog().size(), 1u);
    EXPECT_EQ(m_cabinet.busLog().front().request.size(), 78u);
    EXPECT_TRUE(trace.contains("Data to long to fit in A4CI signal! inDataLength: 79, BCP_A4CI_MAX_DATA_SIZE 78"));
    EXPECT_TRUE(trace.contains("Received NIL-pointer in sendCommand."));
}

TEST_F(PpWireTest, AnEmptyAnswerIsAskedForTwiceMoreSixtyMillisecondsApart)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    psu.faults().empty.arm(1);
    sim::SimUnit& scu = addUnit(UnitType::SCU, kPort, 32);
    scu.faults().empty.arm(0);
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        PpDeviceData out;
        EXPECT_TRUE(poll(pp, pp::PSU_GET_MEASUREMENTS_REQ, 48, out));
        EXPECT_EQ(std::get<PpPsuMeasurements>(out).outputVoltage, -5450);
        EXPECT_FALSE(poll(pp, pp::SCU_GET_MEASUREMENTS_REQ, 32));
    });
    const auto psuLog = logOf(48);
    ASSERT_EQ(psuLog.size(), 2u);
    EXPECT_EQ(psuLog[0].outcome, BusLogEntry::Outcome::Empty);
    EXPECT_TRUE(psuLog[1].request.empty());
    EXPECT_EQ(psuLog[1].outcome, BusLogEntry::Outcome::Answered);
    EXPECT_EQ(psuLog[1].timeMs - psuLog[0].timeMs, 60u);
    const auto scuLog = logOf(32);
    ASSERT_EQ(scuLog.size(), 3u); // measured once: no repeats of the whole exchange
    EXPECT_EQ(scuLog[0].request.size(), 2u);
    EXPECT_TRUE(scuLog[1].request.empty() && scuLog[2].request.empty());
    EXPECT_EQ(scuLog[2].timeMs - scuLog[1].timeMs, 60u);
}

TEST_F(PpWireTest, AResetKeepsItsPortOnlyQuietForFiveHundredTicks)
{
    addUnit(UnitType::PSU, 1, 52);
    addUnit(UnitType::PSU, 2, 52);
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        ASSERT_TRUE(pp.resetDevice(52, 1));
        EXPECT_FALSE(pp.resetDevice(52, 1)); // a second reset in the guard is not sent
        ose::delay(500);
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 52, 1));
        EXPECT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 52, 2));
        ose::delay(1);
        EXPECT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 52, 1));
        EXPECT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 52, 1)); // the row went with the first send after the guard
    });
    std::size_t resets = 0, statusOnPort1 = 0;
    for (const BusLogEntry& entry : m_cabinet.busLog()) {
        if (entry.outcome == BusLogEntry::Outcome::Forwarded) ++resets;
        if (entry.port == 1 && entry.outcome == BusLogEntry::Outcome::Answered) ++statusOnPort1;
    }
    EXPECT_EQ(resets, 1u);
    EXPECT_EQ(statusOnPort1, 2u);
    EXPECT_EQ(trace.count("PpCommunicationHandler::resetDevice: Trying to send too soon after reset to address 0x34"), 1u);
    EXPECT_EQ(trace.count("PpCommunicationHandler::getDeviceData: Trying to send too soon after reset to address 0x34"),
              1u);
    EXPECT_TRUE(trace.contains("Trying to send signal 0x4c with HWU on address 0x34 port 1 to early after it has been "
                               "reset."));
}

TEST_F(PpWireTest, AResetUnitIsDeafWhileItBootsAndComesBackWithItsStartFlag)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    psu.setStartFlag(false);
    psu.setBootMs(800);
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        ASSERT_TRUE(pp.resetDevice(48, kPort));
        ose::delay(501);
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48)); // booting: the bus times out
        ose::delay(300);
        PpDeviceData out;
        ASSERT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 48, out));
        EXPECT_TRUE(std::get<PpPsuStatus>(out).test(7));
    });
}

TEST_F(PpWireTest, ALateAnswerIsPurgedAfterTheTimeOutAndTheLinkIsConnectedAgain)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    psu.faults().late.arm(1, 1500);
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_TRUE(pp.isConnected());
        EXPECT_FALSE(poll(pp, pp::PSU_GET_MEASUREMENTS_REQ, 48));
        EXPECT_FALSE(pp.isConnected());
        ose::delay(1000); // the late answer arrives meanwhile
        PpDeviceData out;
        ASSERT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 48, out));
        EXPECT_NE(std::get_if<PpPsuStatus>(&out), nullptr);
        EXPECT_TRUE(pp.isConnected());
    });
    EXPECT_EQ(m_cabinet.connections, 2u);
    EXPECT_TRUE(trace.contains("Timeout. No signal is received, try to reconnect next time."));
    EXPECT_TRUE(trace.contains("Timed out when signal 16841988 was sent to address: 0x30, port: 1"));
    EXPECT_EQ(trace.count("INCONSISTENCY, invalid signal 16841989, in inbox"), 1u);
}

TEST_F(PpWireTest, MessagesAreRepeatedByTheirRuleAndReportedOnlyWhenTheUnitWasWell)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    psu.faults().silent.arm(0);
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_FALSE(poll(pp, pp::PSU_GET_CAPABILITIES_REQ, 48));
        EXPECT_FALSE(poll(pp, pp::PSU_GET_MEASUREMENTS_REQ, 48));
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48, kPort, false));
    });
    EXPECT_EQ(m_cabinet.busLog().size(), 3u + 1u + 1u);
    for (const BusLogEntry& entry : m_cabinet.busLog()) EXPECT_EQ(entry.rejectCode, a4ci::BCP_A4CI_TIME_OUT);
    EXPECT_EQ(trace.texts("supSysCtrlA4ci", 1),
              (std::vector<std::string>{"Repeated message 64 (0x40) timeout towards HWU on address 0x30 port 1",
                                        "Repeated message 72 (0x48) timeout towards HWU on address 0x30 port 1"}));
    EXPECT_EQ(trace.count("BCP_A4CI_TIME_OUT"), 5u);
}

TEST_F(PpWireTest, RejectsOfTheServerAndOfTheUnitAreTracedAndFail)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([&psu](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        for (int code : {2, 6, 99}) {
            psu.faults().a4ciReject.arm(1, code);
            EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48));
        }
        EXPECT_TRUE(pp.isConnected()); // a reject does not drop the link
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 49));
        psu.faults().ppReject.arm(0, 0x21);
        std::uint8_t cause = 0;
        EXPECT_FALSE(pp.setDeviceData(pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 1, 48, PpPsuOutputVoltage{-5000}, kPort, true,
                                      &cause));
        EXPECT_EQ(cause, 0x21);
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48));
        EXPECT_FALSE(pp.clearStartFlag(1, 48, kPort, true));
    });
    EXPECT_TRUE(trace.contains("BCP_A4CI_UNEXPECTED_PARAMETER_VALUE"));
    EXPECT_TRUE(trace.contains("BCP_A4CI_OTHER_ERROR"));
    EXPECT_TRUE(trace.contains("Undefined errorCode from A4CI Server"));
    EXPECT_TRUE(trace.contains("BCP_A4CI_TIME_OUT"));
    EXPECT_TRUE(trace.contains("PpCommunicationHandler::setDeviceData: Message 44 rejected, cause 21"));
    EXPECT_TRUE(trace.contains("Message 4C rejected, error code 21"));
    EXPECT_TRUE(trace.contains("Command Failed, clear start flag not confirmed at address 0x30 (Invalid response "
                               "length)!"));
}

TEST_F(PpWireTest, HostileAnswersAreTracedAndNeverReadBeyondTheirBytes)
{
    sim::SimUnit& scu = addUnit(UnitType::SCU, kPort, 32);
    sim::SimUnit& bfu = addUnit(UnitType::BFU, kPort, 64);
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    auto& scuRaw = scu.faults().rawAnswers;
    scuRaw.push_back(bytes({145, 1, 200, 1, 4}));            // count far beyond the frame
    scuRaw.push_back(bytes({154, 1, 1, 7, 2}));              // id out of range
    scuRaw.push_back(bytes({154, 1, 5}));                    // too many items
    scuRaw.push_back(bytes({205}));                          // one byte
    scuRaw.push_back(bytes({154, 1, 2, 0, 2, 2, 3, 0x05}));  // id 0 walked over
    auto& bfuRaw = bfu.faults().rawAnswers;
    bfuRaw.push_back(bytes({177, 1, 1, 9, 255}));            // unknown id whose length runs off the frame
    bfuRaw.push_back(bytes({177, 1, 10, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 9, 2}));
    bfuRaw.push_back(bytes({186, 1, 2, 1, 4, 0x10, 0x01, 1, 4, 0xFF, 0xFF}));
    auto& psuRaw = psu.faults().rawAnswers;
    psuRaw.push_back(bytes({199, 1}));                       // not the confirm
    psuRaw.push_back(bytes({69}));                           // a set answer of one byte
    psuRaw.push_back(bytes({70, 1}));                        // a reject without its cause byte
    psuRaw.push_back(std::string(1, char(9)) + std::string(1, char(0)) + std::string(68, 'X'));
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_FALSE(poll(pp, pp::SCU_GET_ADD_CAPABILITIES_REQ, 32));
        EXPECT_FALSE(poll(pp, pp::SCU_GET_EXT_STATUS_REQ, 32));
        EXPECT_FALSE(poll(pp, pp::SCU_GET_EXT_STATUS_REQ, 32));
        EXPECT_FALSE(poll(pp, pp::SCU_GET_STATUS_REQ, 32));
        PpDeviceData out;
        ASSERT_TRUE(poll(pp, pp::SCU_GET_EXT_STATUS_REQ, 32, out));
        EXPECT_EQ(std::get<PpScuExtStatus>(out).fanGroupFailure, 0x05);
        EXPECT_FALSE(poll(pp, pp::BFU_GET_ADD_CAPABILITIES_REQ, 64));
        ASSERT_TRUE(poll(pp, pp::BFU_GET_ADD_CAPABILITIES_REQ, 64, out));
        EXPECT_TRUE(std::get<PpBfuAddCapabilities>(out).id[1]);
        ASSERT_TRUE(poll(pp, pp::BFU_GET_EXT_STATUS_REQ, 64, out));
        EXPECT_EQ(std::get<PpBfuExtStatus>(out).flags, 0x1001);
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48));
        EXPECT_FALSE(pp.setDeviceData(pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 1, 48, PpPsuOutputVoltage{-5000}, kPort, true,
                                      nullptr));
        std::uint8_t cause = 0xEE;
        EXPECT_FALSE(pp.setDeviceData(pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 1, 48, PpPsuOutputVoltage{-5000}, kPort, true,
                                      &cause));
        EXPECT_EQ(cause, 0);
        PpProductIdentity identity;
        ASSERT_TRUE(pp.getProductData(48, identity, kPort, true));
        EXPECT_EQ(std::string(identity.productNumber.data(), identity.productNumber.size()), std::string(25, 'X'));
    });
    EXPECT_TRUE(trace.contains("Unexpected msg length, exp 7, got 5!"));
    EXPECT_TRUE(trace.contains("PpCommunicationHandler::getDeviceData: Unrecognized extended status parameter id 7"));
    EXPECT_TRUE(trace.contains("PpCommunicationHandler::getDeviceData: Number of extended status 5 exceeds max size 4"));
    EXPECT_TRUE(trace.contains("Unexpected msg length, exp 8, got 1!"));
    EXPECT_TRUE(trace.contains("setMsgGetExtStatusCfm: Received scuExtStatusId with unknown value: 0"));
    EXPECT_TRUE(trace.contains("Unrecognized additional capability parameter id 9, ignored"));
    EXPECT_TRUE(trace.contains("Number of additional capabilities 10 exceeds max size 8, extra capability data ignored"));
    EXPECT_TRUE(trace.contains("Number of extended status 2 exceeds max size 1, extra status data ignored"));
    EXPECT_TRUE(trace.contains("Unexpected message in getDeviceData: 0xC7"));
    EXPECT_TRUE(trace.contains("PP response too short, cmd 44,  rspDataLength 1"));
}

// A server that answers every data request with a confirm whose length
// field claims more than it carries, and with more than the buffer holds.
void lyingServer()
{
    for (;;) {
        ose::Signal* request = ose::receive(ose::kAnySignal);
        const ose::SIGSELECT sigNo = ose::signalNumber(request);
        if (sigNo == a4ci::A4CI_CONN_ESTABLISH_REQ) {
            ose::Signal* cfm = ose::alloc(8, a4ci::A4CI_CONN_ESTABLISH_CFM);
            ose::send(&cfm, ose::sender(&request));
        } else if (sigNo == a4ci::A4CI_DATA_REQ) {
            const auto* req = ose::signal_cast<a4ci::A4CI_DATA_REQ_S>(request);
            const bool claimTooMuch = req->data[0] == pp::PSU_GET_STATUS_REQ;
            ose::Signal* cfm = ose::alloc(a4ci::kDataCfmHeadSize + 26, a4ci::A4CI_DATA_CFM);
            auto* head = reinterpret_cast<a4ci::A4CI_DATA_CFM_S*>(cfm);
            head->length = claimTooMuch ? 255 : 26;
            auto* frame = reinterpret_cast<std::uint8_t*>(cfm) + a4ci::kDataCfmHeadSize;
            std::memset(frame, 0xAB, 26);
            frame[0] = static_cast<std::uint8_t>(req->data[0] + 1);
            ose::send(&cfm, ose::sender(&request));
        }
        ose::free_buf(&request);
    }
}

TEST_F(PpWireTest, AnAnswerIsReadWithinTheSignalAndTheBufferWhateverItsLengthFieldSays)
{
    spawn("A4ciServer", lyingServer);
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        std::uint8_t frame[] = {pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 0, 1, 2};
        std::uint8_t answer[12];
        std::memset(answer, 0x55, sizeof answer);
        std::uint32_t length = 0;
        ASSERT_TRUE(pp.sendCommand(48, sizeof frame, frame, 10, &length, answer, true, kPort));
        EXPECT_EQ(length, 26u);
        EXPECT_EQ(answer[9], 0xAB);
        EXPECT_EQ(answer[10], 0x55);
        PpDeviceData out;
        ASSERT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 48, out));
        EXPECT_EQ(std::get<PpPsuStatus>(out).flags, 0xABAB);
    });
    EXPECT_TRUE(trace.contains("Buffer length (10) shorter than answer length (26). Possible loss of data."));
    EXPECT_TRUE(trace.contains("A4CI_DATA_CFM claims 255 answer bytes but carries 26"));
}

TEST_F(PpWireTest, WithoutAServerTheHandlerGivesUpAfterTheHuntAndTriesAgainOnTheNextSend)
{
    TraceCapture trace(kA4ciTrace);
    runCore([this](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_FALSE(pp.isConnected());
        EXPECT_EQ(ose::get_time_ms(), 1000u);
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48));
        addUnit(UnitType::PSU, kPort, 48);
        startServer();
        EXPECT_TRUE(poll(pp, pp::PSU_GET_STATUS_REQ, 48));
    });
    EXPECT_EQ(trace.count("Timeout waiting for hunt response from A4ciServer"), 2u); // at start and at the send
    EXPECT_TRUE(trace.contains("Connection established with A4ciServer"));
}

TEST_F(PpWireTest, ARefusedConnectionIsTracedAndNothingIsSent)
{
    addUnit(UnitType::PSU, kPort, 48);
    m_cabinet.refuseConnections = true;
    startServer();
    TraceCapture trace(kA4ciTrace);
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_FALSE(poll(pp, pp::PSU_GET_STATUS_REQ, 48));
        EXPECT_FALSE(pp.isConnected());
    });
    EXPECT_TRUE(m_cabinet.busLog().empty());
    EXPECT_EQ(trace.count("Received A4CI_CONN_ESTABLISH_REJ from A4ciServer"), 2u);
}

} // namespace
