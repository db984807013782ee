// The power management adapter against recording facades: what reaches the
// facades from a request, what goes back to which client, and the records
// and codes on the wire. The whole core with its units is the system
// test's (tests/system/pmi_test.cpp).

#include "adapters/BatteryBackupEventHandler.h"
#include "adapters/PmiAdapter.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/testSupport/FakeOsHandler.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryBackupFacadeIf.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerDistributionCfg.h"
#include "power/PowerDistributionFacadeIf.h"
#include "power/PowerSupplyFacadeIf.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace pmi;

constexpr ose::PROCESS kObjectLayer = 0x20001;
constexpr ose::PROCESS kOtherClient = 0x20002;

// The facades as the adapter sees them: calls are recorded, answers set.
struct Facades : BatteryBackupFacadeIf, PowerSupplyFacadeIf, PowerDistributionFacadeIf {
    void setEventHandler(BatteryBackupEventIf*) override {}
    void setEventHandler(PowerSupplyEventIf*) override {}
    void setEventHandler(PowerDistributionEventIf*) override {}
    void updateBatteryParameters(const BatteryBackupCfg& cfg) override
    {
        battery = cfg;
        calls.push_back("battery after " + std::to_string(os->sent().size()) + " sent");
    }
    void deleteBatteryBackup() override { calls.push_back("delete battery"); }
    void getBatteryBackupStatus(BatteryBackupStatus* out) override { *out = status; }
    std::uint32_t startEqualizeCharging() override { return equalizeResult; }
    void stopEqualizeCharging() override { calls.push_back("stop equalize"); }
    bool startBatteryTest(bool forced, std::uint32_t* error) override
    {
        calls.push_back(forced ? "start forced" : "start");
        *error = testError;
        return testResult;
    }
    bool stopBatteryTest(std::uint32_t* error) override
    {
        *error = testError;
        return testResult;
    }
    bool getBatteryTestProgress(std::int32_t words[4]) override
    {
        for (int i = 0; i < 4; ++i) words[i] = 10 + i;
        return testResult;
    }
    std::uint32_t getBatteryTestResults() override { return 3; }
    bool isRunningOnBatteries() const override { return false; }
    void updatePowerSupply(const std::int16_t values[]) override { supply.assign(values + 4, values + 9); }
    void deletePowerSupply() override { calls.push_back("delete supply"); }
    std::int32_t getSystemVoltage() const override { return -545; }
    void updatePowerDistribution(const PowerDistributionCfg& cfg) override { distribution = cfg; }
    void deletePowerDistribution() override { calls.push_back("delete distribution"); }

    FakeOsHandler* os = nullptr;
    BatteryBackupCfg battery;
    PowerDistributionCfg distribution;
    std::vector<std::int16_t> supply;
    BatteryBackupStatus status;
    std::uint32_t equalizeResult = 0;
    bool testResult = true;
    std::uint32_t testError = 0;
    std::vector<std::string> calls;
};

struct Answer {
    PMI_HEADER_S header;
    std::string bytes;
    ose::PROCESS to;
    std::uint32_t word(std::size_t offset) const { return ose::loadBe32(bytes.data() + offset); }
    std::string text(std::size_t offset, std::size_t size) const
    {
        return std::string(bytes.data() + offset, strnlen(bytes.data() + offset, size));
    }
};

class PmiAdapterTest : public ::testing::Test {
protected:
    PmiAdapterTest()
    {
        m_facades.os = &m_os;
        m_adapter.registerSignals();
    }
    ~PmiAdapterTest() override { m_os.drain(); }

