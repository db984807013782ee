// The unit facades and the equipment manager on the virtual clock: what the
// equipment interface asks of the units and what it is told.

#include "hwu/BfuFacade.h"
#include "hwu/CluFacade.h"
#include "hwu/EquipmentCtrlManager.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/PduFacade.h"
#include "hwu/PsuFacade.h"
#include "hwu/ScuFacade.h"
#include "hwu/testSupport/UnitSideRecorder.h"

#include "frame/FaultIds.h"
#include "frame/testSupport/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using sim::UnitType;

class EventLog : public HwuEventIf {
public:
    void restartFinished(const FuncId_t& funcId) override { m_events.push_back(at("restarted " + nameOf(funcId))); }
    void statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record) override
    {
        m_status.push_back(nameOf(funcId) + " " + std::to_string(record.available));
    }
    void efuseStatusChanged(std::uint32_t pdu, std::uint32_t efuse, std::uint32_t state) override
    {
        m_events.push_back(at("efuse " + std::to_string(pdu) + " " + std::to_string(efuse) + " " +
                              std::to_string(state)));
    }
    void raiseFault(HwuFault fault, const FuncId_t& funcId) override
    {
        m_events.push_back(at("raise " + std::to_string(static_cast<int>(fault)) + " " + nameOf(funcId)));
    }
    void ceaseFault(HwuFault fault, const FuncId_t& funcId) override
    {
        m_events.push_back(at("cease " + std::to_string(static_cast<int>(fault)) + " " + nameOf(funcId)));
    }
    std::vector<std::string> m_events;
    std::vector<std::string> m_status;
};

class HwuFacadeTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
        m_ssc.m_pEquipment = &m_manager;
        m_manager.setEventHandler(&m_events);
        for (HwuFacade* facade : std::initializer_list<HwuFacade*>{&m_psus, &m_pdus, &m_scus}) facade->setEventHandler(&m_events);
    }

    UnitSideRecorder m_sides;
    EventLog m_events;
    EquipmentCtrlManager m_manager{m_ssc, m_faults};
    PsuFacade m_psus{m_ssc, m_faults};
    PduFacade m_pdus{m_ssc, m_faults};
    ScuFacade m_scus{m_ssc, m_faults};
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_pdus, &m_sides, &m_sides}};
};

TEST_F(HwuFacadeTest, APsuIsConfiguredReadAndDeletedThroughItsFacade)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    addUnit(UnitType::PSU, 1, 50).product().productNumber = "BMP 903 123/1";
    HwuStatusRecord status;
    HwuProductRecord product{};
    HwuMeasurementRecord measured;
    std::vector<bool> results;
    step(100, [&](HWU_Broker&) { results.push_back(m_psus.setConfiguration(3, "A2", 0, 0)); });
    step(5500, [&](HWU_Broker&) {
        results.push_back(m_psus.getStatusData(3, &status));
        results.push_back(m_psus.getUnitProductData(3, &product));
        results.push_back(m_psus.getUnitMeasurementData(3, &measured));
        results.push_back(m_psus.getStatusData(4, &status));
        results.push_back(m_psus.getUnitMeasurementData(4, &measured));
        results.push_back(m_psus.deleteConfiguration(3));
        results.push_back(m_psus.deleteConfiguration(3));
    });
    runNode(6000);
    EXPECT_EQ(results, (std::vector<bool>{true, true, true, true, false, false, true, true}));
    EXPECT_EQ(status.available, 1);
    EXPECT_EQ(status.operationalLed, Led::kSteadyOn);
    EXPECT_STREQ(product.productNumber.data(), "BMP 903 123/1");
    EXPECT_EQ(measured.count, 4u);
    EXPECT_FLOAT_EQ(measured.values[0], -5450.0F);
    EXPECT_FLOAT_EQ(measured.values[1], 120.0F);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "getStatusData: Failed to get status data for FuncType: 1, FuncInst: 4"), 1u);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5,
                          "PsuFacade::getUnitMeasurementData: Unable to get unit measurement data since no PSU was "
                          "found, FuncType: 1, funcInst: 4"),
              1u);
    EXPECT_THAT(m_events.m_status, Contains("PSU-3 1"));
}

TEST_F(HwuFacadeTest, EachFacadePassesOnOnlyTheFaultsOfItsKindInTheInterfacesOrder)
{
    step(100, [&](HWU_Broker&) {
        m_faults.raiseFault(fault_id::kPsuInputVoltageLow, FuncId_t{func_type::kPsu, 2});
        // The id decides the event, the kind of function decides the facade.
        m_faults.raiseFault(fault_id::kBfuTemperature, FuncId_t{func_type::kPsu, 2});
        m_faults.raiseFault(fault_id::kPsuInputVoltageLow, FuncId_t{func_type::kBfu, 2});
        m_faults.raiseFault(fault_id::kDoorAlarm, FuncId_t{func_type::kScu, 1});
        m_faults.ceaseFault(fault_id::kPsuInputVoltageLow, FuncId_t{func_type::kPsu, 2});
    });
    runNode(1000);
    // The index of the fault in the interface's list: 20002 is 7, 7002 is 12.
    EXPECT_THAT(m_events.m_events, ElementsAre("raise 7 PSU-2 @0s", "raise 12 PSU-2 @0s", "cease 7 PSU-2 @0s"));
}

