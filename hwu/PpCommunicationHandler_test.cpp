// Round trips of the PP messages through the real handler and the simulated
// bus: what a unit model holds comes back decoded field for field, and a
// setting sent arrives in the model as the right bytes.

#include "hwu/testSupport/PpBusHarness.h"

#include <gtest/gtest.h>

#include <string>

using sim::UnitType;

namespace {

constexpr std::uint32_t kPort = 1;

template <typename T>
T getRecord(WLPpCommunicationHandler& pp, pp::MessageNo message, std::uint32_t address)
{
    PpDeviceData data;
    EXPECT_TRUE(pp.getDeviceData(message, pp.nextSequenceNumber(), address, data, kPort, true))
        << "message " << int(message);
    const T* record = std::get_if<T>(&data);
    EXPECT_NE(record, nullptr) << "message " << int(message);
    return record != nullptr ? *record : T{};
}

std::string text(const char* data, std::size_t size) { return std::string(data, size); }

class PpRoundTripTest : public PpBusHarness {};

TEST_F(PpRoundTripTest, PsuValuesComeBackFieldForField)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    psu.set("cap.hotSpot", 0);
    psu.set("cap.flag4", 1);
    psu.set("cap.controlVoltageLimit1", -4321);
    psu.set("cap.setPoint", -7);
    psu.set("cap.timeConstant", 65000);
    psu.set("outputVoltage", -5377);
    psu.set("outputCurrent", 40000);
    psu.set("load", 201);
    psu.set("temperature", -12);
    psu.set("inputVoltageHigh", 1);
    psu.set("lowTempClass1", 1);
    psu.set("add.id2", 1);
    psu.set("add.id2Value", 0xBEEF);
    psu.set("add.faultLedNotAvailable", 1);
    psu.product().serialNumber = "SERIAL-42";
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        const auto caps = getRecord<PpPsuCapabilities>(pp, pp::PSU_GET_CAPABILITIES_REQ, 48);
        EXPECT_TRUE(caps.outputVoltageControl);
        EXPECT_FALSE(caps.hotSpot);
        EXPECT_TRUE(caps.flag4);
        EXPECT_TRUE(caps.tempSens);
        EXPECT_TRUE(caps.additionalCapabilities);
        EXPECT_EQ(caps.controlVoltageLimit1, -4321);
        EXPECT_EQ(caps.controlVoltageLimit2, -5800);
        EXPECT_EQ(caps.setPoint, -7);
        EXPECT_EQ(caps.timeConstant, 65000);
        const auto m = getRecord<PpPsuMeasurements>(pp, pp::PSU_GET_MEASUREMENTS_REQ, 48);
        EXPECT_EQ(m.outputVoltage, -5377);
        EXPECT_EQ(m.outputCurrent, 40000);
        EXPECT_EQ(m.load, 201);
        EXPECT_EQ(m.temperature, -12);
        const auto status = getRecord<PpPsuStatus>(pp, pp::PSU_GET_STATUS_REQ, 48);
        EXPECT_EQ(status.flags, (1u << 8) | (1u << 7) | (1u << 6)); // input high, start flag, low temp class 1
        const auto add = getRecord<PpPsuAddCapabilities>(pp, pp::PSU_GET_ADD_CAPABILITIES_REQ, 48);
        EXPECT_TRUE(add.id2);
        EXPECT_EQ(add.id2Value, 0xBEEF);
        EXPECT_TRUE(add.faultLedNotAvailable);
        EXPECT_FALSE(add.operationalLedNotAvailable);
        PpProductIdentity identity;
        ASSERT_TRUE(pp.getProductData(48, identity, kPort, true));
        EXPECT_EQ(text(identity.serialNumber.data(), 9), "SERIAL-42");
        EXPECT_EQ(text(identity.productName.data(), 3), "PSU");
    });
}