    // Delivers and dispatches one request; what it sent, in order.
    std::vector<Answer> request(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint16_t word14 = 0,
                                const void* body = nullptr, std::size_t size = 0, ose::PROCESS from = kObjectLayer)
    {
        std::string bytes(sizeof(PMI_HEADER_S) + size, '\0');
        PMI_HEADER_S header{};
        header.sigNo = sigNo;
        header.clientRef = 7;
        header.objectType = objectType;
        header.word14 = word14;
        std::memcpy(bytes.data(), &header, sizeof header);
        if (body != nullptr) std::memcpy(bytes.data() + sizeof header, body, size);
        return raw(bytes, from);
    }
    std::vector<Answer> raw(const std::string& bytes, ose::PROCESS from = kObjectLayer)
    {
        ose::Signal* signal = ose::alloc(static_cast<ose::OSBUFSIZE>(bytes.size()), ose::loadBe32(bytes.data()));
        std::memcpy(static_cast<void*>(signal), bytes.data(), bytes.size());
        m_os.deliver(signal, from);
        m_dispatcher.receiveAndDispatch();
        return taken();
    }
    std::vector<Answer> taken()
    {
        std::vector<Answer> answers;
        for (FakeOsHandler::Sent& sent : m_os.sent()) {
            Answer answer{{}, std::string(reinterpret_cast<const char*>(sent.signal), ose::sigsize(&sent.signal)), sent.to};
            std::memcpy(&answer.header, answer.bytes.data(), sizeof answer.header);
            answers.push_back(answer);
        }
        m_os.drain();
        return answers;
    }
    std::vector<Answer> configureSupply(ose::PROCESS from = kObjectLayer)
    {
        PMI_POWER_SUPPLY_CONFIG_S config{};
        config.nominalVoltage = -545;
        config.systemUndervoltageAlarmLevel = -440;
        return request(PMI_SET_CONFIG_REQ, kPowerSupply, 0, &config, sizeof config, from);
    }
    std::vector<Answer> configureBattery(const PMI_BATTERY_BACKUP_CONFIG_S& config = {}, ose::PROCESS from = kObjectLayer)
    {
        return request(PMI_SET_CONFIG_REQ, kBatteryBackup, 0, &config, sizeof config, from);
    }
    std::vector<Answer> action(std::uint16_t actionType, std::uint16_t parameter = 0)
    {
        const ose::be_u32 tail = static_cast<std::uint32_t>(parameter) << 16;
        return request(PMI_ACTION_REQ, 2, actionType, &tail, sizeof tail);
    }

    // The handler is set before the dispatcher, which asks it for its pid,
    // and cleared after everything that sends.
    struct Os : ::testing::NiceMock<FakeOsHandler> {
        Os() { OsService::setHandler(this); }
        ~Os() override { OsService::setHandler(nullptr); }
    } m_os;
    SignalDispatcher m_dispatcher;
    Facades m_facades;
    PmiAdapter m_adapter{&m_dispatcher, {&m_facades, &m_facades, &m_facades}};
};

std::vector<ose::SIGSELECT> numbers(const std::vector<Answer>& answers)
{
    std::vector<ose::SIGSELECT> result;
    for (const Answer& answer : answers) result.push_back(answer.header.sigNo);
    return result;
}

