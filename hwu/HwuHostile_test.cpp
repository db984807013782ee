// Units that answer the worst they can within their messages: every flag
// set, values at the ends of their types, strings that fill their fields.
// The records stay sane and the faults follow the rules of the register.

#include "hwu/BfuIf.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/PsuIf.h"
#include "hwu/testSupport/UnitSideRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using ::testing::Contains;
using sim::UnitType;

class HwuHostileTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }

    static void setAll(sim::SimUnit& unit, std::initializer_list<const char*> names, std::int32_t value)
    {
        for (const char* name : names) EXPECT_TRUE(unit.set(name, value)) << name;
    }

    UnitSideRecorder m_sides;
    HwuUnitFactory m_units{{&m_sides, &m_sides, &m_sides, &m_sides, &m_sides}};
};

TEST_F(HwuHostileTest, APsuWithEveryFlagAndFullStringsGivesSaneDataAndOnlyItsFaultShows)
{
    sim::SimUnit& psu = addUnit(UnitType::PSU, 1, 48);
    psu.product() = {std::string(40, '9'), std::string(20, 'R'), std::string(30, 'N'), std::string(20, '1'),
                     std::string(30, 'S')};
    std::vector<float> values;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(FuncId_t{func_type::kPsu, 1}, "A1", 0, 0); });
    step(4500, [&psu](HWU_Broker&) {
        setAll(psu, {"fault", "inputVoltageLow", "tempSensorFault", "highTempClass2", "lowTempClass2",
                     "highTempClass1", "lowTempClass1", "inputVoltageHigh"},
               1);
        setAll(psu, {"outputVoltage"}, -32768);
        setAll(psu, {"temperature"}, -128);
    });
    step(6500, [&](HWU_Broker& broker) {
        auto* unit = broker.getPsu(FuncId_t{func_type::kPsu, 1});
        values = {unit->getOutputVoltage(), unit->getLoad()};
        HwuProductRecord product;
        EXPECT_TRUE(unit->getProductData(&product));
        EXPECT_EQ(std::strlen(product.productNumber.data()), pp::kProductNumberSize - 1);
        EXPECT_EQ(std::strlen(product.serialNumber.data()), pp::kSerialNumberSize - 1);
    });
    runNode(7000);
    // A faulty PSU gives no measurements, whatever it sends.
    EXPECT_EQ(values, (std::vector<float>{999.0F, 999.0F}));
    // The unit's own fault hides every symptom it also reported.
    EXPECT_THAT(m_recorder.m_faults, ::testing::ElementsAre("raise 21501 PSU-1 @5s"));
    // Held but hidden: the input voltage faults. The temperature faults are
    // not raised at all, as the sensor that gives them is faulty too.
    EXPECT_EQ(m_faults.activeCount(), 3u);
}

TEST_F(HwuHostileTest, ABfuAtTheEndsOfItsValuesReportsThemAsTheyAre)
{
    sim::SimUnit& bfu = addUnit(UnitType::BFU, 1, 64);
    setAll(bfu, {"batteryVoltage", "batteryCurrent", "systemVoltage"}, -32768);
    setAll(bfu, {"batteryTemperature"}, 127);
    setAll(bfu, {"mainLoadDisconnected", "priorityLoadDisconnected", "batteryOvertemperature", "batteryTempSensorFault",
                 "batteryNotPresent", "circuitBreakerFault", "slowCharging", "temperatureFault", "flag11", "flag12"},
           1);
    std::vector<float> values;
    step(100, [](HWU_Broker& broker) { broker.configureHwu(FuncId_t{func_type::kBfu, 1}, "A1", 0, 0); });
    step(5500, [&](HWU_Broker& broker) {
        auto* unit = broker.getBfu(FuncId_t{func_type::kBfu, 1});
        values = {unit->getBatteryVoltage(), unit->getBatteryCurrent(), unit->getSystemVoltage(),
                  unit->getBatteryTemperature()};
        EXPECT_FALSE(unit->isBatteryPresent());
        EXPECT_EQ(unit->getBatteryFaultIndicator(), Led::kSlowBlink);
    });
    runNode(6000);
    EXPECT_EQ(values, (std::vector<float>{-327.68F, -3276.8F, -327.68F, 127.0F}));
    EXPECT_THAT(m_recorder.m_faults, Contains("raise 7001 BFU-1 @4s"));
    EXPECT_THAT(m_recorder.m_faults, Contains("raise 7002 BFU-1 @4s"));
}

} // namespace
