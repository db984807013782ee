// The climate regulation in a closed loop with the simulated cabinet's
// physics, on the virtual clock: the node's SCU, PSUs and climate manager
// against the default site's air, fans and heaters. With SSC_RECORD_DIR set,
// each scenario leaves its recording there for scripts/plot-run.

#include "cabinet/CabinetObserverIf.h"
#include "climate/ClimateCtrlManager.h"
#include "climate/ClimateCtrlServer.h"
#include "climate/FanGroupControl.h"
#include "climate/TemperatureRegulator.h"
#include "frame/FaultIds.h"
#include "frame/SignalDispatcher.h"
#include "frame/testSupport/TraceCapture.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/testSupport/HwuNodeHarness.h"
#include "sim/SiteFile.h"
#include "sim/testSupport/ScenarioRecording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using ::testing::Contains;

constexpr std::uint32_t kCabinet = 0;
constexpr std::uint64_t kHourMs = 3600ULL * 1000;
constexpr std::uint32_t kFanGroup1 = 101;
constexpr std::uint32_t kFanGroup2 = 102;

// Two internal fan groups, at least 20 % while regulating; the hot spots
// of the PSUs (45 degrees) are what the fans answer to.
ClimateCfg outdoorClimate()
{
    std::array<std::int16_t, ClimateCfg::kNumbers> numbers{};
    numbers[0] = 2;    // numberOfBlowers
    numbers[1] = 100;  // flowFactor: air flow in percent of fan speed
    numbers[2] = 70;   // nominalFanSpeed
    numbers[3] = 20;   // basicFanSpeed
    numbers[10] = 100; // placementFactorPSU
    numbers[15] = 1;   // fanGroup1Control: internal
    numbers[16] = 1;   // fanGroup2Control: internal
    numbers[21] = 5;   // heater1OnTemp
    numbers[22] = 10;  // heater1OffTemp
    numbers[23] = 0;   // heater2OnTemp
    numbers[24] = 5;   // heater2OffTemp
    numbers[31] = 50;  // extFanSpeedFault
    ClimateCfg cfg;
    cfg.setCabinetParameters(0, 0, numbers);
    return cfg;
}