TEST_F(PmiAdapterTest, AnObjectIsReadAndSubscribedOnlyAfterItsConfigurationAndTheFirstUpdateComesAtOnce)
{
    auto refused = request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply);
    ASSERT_EQ(numbers(refused), std::vector<ose::SIGSELECT>{PMI_SUBSCRIBE_RESOURCE_DATA_REJ});
    EXPECT_EQ(refused[0].header.word14, kNotConfigured);
    EXPECT_EQ(refused[0].header.clientRef, 7u);
    EXPECT_EQ(request(PMI_GET_RESOURCE_DATA_REQ, kPowerSupply)[0].header.word14, kNotConfigured);

    EXPECT_EQ(numbers(configureSupply()), std::vector<ose::SIGSELECT>{PMI_SET_CONFIG_CFM});
    EXPECT_EQ(m_facades.supply, (std::vector<std::int16_t>{-545, 0, 0, 0, -440}));
    auto subscribed = request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply);
    ASSERT_EQ(numbers(subscribed), (std::vector<ose::SIGSELECT>{PMI_SUBSCRIBE_RESOURCE_DATA_CFM, PMI_RESOURCE_DATA_UPDATE_IND}));
    EXPECT_EQ(subscribed[1].bytes.size(), 48u);
    EXPECT_EQ(static_cast<std::int32_t>(subscribed[1].word(16)), -545);
    // Another client's configuration is not this one's.
    EXPECT_EQ(request(PMI_GET_RESOURCE_DATA_REQ, kPowerSupply, 0, nullptr, 0, kOtherClient)[0].header.sigNo,
              PMI_GET_RESOURCE_DATA_REJ);

    m_adapter.systemVoltageUpdated(-54.5F);
    EXPECT_EQ(numbers(taken()), std::vector<ose::SIGSELECT>{PMI_RESOURCE_DATA_UPDATE_IND});
    EXPECT_EQ(numbers(request(PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply)),
              std::vector<ose::SIGSELECT>{PMI_UNSUBSCRIBE_RESOURCE_DATA_CFM});
    m_adapter.systemVoltageUpdated(-54.5F);
    EXPECT_TRUE(taken().empty());
}

TEST_F(PmiAdapterTest, BadRequestsAreDroppedWithoutAnAnswer)
{
    EXPECT_TRUE(raw(std::string("\x01\x70\x44\x01\0\0\0\x07", 8)).empty()) << "shorter than the header";
    EXPECT_TRUE(request(PMI_SET_CONFIG_REQ, kBatteryBackup, 0, nullptr, 100).empty()) << "record cut short";
    EXPECT_TRUE(request(PMI_SET_CONFIG_REQ, kPowerSupply, 0, nullptr, 19).empty()) << "record cut short";
    EXPECT_TRUE(request(PMI_ACTION_REQ, 0, kStopEqualizeCharging).empty()) << "no parameter word";
    for (ose::SIGSELECT sigNo : {PMI_SET_CONFIG_REQ, PMI_DELETE_CONFIG_REQ, PMI_SUBSCRIBE_RESOURCE_DATA_REQ,
                                 PMI_UNSUBSCRIBE_RESOURCE_DATA_REQ, PMI_GET_RESOURCE_DATA_REQ})
        EXPECT_TRUE(request(sigNo, 3, 0, nullptr, 216).empty()) << "no power object " << std::hex << sigNo;
    // A record longer than its object's is read as far as it goes.
    EXPECT_EQ(numbers(request(PMI_SET_CONFIG_REQ, kPowerDistribution, 0, nullptr, 4000)),
              std::vector<ose::SIGSELECT>{PMI_SET_CONFIG_CFM});
}

TEST_F(PmiAdapterTest, TheBatteryBackupIsConfirmedFirstAndItsRecordConvertedIntoTheCoresUnits)
{
    PMI_BATTERY_BACKUP_CONFIG_S config{};
    config.chargingVoltage = 545;
    config.tempCompVoltageSlope = -72;
    config.batteryDisconnectTemp = 300; // beyond its 8 bits
    config.testMode = 1;
    config.numberOfTestMonths = 40;
    config.timeOfMainLoadDisconnect = 6000;
    config.chargingMode = 0;
    config.sharedBattery = 7;
    std::memcpy(config.testStartTime, "02:30", 5);
    EXPECT_EQ(numbers(configureBattery(config)), std::vector<ose::SIGSELECT>{PMI_SET_CONFIG_CFM});
    EXPECT_EQ(m_facades.calls, std::vector<std::string>{"battery after 1 sent"});
    const BatteryBackupCfg& cfg = m_facades.battery;
    EXPECT_FLOAT_EQ(cfg.chargingVoltage, 54.5F);
    EXPECT_FLOAT_EQ(cfg.tempCompVoltageSlope, -0.072F);
    EXPECT_EQ(cfg.batteryDisconnectTemp, 127);
    EXPECT_EQ(cfg.testMode, BatteryBackupCfg::kTestModeConfigured);
    EXPECT_EQ(cfg.numberOfTestMonths, 12u);
    EXPECT_EQ(cfg.timeOfMainLoadDisconnect, 100u);
    EXPECT_EQ(cfg.chargingMode, BatteryBackupCfg::kChargingModeAutomatic);
    EXPECT_EQ(cfg.sharedBattery, 1);
    EXPECT_STREQ(cfg.testStartTime, "02:30");

    PMI_POWER_DISTRIBUTION_CONFIG_S distribution{};
    distribution.mainLoadUndervoltageDisconnect = static_cast<std::uint16_t>(-432);
    distribution.undervoltageDisconnectCeaseOffset = 30;
    request(PMI_SET_CONFIG_REQ, kPowerDistribution, 0, &distribution, sizeof distribution);
    EXPECT_EQ(m_facades.distribution.mainLoadUndervoltageDisconnect, -432);
    EXPECT_EQ(m_facades.distribution.undervoltageDisconnectCeaseOffset, 30);
}