TEST_F(HwuFacadeTest, ARequestedRestartIsFinishedAndClearsTheFaultsButAnUnaskedOneIsOnlyTraced)
{
    TraceCapture trace("supSysCtrlEquipment:7");
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, 50);
    bool silentRefused = false;
    step(100, [&](HWU_Broker&) { m_psus.setConfiguration(3, "A2", 0, 0); });
    step(5500, [&](HWU_Broker&) {
        psu.set("inputVoltageHigh", 1);
    });
    step(6500, [&](HWU_Broker&) { EXPECT_TRUE(m_psus.restartUnit(3)); });
    step(12500, [&](HWU_Broker&) { psu.restart(ose::get_time_ms()); });
    step(14500, [&](HWU_Broker&) { psu.faults().silent.arm(0); });
    step(16500, [&](HWU_Broker&) { silentRefused = !m_psus.restartUnit(3); });
    runNode(17000);
    EXPECT_THAT(m_events.m_events, Contains("restarted PSU-3 @7s"));
    // The restart ceased 20001; the next status, handled as a first one,
    // raised it again.
    EXPECT_THAT(m_recorder.m_faults, Contains("cease 20001 PSU-3 @7s"));
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 7, "Restart action was not requested."), 1u);
    EXPECT_TRUE(silentRefused);
}

TEST_F(HwuFacadeTest, EfusesAreNumberedInTheOrderTheyWereConfiguredAndReportedByTheirOwnInstance)
{
    addUnit(UnitType::PDU, 1, 80);
    std::vector<bool> results;
    std::uint32_t state = 0;
    std::uint32_t unknownState = 0;
    step(100, [&](HWU_Broker&) {
        m_pdus.setConfiguration(1, "A1", 0, 0);
        results = {m_pdus.configureEfuse(1, 41), m_pdus.configureEfuse(1, 42), m_pdus.configureEfuse(1, 41)};
    });
    step(5500, [&](HWU_Broker&) {
        results.push_back(m_pdus.getEfuseStatus(42, &state));
        results.push_back(m_pdus.getEfuseStatus(43, &unknownState));
        results.push_back(m_pdus.deleteEfuse(42));
        results.push_back(m_pdus.getEfuseStatus(42, &unknownState));
    });
    runNode(6000);
    EXPECT_EQ(results, (std::vector<bool>{true, true, false, true, false, true, false}));
    EXPECT_EQ(state, Led::kSteadyOn);
    EXPECT_EQ(unknownState, 1u);
    // Only the e-fuses that were configured are told of, by their instance.
    EXPECT_THAT(m_events.m_events, Contains("efuse 1 41 3 @4s"));
    EXPECT_THAT(m_events.m_events, Contains("efuse 1 42 3 @4s"));
    EXPECT_THAT(m_events.m_events, ::testing::Not(Contains(::testing::HasSubstr("efuse 1 43"))));
}

TEST_F(HwuFacadeTest, AnScusClimateParametersCarryItsAbilitiesAndState)
{
    sim::SimUnit& scu = addUnit(UnitType::SCU, 1, 32);
    ScuClimateParams params;
    bool before = true;
    step(100, [&](HWU_Broker&) {
        m_scus.setConfiguration(1, "", 0, 1);
        before = m_scus.getClimateParams(1, &params);
    });
    step(5200, [&](HWU_Broker&) { scu.set("fanGroupFailure", 0x02); });
    step(6500, [&](HWU_Broker&) { EXPECT_TRUE(m_scus.getClimateParams(1, &params)); });
    runNode(7000);
    EXPECT_FALSE(before);
    EXPECT_EQ(params.availableHw, 0x7F);
    EXPECT_EQ(params.availableFanGroups, 0x0F);
    EXPECT_EQ(params.availableExternalInputs, 0xF8);
    EXPECT_EQ(params.controlOutputsAndLimits[0], 2);
    EXPECT_EQ(params.controlOutputsAndLimits[1], -20);
    EXPECT_EQ(params.controlOutputsAndLimits[22], 50);
    EXPECT_EQ(params.temperature, 25);
    EXPECT_EQ(params.fanGroupFailure, 0x02);
    EXPECT_EQ(params.connectedFans, 0x0F);
}

} // namespace