TEST_F(PpRoundTripTest, BfuValuesComeBackFieldForField)
{
    sim::SimUnit& bfu = addUnit(UnitType::BFU, kPort, 64);
    bfu.set("cap.priorityLoadDisconnectMax", -4711);
    bfu.set("cap.disconnectCeaseTempMax", -3);
    bfu.set("batteryCurrent", -250);
    bfu.set("batteryTemperature", 41);
    bfu.set("circuitBreakerFault", 1);
    bfu.set("flag12", 1);
    bfu.set("add.id4", 1);
    bfu.set("add.batteryVoltageLimit", -5123);
    bfu.set("add.extendedStatusIds", 0x0102);
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        const auto caps = getRecord<PpBfuCapabilities>(pp, pp::BFU_GET_CAPABILITIES_REQ, 64);
        EXPECT_EQ(caps.mainLoadDisconnectMin, -4000);
        EXPECT_EQ(caps.priorityLoadDisconnectMax, -4711);
        EXPECT_EQ(caps.disconnectCeaseTempMax, -3);
        const auto m = getRecord<PpBfuMeasurements>(pp, pp::BFU_GET_MEASUREMENTS_REQ, 64);
        EXPECT_EQ(m.systemVoltage, -5450);
        EXPECT_EQ(m.batteryCurrent, -250);
        EXPECT_EQ(m.batteryTemperature, 41);
        const auto status = getRecord<PpBfuStatus>(pp, pp::BFU_GET_STATUS_REQ, 64);
        EXPECT_TRUE(status.test(7));  // circuit breaker
        EXPECT_TRUE(status.test(5));  // start flag
        EXPECT_TRUE(status.test(8));  // battery connected
        EXPECT_FALSE(status.test(12)); // only in the extended status
        const auto ext = getRecord<PpBfuExtStatus>(pp, pp::BFU_GET_EXT_STATUS_REQ, 64);
        EXPECT_TRUE(ext.statusRead);
        EXPECT_EQ(ext.flags, status.flags | (1u << 12));
        const auto add = getRecord<PpBfuAddCapabilities>(pp, pp::BFU_GET_ADD_CAPABILITIES_REQ, 64);
        EXPECT_TRUE(add.id[1] && add.id[3] && add.id[4] && add.id[5] && add.id[6]);
        EXPECT_FALSE(add.id[2] || add.id[7] || add.id[8]);
        EXPECT_EQ(add.batteryCurrentLimit, 300);
        EXPECT_EQ(add.batteryVoltageLimit, -5123);
        EXPECT_EQ(add.extendedStatusIds, 0x0102);
    });
}

TEST_F(PpRoundTripTest, CluSauAndPduValuesComeBackFieldForField)
{
    sim::SimUnit& clu = addUnit(UnitType::CLU, kPort, 44);
    clu.set("cap.compressor", 1);
    clu.set("cluAmbientTemp", -30);
    clu.set("cluHeaterCurrent", 250);
    clu.set("fanAlarmGroup4", 1);
    sim::SimUnit& sau = addUnit(UnitType::SAU, kPort, 33);
    sau.set("cap.availableInPortsB", 0x1234);
    sau.set("alarmPortsA", 0x8001);
    sau.set("fault", 1);
    sau.setStartFlag(false);
    sim::SimUnit& pdu = addUnit(UnitType::PDU, kPort, 80);
    pdu.set("cap.numberOfEfuses", 12);
    pdu.set("cap.controllable", 0x8001);
    pdu.set("cap.undervoltageCeaseMax", -5111);
    pdu.set("efuseFault", 0x0004);
    pdu.set("efuseOpenedByRequest", 0x8000);
    pdu.set("systemVoltageHigh", 1);
    pdu.set("systemVoltage", -5321);
    sim::SimUnit& oldPdu = addUnit(UnitType::PDU, kPort, 81);
    oldPdu.set("cap.longAnswer", 0);
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_EQ(getRecord<PpCluCapabilities>(pp, pp::CLU_GET_CAPABILITIES_REQ, 44).flags, 0x01BFu);
        const auto m = getRecord<PpCluMeasurements>(pp, pp::CLU_GET_MEASUREMENTS_REQ, 44);
        EXPECT_EQ(m.cluAmbientTemp, -30);
        EXPECT_EQ(m.cluHeaterCurrent, 250);
        EXPECT_EQ(m.cluIntFanSpeed, 40);
        const auto cluStatus = getRecord<PpCluStatus>(pp, pp::CLU_GET_STATUS_REQ, 44);
        EXPECT_EQ(cluStatus.flags, (1u << 2) | (1u << 9));
        const auto sauCaps = getRecord<PpSauCapabilities>(pp, pp::SAU_GET_CAPABILITIES_REQ, 33);
        EXPECT_EQ(sauCaps.availableInPortsB, 0x1234);
        EXPECT_EQ(sauCaps.availableOutPorts, 3);
        const auto sauStatus = getRecord<PpSauStatus>(pp, pp::SAU_GET_STATUS_REQ, 33);
        EXPECT_EQ(sauStatus.alarmPortsA, 0x8001);
        EXPECT_EQ(sauStatus.flags, 0x01);
        const auto caps = getRecord<PpPduCapabilities>(pp, pp::PDU_GET_CAPABILITIES_REQ, 80);
        EXPECT_EQ(caps.numberOfEfuses, 12);
        EXPECT_EQ(caps.controllable[0], 1);
        EXPECT_EQ(caps.controllable[15], 1);
        EXPECT_EQ(caps.controllable[1], 0);
        EXPECT_EQ(caps.undervoltageCeaseMax, -5111);
        EXPECT_EQ(getRecord<PpPduCapabilities>(pp, pp::PDU_GET_CAPABILITIES_REQ, 81).numberOfEfuses, 7);
        EXPECT_EQ(getRecord<PpPduMeasurements>(pp, pp::PDU_GET_MEASUREMENTS_REQ, 80).systemVoltage, -5321);
        const auto status = getRecord<PpPduStatus>(pp, pp::PDU_GET_STATUS_REQ, 80);
        EXPECT_EQ(status.efuseOn[7], 1);
        EXPECT_EQ(status.efuseOn[8], 0);
        EXPECT_EQ(status.efuseFault[2], 1);
        EXPECT_EQ(status.efuseOpenedByRequest[15], 1);
        EXPECT_EQ(status.flags, (1u << 2) | (1u << 6));
    });
}