class ClimateClosedLoopTest : public HwuNodeHarness, public FaultsRegisterReportIf {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        std::string error;
        ASSERT_TRUE(sim::SiteFile::load(SSC_SOURCE_DIR "/sim/sites/default.xml", m_cabinet, error)) << error;
        m_pUnitFactory = &m_units;
        recordScenarioIfAsked(*m_cabinet.plant);
    }

    // The node comes up as the object layer would bring it: climate manager
    // and parameters, the cabinet configured, two fan groups, the SCU and
    // three PSUs.
    void startClimate()
    {
        step(0, [this](HWU_Broker& broker) {
            m_pDispatcher = std::make_unique<SignalDispatcher>();
            m_pServer = std::make_unique<ClimateCtrlServer>(m_pDispatcher.get());
            m_units.setSides({m_pServer.get(), nullptr, nullptr, nullptr, nullptr});
            m_faults.addReporter(this);
            ClimateCtrlManager* climate = ClimateCtrlManager::create(m_ssc, broker, m_faults);
            climate->setSupportSystemControl(true);
            climate->setClimateCfg(outdoorClimate());
            climate->update(CabinetObserverIf::kCabinetConfigured);
            climate->configureFanGroup(kFanGroup1, 1, kCabinet);
            climate->configureFanGroup(kFanGroup2, 2, kCabinet);
            broker.configureHwu({func_type::kScu, 1}, "", 0, kCabinet);
            broker.configureHwu({func_type::kPsu, 1}, "A1", 0, kCabinet);
            broker.configureHwu({func_type::kPsu, 2}, "B1", 0, kCabinet);
            broker.configureHwu({func_type::kPsu, 3}, "A2", 0, kCabinet);
        });
    }

    // Samples of the plant and the commands each simulated minute until `untilMs`.
    void runSampled(std::uint64_t untilMs)
    {
        runNode(60'000);
        sample();
        for (std::uint64_t now = 120'000; now <= untilMs; now += 60'000) {
            world().runFor(60'000);
            sample();
        }
    }

    void sample()
    {
        sim::SimUnit* scu = m_cabinet.unit(1, 32);
        double hottest = -100.0;
        for (const std::uint8_t psu : {48, 49, 50})
            hottest = std::max(hottest, static_cast<double>(m_cabinet.unit(1, psu)->get("temperature").value_or(0)));
        m_samples.push_back({world().now(), hottest, scu->get("set.fanSpeed1").value_or(-1),
                             scu->get("set.fanSpeed2").value_or(-1), m_cabinet.plant->thermal().heaterOn(0),
                             m_cabinet.plant->thermal().airC()});
    }

    struct Sample {
        std::uint64_t timeMs;
        double hottestPsuC;
        std::int32_t fan1;
        std::int32_t fan2;
        bool heater1;
        double airC;
    };
    std::vector<Sample> samplesBetween(std::uint64_t fromMs, std::uint64_t toMs) const
    {
        std::vector<Sample> found;
        for (const Sample& sample : m_samples)
            if (sample.timeMs >= fromMs && sample.timeMs <= toMs) found.push_back(sample);
        return found;
    }

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override
    {
        m_fanFaults.push_back(at("raise " + std::to_string(faultId.id) + " " + nameOf(funcId)));
    }
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override
    {
        m_fanFaults.push_back(at("cease " + std::to_string(faultId.id) + " " + nameOf(funcId)));
    }

    // The manager goes first, while the broker it watches is still there.
    void TearDown() override
    {
        // Outside the world there is no timer left to stop.
        TimerService::setHandler(nullptr);
        ClimateCtrlManager::destroy();
        HwuNodeHarness::TearDown();
    }

    HwuUnitFactory m_units;
    std::unique_ptr<SignalDispatcher> m_pDispatcher;
    std::unique_ptr<ClimateCtrlServer> m_pServer;
    std::vector<Sample> m_samples;
    std::vector<std::string> m_fanFaults;
};

TEST_F(ClimateClosedLoopTest, AHotDayRaisesTheFansAndHoldsTheHotSpotsAtTheirLimit)
{
    // 25 degrees on average, 17 at 04:00 and 33 at 16:00.
    startClimate();
    runSampled(24 * kHourMs);
    const auto night = samplesBetween(3 * kHourMs, 5 * kHourMs);
    const auto afternoon = samplesBetween(15 * kHourMs, 17 * kHourMs);
    ASSERT_FALSE(night.empty());
    ASSERT_FALSE(afternoon.empty());
    EXPECT_GT(afternoon.front().fan1, night.front().fan1 + 10);
    EXPECT_EQ(afternoon.front().fan1, afternoon.front().fan2) << "both groups are internal";
    // Once settled the regulator keeps the PSUs' hot spots at their 45
    // degrees, within the sensors' whole degrees.
    double hottest = 0.0;
    for (const Sample& sample : samplesBetween(kHourMs, 24 * kHourMs)) hottest = std::max(hottest, sample.hottestPsuC);
    EXPECT_LE(hottest, 46.0);
    EXPECT_GE(hottest, 44.0) << "the fans do not run harder than the hot spots need";
}

TEST_F(ClimateClosedLoopTest, AColdNightBringsTheFansToTheirMinimumAndTheHeatersOn)
{
    // -15 degrees on average, -23 at 04:00.
    m_cabinet.plant->thermal().setAmbientC(-15.0);
    startClimate();
    runSampled(6 * kHourMs);
    const auto settled = samplesBetween(2 * kHourMs, 6 * kHourMs);
    ASSERT_FALSE(settled.empty());
    for (const Sample& sample : settled) {
        EXPECT_EQ(sample.fan1, 20) << sample.timeMs;
        EXPECT_EQ(sample.fan2, 20) << sample.timeMs;
    }
    // The SCU runs its heater on the thresholds it was given: on below 5
    // degrees, off above 10.
    EXPECT_TRUE(std::any_of(settled.begin(), settled.end(), [](const Sample& s) { return s.heater1; }));
    for (const Sample& sample : settled) {
        EXPECT_GT(sample.airC, -5.0) << sample.timeMs;
        EXPECT_LT(sample.airC, 12.0) << sample.timeMs;
    }
}

TEST_F(ClimateClosedLoopTest, AFailedFanGroupRaisesItsFaultAndTheOtherGroupTakesTheDemand)
{
    startClimate();
    step(static_cast<std::uint32_t>(13 * kHourMs / 2), [this](HWU_Broker&) {
        for (std::uint32_t fan = 0; fan < sim::ThermalModel::kFansPerGroup; ++fan)
            m_cabinet.plant->thermal().setFan(0, fan, sim::FanState::Failed);
    });
    runSampled(10 * kHourMs);
    EXPECT_THAT(m_fanFaults, Contains(::testing::StartsWith("raise 21501 FAN-101 @23400s")));
    const auto before = samplesBetween(6 * kHourMs, 13 * kHourMs / 2 - 60'000);
    const auto after = samplesBetween(8 * kHourMs, 10 * kHourMs);
    ASSERT_FALSE(before.empty());
    ASSERT_FALSE(after.empty());
    EXPECT_GT(after.back().fan2, before.back().fan2 + 10) << "half the air: the working group runs harder";
    double hottest = 0.0;
    for (const Sample& sample : after) hottest = std::max(hottest, sample.hottestPsuC);
    EXPECT_LE(hottest, 46.0);
}

TEST_F(ClimateClosedLoopTest, AnScuReplacedMidRunIsConfiguredAgain)
{
    TraceCapture trace("supSysCtrlClimate:7");
    startClimate();
    step(30 * 60'000, [this](HWU_Broker&) {
        // The new SCU comes without the old one's configuration.
        m_cabinet.unit(1, 32)->set("set.scuHeater1OnTemp", 0);
        m_cabinet.unit(1, 32)->replace("SIM00000077", ose::get_time_ms());
    });
    runNode(kHourMs - 60'000);
    EXPECT_EQ(trace.count("supSysCtrlClimate", 7, "Configuration of SCU done OK"), 2u);
    EXPECT_EQ(trace.count("supSysCtrlClimate", 7, "Additional Configuration of SCU done OK"), 2u);
    EXPECT_EQ(m_cabinet.unit(1, 32)->get("set.scuHeater1OnTemp"), 5);
    EXPECT_EQ(m_cabinet.unit(1, 32)->product().serialNumber, "SIM00000077");
}

} // namespace