TEST_F(PmiAdapterTest, TheBatteryStatusIsRoundedHalfAwayFromZeroWithMarkersForWhatWasNotMeasured)
{
    configureBattery();
    m_facades.status.batteryCurrent = -0.4F;
    m_facades.status.batteryTemperature = 0.5F;
    m_facades.status.batteryVoltage = -53.25F;
    m_facades.status.referenceBatteryCapacity = 190;
    std::memcpy(m_facades.status.nextScheduledBatteryTestDate, "202406150000", 12); // no terminator
    m_facades.status.batteryTestRunning = true;
    auto read = request(PMI_GET_RESOURCE_DATA_REQ, kBatteryBackup);
    ASSERT_EQ(numbers(read), std::vector<ose::SIGSELECT>{PMI_GET_RESOURCE_DATA_CFM});
    EXPECT_EQ(read[0].word(16), 0u);
    EXPECT_EQ(read[0].word(20), 1u);
    EXPECT_EQ(static_cast<std::int32_t>(read[0].word(24)), -533);
    EXPECT_EQ(read[0].word(28), 190u);
    EXPECT_EQ(read[0].text(32, 12), "20240615000") << "eleven characters and the terminator";
    EXPECT_EQ(read[0].word(44), 1u);

    m_facades.status = BatteryBackupStatus{};
    read = request(PMI_GET_RESOURCE_DATA_REQ, kBatteryBackup);
    for (std::size_t offset : {16, 20, 24, 28}) EXPECT_EQ(read[0].word(offset), kNoValue) << offset;
}

TEST_F(PmiAdapterTest, BatteryActionsAreConfirmedOrRejectedWithTheInterfacesCodes)
{
    m_facades.testResult = false;
    const std::vector<std::pair<std::uint32_t, std::uint16_t>> errors{{0, 4}, {1, 7}, {2, 5}, {3, 10},
                                                                      {4, 8}, {6, 6}, {9, 0}};
    for (const auto& [error, code] : errors) {
        m_facades.testError = error;
        auto answer = action(kStartBatteryTest);
        ASSERT_EQ(numbers(answer), std::vector<ose::SIGSELECT>{PMI_ACTION_REJ}) << error;
        EXPECT_EQ(answer[0].bytes.size(), 20u);
        EXPECT_EQ(answer[0].header.word14, kStartBatteryTest);
        EXPECT_EQ(ose::loadBe32(answer[0].bytes.data() + 16) >> 16, code) << error;
    }
    EXPECT_EQ(numbers(action(kReadBatteryTestStatus)), std::vector<ose::SIGSELECT>{PMI_ACTION_REJ});
    m_facades.equalizeResult = 1;
    auto equalize = action(kStartEqualizeCharging);
    EXPECT_EQ(ose::loadBe32(equalize[0].bytes.data() + 16) >> 16, kActionErrorEqualizeRefused);
    EXPECT_EQ(ose::loadBe32(action(9)[0].bytes.data() + 16) >> 16, kActionErrorOther);
    EXPECT_EQ(numbers(action(kStopEqualizeCharging)), std::vector<ose::SIGSELECT>{PMI_ACTION_CFM});

    m_facades.testResult = true;
    auto status = action(kReadBatteryTestStatus);
    ASSERT_EQ(numbers(status), (std::vector<ose::SIGSELECT>{PMI_ACTION_CFM, PMI_ACTION_IND}));
    EXPECT_EQ(status[1].header.objectType, 0);
    EXPECT_EQ(status[1].header.word14, kReadBatteryTestStatus);
    EXPECT_EQ(status[1].word(16), 10u);
    EXPECT_EQ(status[1].word(28), 13u);
    auto started = action(kStartBatteryTest, 1);
    EXPECT_EQ(numbers(started), std::vector<ose::SIGSELECT>{PMI_ACTION_CFM});
    EXPECT_EQ(m_facades.calls.back(), "start forced");
}