TEST_F(PpRoundTripTest, ScuValuesComeBackFieldForField)
{
    sim::SimUnit& scu = addUnit(UnitType::SCU, kPort, 32);
    scu.set("cap.availableFanGroups", 0x05);
    scu.set("cap.heater1MinOnTemp", -40);
    scu.set("cap.extFanMaxSpeedFault", 77);
    scu.set("add.id4", 1);
    scu.set("add.scuHeater2Fg1Fan2MaxSpeed", 99);
    scu.set("add.extendedControlIds17To32", 0x8000);
    scu.set("scuTemperature", -127);
    scu.set("fanGroupFailure", 0x0A);
    scu.set("externalInputAlarm", 0x0F0F);
    scu.set("doorSwitchOpen", 1);
    scu.set("fansConnected", 0x8421);
    static_cast<sim::SimScu&>(scu).cabinet().serialNumber = "CAB-7";
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        const auto caps = getRecord<PpScuCapabilities>(pp, pp::SCU_GET_CAPABILITIES_REQ, 32);
        EXPECT_EQ(caps.availableHw, 0xFF);
        EXPECT_EQ(caps.availableFanGroups, 0x05);
        EXPECT_EQ(caps.availableExternalInputs, 0x00FF);
        EXPECT_EQ(caps.heater1MinOnTemp, -40);
        EXPECT_EQ(caps.extFanMaxSpeedFault, 77);
        const auto add = getRecord<PpScuAddCapabilities>(pp, pp::SCU_GET_ADD_CAPABILITIES_REQ, 32);
        EXPECT_TRUE(add.intFanSpeedAtLowTemp && add.extendedControl && add.extendedStatus && add.coldOperation);
        EXPECT_EQ(add.intFanMaxLoTempSpeed, 60);
        EXPECT_EQ(add.extendedControlIds17To32, 0x8000);
        EXPECT_EQ(add.scuHeater2Fg1Fan2MaxSpeed, 99);
        EXPECT_EQ(getRecord<PpScuMeasurements>(pp, pp::SCU_GET_MEASUREMENTS_REQ, 32).scuTemperature, -127);
        const auto status = getRecord<PpScuStatus>(pp, pp::SCU_GET_STATUS_REQ, 32);
        EXPECT_EQ(status.connectedFans, 0x0F);
        EXPECT_EQ(status.fanGroupFailure, 0x0A);
        EXPECT_EQ(status.externalInputAlarm, 0x0F0F);
        EXPECT_EQ(status.status, (1u << 1) | (1u << 2) | (1u << 5));
        const auto ext = getRecord<PpScuExtStatus>(pp, pp::SCU_GET_EXT_STATUS_REQ, 32);
        EXPECT_TRUE(ext.fansConnectedRead && ext.fanGroupFailureRead && ext.externalInputAlarmRead && ext.statusRead);
        EXPECT_TRUE(ext.fanConnected[0] && ext.fanConnected[5] && ext.fanConnected[10] && ext.fanConnected[15]);
        EXPECT_FALSE(ext.fanConnected[1] || ext.fanConnected[14]);
        EXPECT_EQ(ext.status, status.status);
        const auto cabinet = getRecord<PpProductIdentity>(pp, pp::SCU_GET_CABINET_PID_REQ, 32);
        EXPECT_EQ(text(cabinet.serialNumber.data(), 6), std::string("CAB-7\0", 6));
    });
}

