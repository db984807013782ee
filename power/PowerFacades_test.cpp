// The three power facades against the real faults register and a power
// control stand-in: each fault of a subject reaches its own operation, other
// faults are dropped, a missing handler or power control is traced, and the
// requests reach the power control with their initiations and reasons.

#include "power/BatteryBackupFacade.h"
#include "power/PowerDistributionFacade.h"
#include "power/PowerSupplyFacade.h"

#include "frame/ActiveFaultsRegister.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/testSupport/TraceCapture.h"
#include "power/BatteryBackupCfg.h"
#include "power/BatteryBackupEventIf.h"
#include "power/PowerCtrlManagerIf.h"
#include "power/PowerDistributionCfg.h"
#include "power/PowerDistributionEventIf.h"
#include "power/PowerSupplyEventIf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace fault_id;
using ::testing::_;
using ::testing::DoAll;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Return;
using ::testing::SetArgPointee;
using ::testing::UnorderedElementsAre;
using Texts = std::vector<std::string>;

const std::string kPower = "supSysCtrlPower";
constexpr unsigned kUnexpected = 5;

constexpr FuncId_t kBatteryBackup{func_type::kBatteryBackup, 0};
constexpr FuncId_t kPowerDistribution{func_type::kPowerDistribution, 0};
constexpr FuncId_t kPowerSupply{func_type::kPowerSupply, 0};

class MockPowerCtrlManager : public PowerCtrlManagerIf {
public:
    MOCK_METHOD(void, statusChanged, (), (override));
    MOCK_METHOD(void, updateBatteryParameters, (const BatteryBackupCfg&), (override));
    MOCK_METHOD(void, updatePowerDistribution, (const PowerDistributionCfg&), (override));
    MOCK_METHOD(void, updatePowerSupply, (const std::int16_t*), (override));
    MOCK_METHOD(void, clearBatteryBackupConfigured, (), (override));
    MOCK_METHOD(void, getBatteryBackupStatus, (BatteryBackupStatus*), (override));
    MOCK_METHOD(void, startEqualizeCharging, (), (override));
    MOCK_METHOD(void, stopEqualizeCharging, (), (override));
    MOCK_METHOD(bool, startBatteryTest, (std::uint32_t, std::uint32_t*), (override));
    MOCK_METHOD(bool, stopBatteryTest, (std::uint32_t, std::uint32_t*), (override));
    MOCK_METHOD(bool, getBatteryTestProgress, (std::int32_t*), (override));
    MOCK_METHOD(std::uint32_t, getBatteryTestInitiation, (), (override));
    MOCK_METHOD(bool, isRunningOnBatteries, (), (const, override));
    MOCK_METHOD(float, getSystemVoltage, (), (const, override));
    MOCK_METHOD(bool, isSystemVoltageValid, (), (const, override));
};