TEST_F(PmiAdapterTest, ATestTakenWithoutRunningIsConfirmedWithAStartedEventToTheRequesterOrToAllHolders)
{
    configureBattery({}, kObjectLayer);
    configureBattery({}, kOtherClient);
    m_facades.testResult = false;
    m_facades.testError = 5;
    auto start = action(kStartBatteryTest, 0);
    ASSERT_EQ(numbers(start), (std::vector<ose::SIGSELECT>{PMI_ACTION_CFM, PMI_BATTERY_EVENT_IND}));
    EXPECT_EQ(start[1].to, kObjectLayer);
    EXPECT_EQ(start[1].bytes.size(), 336u);
    EXPECT_EQ(start[1].header.word14, kTestStarted);
    EXPECT_EQ(start[1].header.objectType, kBatteryBackup);
    EXPECT_EQ(start[1].word(16), 4u) << "an unforced test the operator asked for";
    auto stop = action(kStopBatteryTest);
    ASSERT_EQ(numbers(stop), (std::vector<ose::SIGSELECT>{PMI_ACTION_CFM, PMI_BATTERY_EVENT_IND, PMI_BATTERY_EVENT_IND}));
    EXPECT_EQ(stop[2].word(16), 3u) << "the facade's initiation";
}

TEST_F(PmiAdapterTest, FaultsAndBatteryEventsReachTheHoldersOfTheirObjectOnly)
{
    configureSupply(kObjectLayer);
    configureBattery({}, kOtherClient);
    BatteryBackupEventHandler handler(&m_adapter);

    m_adapter.raiseSystemUndervoltage();
    auto fault = taken();
    ASSERT_EQ(numbers(fault), std::vector<ose::SIGSELECT>{PMI_FAULT_IND});
    EXPECT_EQ(fault[0].to, kObjectLayer);
    EXPECT_EQ(fault[0].header.word14, 12);
    EXPECT_EQ(fault[0].header.objectType, kPowerSupply);
    m_adapter.ceaseNoPsuUsable();
    EXPECT_EQ(taken()[0].header.word14, 10);
    m_adapter.raiseMainLoadDisconnected();
    EXPECT_TRUE(taken().empty()) << "nobody configured the power distribution";

    handler.raiseLowBatteryCapacity();
    handler.ceaseMultiplePowerSubracks();
    // The object side's table: 6006 is type 2, 6002 type 14.
    handler.raiseBatteryBackupTimeTooShort();
    handler.raiseConsumedCapacityNotCovered();
    fault = taken();
    ASSERT_EQ(numbers(fault),
              (std::vector<ose::SIGSELECT>{PMI_FAULT_IND, PMI_FAULT_CEASE_IND, PMI_FAULT_IND, PMI_FAULT_IND}));
    EXPECT_EQ(fault[0].to, kOtherClient);
    EXPECT_EQ(fault[0].header.word14, 13);
    EXPECT_EQ(fault[1].header.word14, 15);
    EXPECT_EQ(fault[2].header.word14, 2);
    EXPECT_EQ(fault[3].header.word14, 14);

    BatteryTestRecord record;
    record.initiation = 9;
    record.outcome = 2;
    record.measuredBackupTime = 125;
    handler.batteryTestFinished(record);
    auto finished = taken();
    ASSERT_EQ(finished.size(), 1u);
    EXPECT_EQ(finished[0].header.word14, kTestFinished);
    EXPECT_EQ(finished[0].word(16), kNoValue) << "no known initiation";
    EXPECT_EQ(finished[0].word(20), kNoValue) << "nothing consumed";
    EXPECT_EQ(finished[0].word(24), 125u);
    EXPECT_EQ(finished[0].word(36), 2u);
    EXPECT_EQ(finished[0].text(40, 12), "00000000");
    EXPECT_EQ(finished[0].text(52, 8), "--:--");

    BatteryLogRecord log;
    log.operatingTemperature[17] = 11;
    log.dischargeDuration[7] = {3, 2};
    log.highTempDisconnects = 4;
    log.highTempAlarms = 5;
    log.timeOfDisconnect = 2;
    log.onDemandWithForced = 6;
    log.lastTest.initiation = 4;
    std::memcpy(log.lastTest.startDate, "20240101", 8);
    std::memcpy(log.lastTest.startTime, "10:00", 5);
    BatteryLogExtra extra;
    std::memcpy(extra.nextScheduledBatteryTestDate, "20250101", 8);
    handler.batteryLogData(log, extra);
    auto data = taken();
    ASSERT_EQ(data.size(), 1u);
    EXPECT_EQ(data[0].header.word14, kLogData);
    const auto word = [&data](std::size_t index) { return data[0].word(16 + 4 * index); };
    EXPECT_EQ(word(17), 11u);
    EXPECT_EQ(word(25), 3u);
    EXPECT_EQ(word(33), 2u);
    EXPECT_EQ(word(50), 4u) << "disconnects before alarms";
    EXPECT_EQ(word(51), 5u);
    EXPECT_EQ(word(52), 120u) << "minutes sent as seconds";
    EXPECT_EQ(word(60), 6u);
    EXPECT_EQ(word(61), 4u);
    EXPECT_EQ(data[0].text(16 + 62 * 4, 12), "20240101");
    EXPECT_EQ(data[0].text(16 + 65 * 4, 8), "10:00");
    EXPECT_EQ(word(72), kNoValue) << "lastNominalBatteryCapacity not set";
    EXPECT_EQ(data[0].text(16 + 77 * 4, 12), "20250101");
}

TEST_F(PmiAdapterTest, ADeleteReachesItsOwnFacadeAndEndsTheClientsRows)
{
    configureSupply();
    request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply);
    EXPECT_EQ(numbers(request(PMI_DELETE_CONFIG_REQ, kPowerSupply)), std::vector<ose::SIGSELECT>{PMI_DELETE_CONFIG_CFM});
    EXPECT_EQ(m_facades.calls, std::vector<std::string>{"delete supply"});
    m_adapter.systemVoltageUpdated(-54.0F);
    m_adapter.raiseNoPsuUsable();
    EXPECT_TRUE(taken().empty());
    EXPECT_EQ(request(PMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPowerSupply)[0].header.sigNo, PMI_SUBSCRIBE_RESOURCE_DATA_REJ);
    request(PMI_DELETE_CONFIG_REQ, kBatteryBackup);
    request(PMI_DELETE_CONFIG_REQ, kPowerDistribution);
    EXPECT_EQ(m_facades.calls,
              (std::vector<std::string>{"delete supply", "delete battery", "delete distribution"}));
}

} // namespace