TEST_F(PpRoundTripTest, SettingsArriveInTheModelsAsTheirBytes)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, kPort, 48);
    sim::SimUnit& bfu = addUnit(UnitType::BFU, kPort, 64);
    sim::SimUnit& pdu = addUnit(UnitType::PDU, kPort, 80);
    sim::SimUnit& scu = addUnit(UnitType::SCU, kPort, 32);
    sim::SimUnit& clu = addUnit(UnitType::CLU, kPort, 44);
    startServer();
    runCore([](WLPpCommunicationHandler& pp, SignalDispatcher&) {
        EXPECT_TRUE(pp.setDeviceData(pp::PSU_SET_OUTPUT_VOLTAGE_REQ, 9, 48, PpPsuOutputVoltage{-5312}, kPort, true, nullptr));
        EXPECT_TRUE(pp.setDeviceData(pp::BFU_SET_CONFIG_REQ, 0, 64, PpBfuConfig{-4300, -4400, -4900, 55, -5}, kPort,
                                     true, nullptr));
        EXPECT_TRUE(pp.setDeviceData(pp::BFU_SET_CONTROL_REQ, 0, 64, PpBfuControl{0}, kPort, true, nullptr));
        PpBfuExtendedControl loads;
        loads.count = 2;
        loads.items[0] = {pp::kBfuExtControlLoads, {1, 0, 0, 0}};
        loads.items[1] = {pp::kBfuExtControlBatteryFaultLed, {pp::kFaultLedWireSlowBlink, 0, 0, 0}};
        EXPECT_TRUE(pp.setDeviceData(pp::BFU_EXTENDED_CONTROL_REQ, 3, 64, loads, kPort, true, nullptr));
        EXPECT_TRUE(pp.setDeviceData(pp::PDU_SET_LIMITS_REQ, 0, 80, PpPduLimits{-5700, -5650, -4700, -4750}, kPort,
                                     true, nullptr));
        PpPduEfuses efuses;
        efuses.efuseOn.fill(1);
        efuses.efuseOn[2] = 0;
        efuses.thirdSet[15] = 1;
        EXPECT_TRUE(pp.setDeviceData(pp::PDU_SET_EFUSES_REQ, 0, 80, efuses, kPort, true, nullptr));
        EXPECT_TRUE(pp.setDeviceData(pp::SCU_SET_FAN_SPEED_REQ, 4, 32, PpScuFanSpeed{{10, 20, 30, 40}}, kPort, true,
                                     nullptr));
        PpScuExtendedControl control;
        control.count = 1;
        control.items[0] = {pp::kScuExtControlFanGroupFaultLeds, {2, 0, 1, 3}};
        EXPECT_TRUE(pp.setDeviceData(pp::SCU_EXTENDED_CONTROL_REQ, 5, 32, control, kPort, true, nullptr));
        PpScuAddConfig add;
        add.hasColdOperation = true;
        add.scuColdopOnTemp = 3;
        add.scuHeater2Fg1Fan2Speed = 66;
        EXPECT_TRUE(pp.setDeviceData(pp::SCU_SET_ADD_CONFIG_REQ, 6, 32, add, kPort, true, nullptr));
        PpScuConfig config;
        config.scuConfigFanGroup = 0x0F;
        config.scuExtFanSpeedFault = 33;
        EXPECT_TRUE(pp.setDeviceData(pp::SCU_SET_CONFIG_REQ, 7, 32, config, kPort, true, nullptr));
        PpProductIdentity cabinet;
        cabinet.serialNumber = {'N', 'E', 'W'};
        EXPECT_TRUE(pp.setDeviceData(pp::SCU_SET_CABINET_PID_REQ, 8, 32, cabinet, kPort, true, nullptr));
        EXPECT_TRUE(pp.setDeviceData(pp::CC_VISUAL_INDICATION_REQ, 9, 48, PpVisualIndication{pp::kIndicationFaultLedOn},
                                     kPort, true, nullptr));
        EXPECT_TRUE(pp.clearStartFlag(10, 48, kPort, true));
        EXPECT_TRUE(pp.sendFwd(pp::CLU_SET_FAN_SPEED_FWD, 44, 77, kPort));
    });
    EXPECT_EQ(psu.lastPayload(pp::PSU_SET_OUTPUT_VOLTAGE_REQ), std::string("\xEB\x40", 2));
    EXPECT_EQ(psu.get("set.outputVoltage"), -5312);
    EXPECT_EQ(bfu.lastPayload(pp::BFU_SET_CONFIG_REQ), std::string("\xEF\x34\xEE\xD0\xEC\xDC\x37\xFB", 8));
    EXPECT_EQ(bfu.get("batteryConnected"), 0);
    EXPECT_EQ(bfu.lastPayload(pp::BFU_EXTENDED_CONTROL_REQ), std::string("\x02\x01\x04\x01\x00\x02\x03\x01", 8));
    EXPECT_EQ(bfu.get("priorityLoadDisconnected"), 1);
    EXPECT_EQ(bfu.get("set.batteryFaultLed"), 1);
    EXPECT_EQ(pdu.lastPayload(pp::PDU_SET_LIMITS_REQ), std::string("\xE9\xBC\xE9\xEE\xED\xA4\xED\x72", 8));
    EXPECT_EQ(pdu.lastPayload(pp::PDU_SET_EFUSES_REQ), std::string("\xFF\xFB\x00\x00\x80\x00", 6));
    EXPECT_EQ(pdu.get("efuseOpenedByRequest"), 0x0004);
    EXPECT_EQ(scu.lastPayload(pp::SCU_SET_FAN_SPEED_REQ), std::string("\x0A\x14\x1E\x28\xFF", 5));
    EXPECT_EQ(scu.lastPayload(pp::SCU_EXTENDED_CONTROL_REQ), std::string("\x01\x03\x03\xD2", 4)); // 2 | 0<<2 | 1<<4 | 3<<6
    EXPECT_EQ(scu.get("set.faultLed4"), 3);
    EXPECT_EQ(scu.lastPayload(pp::SCU_SET_ADD_CONFIG_REQ), std::string("\x01\x02\x08\x03\x00\x00\x00\x00\x42", 9));
    EXPECT_EQ(scu.get("set.scuConfigFanGroup"), 0x0F);
    EXPECT_EQ(scu.get("set.scuExtFanSpeedFault"), 33);
    EXPECT_EQ(static_cast<sim::SimScu&>(scu).cabinet().serialNumber, "NEW");
    EXPECT_EQ(psu.lastIndication(), pp::kIndicationFaultLedOn);
    EXPECT_FALSE(psu.startFlag());
    EXPECT_EQ(clu.get("set.fanSpeed"), 77);
    EXPECT_EQ(clu.lastPayload(pp::CLU_SET_FAN_SPEED_FWD), std::string("\x4D", 1));
}

TEST(PpSequenceNumberTest, StartsAfterOneAndWrapsAsAByte)
{
    class Handler : public PpCommunicationHandler {
        bool sendCommand(std::uint32_t, std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t*,
                         std::uint8_t*, bool, std::uint32_t) override
        {
            return false;
        }
    } handler;
    EXPECT_EQ(handler.nextSequenceNumber(), 2);
    for (int i = 3; i <= 255; ++i) handler.nextSequenceNumber();
    EXPECT_EQ(handler.nextSequenceNumber(), 0);
    EXPECT_EQ(handler.nextSequenceNumber(), 1);
}

} // namespace