// Each event handler writes the name of the operation called.
#define RECORD(operation) \
    void operation() override { m_events.push_back(#operation); }

class BatteryEvents : public BatteryBackupEventIf {
public:
    RECORD(raiseNoBatteryPresent) RECORD(ceaseNoBatteryPresent)
    RECORD(raiseIntermittentConnectedTooOften) RECORD(ceaseIntermittentConnectedTooOften)
    RECORD(raiseLowBatteryCapacity) RECORD(ceaseLowBatteryCapacity)
    RECORD(raiseConsumedCapacityNotCovered) RECORD(ceaseConsumedCapacityNotCovered)
    RECORD(raiseRechargeTooLong) RECORD(ceaseRechargeTooLong)
    RECORD(raiseBatteryOverTemperature) RECORD(ceaseBatteryOverTemperature)
    RECORD(raiseRunningOnBatteries) RECORD(ceaseRunningOnBatteries)
    RECORD(raiseBatteryTempSensorFaulty) RECORD(ceaseBatteryTempSensorFaulty)
    RECORD(raiseBatteryBackupTimeTooShort) RECORD(ceaseBatteryBackupTimeTooShort)
    RECORD(raiseMultiplePowerSubracks) RECORD(ceaseMultiplePowerSubracks)
    void batteryModeChanged(bool) override {}
    void batteryTestStarted(std::uint32_t) override {}
    Texts m_events;
};

class DistributionEvents : public PowerDistributionEventIf {
public:
    RECORD(raiseMainLoadDisconnected) RECORD(ceaseMainLoadDisconnected)
    RECORD(raisePriorityLoadDisconnected) RECORD(ceasePriorityLoadDisconnected)
    RECORD(raisePduMainTemperatureHigh) RECORD(ceasePduMainTemperatureHigh)
    Texts m_events;
};

class SupplyEvents : public PowerSupplyEventIf {
public:
    RECORD(raiseNoPsuUsable) RECORD(ceaseNoPsuUsable)
    RECORD(raiseSystemOvervoltage) RECORD(ceaseSystemOvervoltage)
    RECORD(raiseSystemUndervoltage) RECORD(ceaseSystemUndervoltage)
    void systemVoltageUpdated(float) override {}
    Texts m_events;
};

#undef RECORD

class PowerFacadesTest : public ::testing::Test {
protected:
    void setHandlers()
    {
        m_battery.setEventHandler(&m_batteryEvents);
        m_distribution.setEventHandler(&m_distributionEvents);
        m_supply.setEventHandler(&m_supplyEvents);
    }
    // Each fault in turn raised and ceased, so that no fault hides another.
    void raiseAndCeaseEach(const std::vector<std::int32_t>& faultIds, const FuncId_t& subject)
    {
        for (std::int32_t faultId : faultIds) {
            m_faults.raiseFault(faultId, subject);
            m_faults.ceaseFault(faultId, subject);
        }
    }
    bool anyEvent() const
    {
        return !m_batteryEvents.m_events.empty() || !m_distributionEvents.m_events.empty() ||
               !m_supplyEvents.m_events.empty();
    }

    ActiveFaultsRegister m_faults;
    ::testing::StrictMock<MockPowerCtrlManager> m_manager;
    BatteryBackupFacade m_battery{m_faults, &m_manager};
    PowerDistributionFacade m_distribution{m_faults, &m_manager};
    PowerSupplyFacade m_supply{m_faults, &m_manager};
    BatteryEvents m_batteryEvents;
    DistributionEvents m_distributionEvents;
    SupplyEvents m_supplyEvents;
};

// ---- fault mapping ----

TEST_F(PowerFacadesTest, EachFaultOfASubjectReachesItsOwnRaiseAndCease)
{
    setHandlers();
    raiseAndCeaseEach({6003, 6000, 6001, 6002, 20005, 6005, 6004, 7000, 6006, 6007}, kBatteryBackup);
    EXPECT_THAT(m_batteryEvents.m_events,
                ElementsAreArray<std::string>(
                    {"raiseNoBatteryPresent", "ceaseNoBatteryPresent", "raiseIntermittentConnectedTooOften",
                     "ceaseIntermittentConnectedTooOften", "raiseLowBatteryCapacity", "ceaseLowBatteryCapacity",
                     "raiseConsumedCapacityNotCovered", "ceaseConsumedCapacityNotCovered", "raiseRechargeTooLong",
                     "ceaseRechargeTooLong", "raiseBatteryOverTemperature", "ceaseBatteryOverTemperature",
                     "raiseRunningOnBatteries", "ceaseRunningOnBatteries", "raiseBatteryTempSensorFaulty",
                     "ceaseBatteryTempSensorFaulty", "raiseBatteryBackupTimeTooShort",
                     "ceaseBatteryBackupTimeTooShort", "raiseMultiplePowerSubracks", "ceaseMultiplePowerSubracks"}));

    raiseAndCeaseEach({7003, 7004, 18700}, kPowerDistribution);
    EXPECT_THAT(m_distributionEvents.m_events,
                ElementsAre("raiseMainLoadDisconnected", "ceaseMainLoadDisconnected", "raisePriorityLoadDisconnected",
                            "ceasePriorityLoadDisconnected", "raisePduMainTemperatureHigh",
                            "ceasePduMainTemperatureHigh"));

    raiseAndCeaseEach({20004, 14007, 14008}, kPowerSupply);
    EXPECT_THAT(m_supplyEvents.m_events,
                ElementsAre("raiseNoPsuUsable", "ceaseNoPsuUsable", "raiseSystemOvervoltage", "ceaseSystemOvervoltage",
                            "raiseSystemUndervoltage", "ceaseSystemUndervoltage"));
}

TEST_F(PowerFacadesTest, FaultsOfOtherSubjectsAndUnknownIdsAreDropped)
{
    TraceCapture trace(kPower + ":all");
    setHandlers();
    // A subject's fault id on another subject.
    raiseAndCeaseEach({7003, 20004, 18700}, kBatteryBackup);
    raiseAndCeaseEach({6003, 14007}, kPowerDistribution);
    raiseAndCeaseEach({6004, 7004}, kPowerSupply);
    // The same ids on the units, and the cabinet's power fault.
    raiseAndCeaseEach({6003, 7000}, {func_type::kBfu, 0});
    raiseAndCeaseEach({18700}, {func_type::kPdu, 0});
    raiseAndCeaseEach({20004}, {func_type::kPsu, 0});
    raiseAndCeaseEach({kPowerLimitsOutsideCapabilities}, {func_type::kCabinet, 0});
    // Ids the subjects don't report.
    raiseAndCeaseEach({7001, 21501}, kBatteryBackup);
    raiseAndCeaseEach({21502}, kPowerDistribution);
    raiseAndCeaseEach({kPowerLimitsOutsideCapabilities, 20000}, kPowerSupply);
    EXPECT_FALSE(anyEvent());
    EXPECT_TRUE(trace.texts(kPower, kUnexpected).empty());
}

TEST_F(PowerFacadesTest, WithoutAHandlerAFaultIsTracedAndLostWhileTheRegisterKeepsIt)
{
    TraceCapture trace(kPower + ":all");
    m_faults.raiseFault(kNoBatteryPresent, kBatteryBackup);
    m_faults.raiseFault(kMainLoadDisconnected, kPowerDistribution);
    m_faults.raiseFault(kSystemUndervoltage, kPowerSupply);
    m_faults.ceaseFault(kNoBatteryPresent, kBatteryBackup);
    m_faults.ceaseFault(kMainLoadDisconnected, kPowerDistribution);
    m_faults.ceaseFault(kSystemUndervoltage, kPowerSupply);
    // Only faults the facades would have passed on are traced.
    m_faults.raiseFault(21501, kBatteryBackup);
    EXPECT_THAT(trace.texts(kPower, kUnexpected),
                ElementsAre("raiseFault: m_pBatteryBackupAdapter is not set",
                            "raiseFault: m_pPowerDistributionAdapter is not set",
                            "raiseFault: m_pPowerSupplyAdapter is not set",
                            "ceaseFault: m_pBatteryBackupAdapter is not set",
                            "ceaseFault: m_pPowerDistributionAdapter is not set",
                            "ceaseFault: m_pPowerSupplyAdapter is not set"));

    // A fault raised before the handler came isn't told again; its cease is.
    m_faults.raiseFault(kLowBatteryCapacityBatteryTest, kBatteryBackup);
    setHandlers();
    EXPECT_TRUE(m_faults.isFaultActive(kLowBatteryCapacityBatteryTest, kBatteryBackup));
    m_faults.ceaseFault(kLowBatteryCapacityBatteryTest, kBatteryBackup);
    EXPECT_THAT(m_batteryEvents.m_events, ElementsAre("ceaseLowBatteryCapacity"));
}

// ---- delete ----

TEST_F(PowerFacadesTest, DeleteCeasesTheFaultsOfItsSubjectAlone)
{
    setHandlers();
    m_faults.raiseFault(kNoBatteryPresent, kBatteryBackup);
    m_faults.raiseFault(kRechargeTooLong, kBatteryBackup);
    m_faults.raiseFault(kMainLoadDisconnected, kPowerDistribution);
    m_faults.raiseFault(kNoPsuUsable, kPowerSupply);
    m_faults.raiseFault(kNoBatteryPresent, {func_type::kBfu, 0});
    m_batteryEvents.m_events.clear();
    m_distributionEvents.m_events.clear();
    m_supplyEvents.m_events.clear();

    EXPECT_CALL(m_manager, clearBatteryBackupConfigured());
    m_battery.deleteBatteryBackup();
    EXPECT_THAT(m_batteryEvents.m_events, UnorderedElementsAre("ceaseNoBatteryPresent", "ceaseRechargeTooLong"));
    EXPECT_FALSE(m_faults.isFaultActive(kNoBatteryPresent, kBatteryBackup));
    EXPECT_TRUE(m_faults.isFaultActive(kNoBatteryPresent, {func_type::kBfu, 0}));
    EXPECT_TRUE(m_faults.isFaultActive(kMainLoadDisconnected, kPowerDistribution));
    EXPECT_TRUE(m_faults.isFaultActive(kNoPsuUsable, kPowerSupply));

    m_distribution.deletePowerDistribution();
    EXPECT_THAT(m_distributionEvents.m_events, ElementsAre("ceaseMainLoadDisconnected"));
    EXPECT_TRUE(m_faults.isFaultActive(kNoPsuUsable, kPowerSupply));
    m_supply.deletePowerSupply();
    EXPECT_THAT(m_supplyEvents.m_events, ElementsAre("ceaseNoPsuUsable"));
    EXPECT_EQ(m_faults.activeCount(), 1u);
}

// ---- requests to the power control ----

TEST_F(PowerFacadesTest, SystemVoltageIsInTenthsRoundedToTheNearestAndUnsetWithoutAReading)
{
    EXPECT_CALL(m_manager, isSystemVoltageValid()).WillRepeatedly(Return(true));
    EXPECT_CALL(m_manager, getSystemVoltage())
        .WillOnce(Return(-54.54F))
        .WillOnce(Return(-54.56F))
        .WillOnce(Return(-54.5F))
        .WillOnce(Return(-48.0F));
    EXPECT_EQ(m_supply.getSystemVoltage(), -545);
    EXPECT_EQ(m_supply.getSystemVoltage(), -546);
    EXPECT_EQ(m_supply.getSystemVoltage(), -545);
    EXPECT_EQ(m_supply.getSystemVoltage(), -480);

    ::testing::Mock::VerifyAndClearExpectations(&m_manager);
    EXPECT_CALL(m_manager, isSystemVoltageValid()).WillOnce(Return(false));
    EXPECT_CALL(m_manager, getSystemVoltage()).Times(0);
    EXPECT_EQ(m_supply.getSystemVoltage(), INT32_MIN);
}

TEST_F(PowerFacadesTest, BatteryActionsCarryTheOperatorsInitiationAndReason)
{
    EXPECT_CALL(m_manager, startBatteryTest(5u, _)).WillOnce(Return(true));
    EXPECT_CALL(m_manager, startBatteryTest(4u, _)).WillOnce(DoAll(SetArgPointee<1>(4u), Return(false)));
    EXPECT_CALL(m_manager, stopBatteryTest(1u, _)).WillOnce(DoAll(SetArgPointee<1>(3u), Return(false)));
    EXPECT_CALL(m_manager, getBatteryTestInitiation()).WillOnce(Return(5u));
    EXPECT_CALL(m_manager, startEqualizeCharging());
    EXPECT_CALL(m_manager, stopEqualizeCharging());
    EXPECT_CALL(m_manager, isRunningOnBatteries()).WillOnce(Return(true));

    std::uint32_t error = 99;
    EXPECT_TRUE(m_battery.startBatteryTest(true, &error));
    EXPECT_EQ(error, 99u);
    EXPECT_FALSE(m_battery.startBatteryTest(false, &error));
    EXPECT_EQ(error, 4u);
    EXPECT_FALSE(m_battery.stopBatteryTest(&error));
    EXPECT_EQ(error, 3u);
    EXPECT_EQ(m_battery.getBatteryTestResults(), 5u);
    EXPECT_EQ(m_battery.startEqualizeCharging(), 0u);
    m_battery.stopEqualizeCharging();
    EXPECT_TRUE(m_battery.isRunningOnBatteries());
}

TEST_F(PowerFacadesTest, PowerSupplyValuesWithoutAnArrayAreRejected)
{
    TraceCapture trace(kPower + ":all");
    m_supply.updatePowerSupply(nullptr);
    EXPECT_THAT(trace.texts(kPower, kUnexpected), ElementsAre("updatePowerSupply: no values"));
}

TEST(PowerFacadesWithoutPowerControlTest, EveryRequestIsTracedAndAnsweredAsRefusedOrEmpty)
{
    ActiveFaultsRegister faults;
    BatteryBackupFacade battery(faults, nullptr);
    PowerDistributionFacade distribution(faults, nullptr);
    PowerSupplyFacade supply(faults, nullptr);
    TraceCapture trace(kPower + ":all");

    battery.updateBatteryParameters(BatteryBackupCfg{});
    faults.raiseFault(kRunningOnBatteries, kBatteryBackup);
    battery.deleteBatteryBackup();
    EXPECT_FALSE(faults.isFaultActive(kRunningOnBatteries, kBatteryBackup));
    BatteryBackupStatus status;
    status.batteryCurrent = 12.0F;
    status.referenceBatteryCapacity = 80;
    battery.getBatteryBackupStatus(&status);
    EXPECT_EQ(status.batteryCurrent, 999.0F);
    EXPECT_EQ(status.referenceBatteryCapacity, INT32_MIN);
    EXPECT_NE(battery.startEqualizeCharging(), 0u);
    battery.stopEqualizeCharging();
    std::uint32_t error = 0;
    EXPECT_FALSE(battery.startBatteryTest(true, &error));
    EXPECT_EQ(error, BatteryBackupFacade::kErrorPowerSystemUnreachable);
    EXPECT_FALSE(battery.stopBatteryTest(&error));
    EXPECT_EQ(error, BatteryBackupFacade::kErrorTestNotRunning);
    std::int32_t words[4] = {};
    EXPECT_FALSE(battery.getBatteryTestProgress(words));
    EXPECT_EQ(battery.getBatteryTestResults(), 0u);
    EXPECT_FALSE(battery.isRunningOnBatteries());
    distribution.updatePowerDistribution(PowerDistributionCfg{});
    const std::int16_t limits[9] = {};
    supply.updatePowerSupply(limits);
    EXPECT_EQ(supply.getSystemVoltage(), INT32_MIN);

    Texts expected;
    for (const char* operation :
         {"updateBatteryParameters", "deleteBatteryBackup", "getBatteryBackupStatus", "startEqualizeCharging",
          "stopEqualizeCharging", "startBatteryTest", "stopBatteryTest", "getBatteryTestProgress",
          "getBatteryTestResults", "isRunningOnBatteries", "updatePowerDistribution", "updatePowerSupply",
          "getSystemVoltage"})
        expected.push_back(std::string(operation) + ": PowerCtrlManager is not created");
    // The cease of the running-on-batteries fault has no handler either.
    expected.insert(expected.begin() + 1, "raiseFault: m_pBatteryBackupAdapter is not set");
    expected.insert(expected.begin() + 2, "ceaseFault: m_pBatteryBackupAdapter is not set");
    EXPECT_EQ(trace.texts(kPower, kUnexpected), expected);
}

} // namespace
