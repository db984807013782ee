// Requests that the frame code refuses before anything reaches the bus.

#include "hwu/PpFrameCodec.h"

#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

namespace {

TEST(PpFrameCodecTest, RequestsThatNoUnitCouldTakeAreRefusedBeforeTheyAreBuilt)
{
    TraceCapture trace("supSysCtrlA4ci:16");
    PpFrameCodec::Frame frame{};
    std::uint32_t length = 0;

    PpScuExtendedControl leds;
    leds.count = 1;
    leds.items[0] = {pp::kScuExtControlFanGroupFaultLeds, {0, 4, 2, 9}};
    EXPECT_FALSE(PpFrameCodec::encodeSet(pp::SCU_EXTENDED_CONTROL_REQ, 1, leds, frame, length));
    EXPECT_EQ(trace.texts("supSysCtrlA4ci", 5),
              (std::vector<std::string>{
                  "PpCommunicationHandler::verifyScuFanGroupFaultLedState: Invalid led state 4 requested on SCU fan "
                  "group 2",
                  "PpCommunicationHandler::verifyScuFanGroupFaultLedState: Invalid led state 9 requested on SCU fan "
                  "group 4",
                  "PpCommunicationHandler::setDeviceData: Request denied. At least one fault led of the fan groups has "
                  "illegal state"}));

    PpBfuExtendedControl unknown;
    unknown.count = 1;
    unknown.items[0] = {7, {}};
    EXPECT_FALSE(PpFrameCodec::encodeSet(pp::BFU_EXTENDED_CONTROL_REQ, 1, unknown, frame, length));
    EXPECT_TRUE(trace.contains("Request denied. Unsupported extended control parameter: 7"));

    EXPECT_FALSE(PpFrameCodec::encodeSet(pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 1, PpBfuControl{1}, frame, length));
    EXPECT_TRUE(trace.contains("The data given is not the record of message 0x44"));
    EXPECT_FALSE(PpFrameCodec::encodeSet(pp::PSU_GET_STATUS_REQ, 1, PpPsuOutputVoltage{}, frame, length));
    EXPECT_TRUE(trace.contains("PpCommunicationHandler::setDeviceData: Unexpected message: 0x4C"));
}

TEST(PpFrameCodecTest, BothItemsOfTheScuExtendedControlAreBuiltInTheirOrder)
{
    PpScuExtendedControl control;
    control.count = 2;
    control.items[0] = {pp::kScuExtControlFanSpeeds, {100, 90, 80, 70}};
    control.items[1] = {pp::kScuExtControlFanGroupFaultLeds, {1, 1, 0, 2}};
    PpFrameCodec::Frame frame{};
    std::uint32_t length = 0;
    ASSERT_TRUE(PpFrameCodec::encodeSet(pp::SCU_EXTENDED_CONTROL_REQ, 0x42, control, frame, length));
    const std::vector<std::uint8_t> expected = {150, 0x42, 2, 1, 6, 100, 90, 80, 70, 3, 3, 0x85};
    EXPECT_EQ(std::vector<std::uint8_t>(frame.begin(), frame.begin() + length), expected);
}

TEST(PpFrameCodecTest, APduCapabilityAnswerGivesItsCountOnlyAtExactlyTwentyFiveBytes)
{
    std::vector<std::uint8_t> answer(26, 0);
    answer[0] = pp::confirmOf(pp::PDU_GET_CAPABILITIES_REQ);
    answer[24] = 12;
    for (std::uint32_t length : {24u, 25u, 26u}) {
        PpDeviceData out;
        ASSERT_TRUE(PpFrameCodec::decodeAnswer(answer.data(), length, out)) << length;
        EXPECT_EQ(std::get<PpPduCapabilities>(out).numberOfEfuses, length == 25 ? 12 : 7) << length;
    }
    PpDeviceData out;
    EXPECT_FALSE(PpFrameCodec::decodeAnswer(answer.data(), 23, out));
}

} // namespace
