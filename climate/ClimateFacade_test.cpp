// The climate facade in a core on the virtual clock: the report's words and
// hot-spot rows against a manager with known parameters and sensors (the
// expected numbers worked out by hand from the parameters), the parameters
// passed on, and the periodic report with its timer.

#include "climate/ClimateCtrlManager.h"
#include "climate/ClimateEventIf.h"
#include "climate/ClimateFacade.h"
#include "climate/TemperatureRegulator.h"
#include "frame/FuncType.h"
#include "frame/testSupport/TraceCapture.h"
#include "hwu/testSupport/HwuNodeHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

using Words = std::array<std::int32_t, ClimateReport::kWords>;
using Row = std::array<std::int32_t, ClimateReport::kRowWords>;
using Ints = std::vector<std::int32_t>;
using Texts = std::vector<std::string>;

const std::string kClimate = "supSysCtrlClimate";

// Flow factor 200: an air flow is half the fan speed in percent, so the
// nominal air flow is 40, the basic 30 and the maximum 50.
ClimateCfg cabinetParameters()
{
    std::array<std::int16_t, ClimateCfg::kNumbers> numbers{};
    // flowFactor, nominal, basic and minimum external speed, hysteresis,
    // startingPoint, external fan start and stop temperatures.
    const std::int16_t fans[] = {200, 80, 60, 10, 6, 56, 25, 18};
    std::copy(std::begin(fans), std::end(fans), numbers.begin() + 1);
    // Placement of CBU, PSU, RAX, RU, TX (out of the hot-spot algorithm), DU.
    const std::int16_t placements[] = {80, 50, 70, 40, 101, 100};
    std::copy(std::begin(placements), std::end(placements), numbers.begin() + 9);
    numbers[15] = 1; // fan group 1 internal
    numbers[17] = 2; // fan group 3 external
    ClimateCfg cfg;
    cfg.setCabinetParameters(1, 0, numbers);
    return cfg;
}

class ReportRecorder : public ClimateEventIf {
public:
    void climateReport(std::int32_t timerHandle) override
    {
        m_reports.push_back(std::to_string(timerHandle) + " @" + std::to_string(ose::get_time_ms()));
    }
    Texts m_reports;
};

class ClimateFacadeTest : public HwuNodeHarness {
protected:
    void TearDown() override
    {
        TimerService::setHandler(nullptr);
        ClimateCtrlManager::destroy();
        HwuNodeHarness::TearDown();
    }

    // The manager on the primary node without an SCU makes no pass of its
    // own: the only regulation is the one a test runs.
    void inCore(std::function<void(ClimateCtrlManager&)> action)
    {
        step(100, [this, action](HWU_Broker& broker) {
            ClimateCtrlManager* climate = ClimateCtrlManager::create(m_ssc, broker, m_faults);
            climate->setSupportSystemControl(true);
            action(*climate);
        });
        runNode(200);
    }
    // The parameters through the facade, then the cabinet's update event.
    void configure(ClimateCtrlManager& climate)
    {
        m_facade.setClimateCfg(cabinetParameters());
        climate.update(0);
    }

    ReportRecorder m_recorder;
    ClimateFacade m_facade;
};

// ---- the report ----

TEST_F(ClimateFacadeTest, AfterAPassTheReportScalesTheRegulatorAndEachHotSpotButNotTheScu)
{
    ClimateReport report;
    inCore([&](ClimateCtrlManager& climate) {
        configure(climate);
        climate.addTempSensor(func_type::kScu, 0, 0, 0, 1, 1);
        climate.addTempSensor(func_type::kPsu, 450, -50, 200, 2, 2); // 45.0, cooling gain 0.5, tau 20
        climate.addTempSensor(func_type::kDu, 600, -100, 100, 3, 3); // 60.0, cooling gain 1.0, tau 10
        climate.updateTemperature(1, 286);
        climate.updateTemperature(2, 500);
        climate.updateTemperature(3, 580);
        climate.regulator().regulate();
        m_facade.getClimateReport(&report);
    });
    // The PSU (K 6, KI 4/15) demands 5 x 6 + 1 + 5 x 5 x 4/15 = 37.667, the
    // DU less than the basic 30, which becomes the integral term. Smoothed
    // from 0: 7.533, limited to 30, fan speed 60. The SCU at 28.6 starts the
    // external fans: 50 - 90/44 x (50 - 30) = 9.091, speed 18.
    const Words expected{{
        753333, 30000, 3766667, 909091, // u_f_old, K_I_old, u_f, u_x
        60, 18, 5000, 29,               // U, U_x, T (the PSU's 50.0), scu_temp (28.6 rounds up)
        4000000, 3000000, 5000000,      // u_nom, u_bas, u_max
        500000, 10, 6, 25, 18, 200, 56, // u_x_min, U_x_min, U_x_h, Fan_start, Fan_stop, FlowFactor, U_x_k
        3300000, 3100000, 2,            // u_x_on (6 + 60) / 2, u_x_off 60 / 2 + 1, k_x 90 / 44 in integers
    }};
    EXPECT_EQ(report.words, expected);
    ASSERT_EQ(report.hotSpots.size(), 2u);
    // PSU: ku 0.5 x 50 % = 0.25, K 1.5 / 0.25, KI (4/3) / (0.25 x 20).
    EXPECT_EQ(report.hotSpots[0], (Row{2, 500, 3766667, 50, 4500, 500000, 20000, 6000, 267, 1, 0}));
    // DU, 2 degrees below: e = -200 + 0.5, and its own demand before the
    // limit, -3 - 1/3, both truncated towards zero.
    EXPECT_EQ(report.hotSpots[1], (Row{3, -199, -333332, 100, 6000, 1000000, 10000, 1500, 133, 5, 0}));
}

TEST_F(ClimateFacadeTest, EveryUnitKindHasItsTypeInListOrderAndEachRowTracesItsDeviation)
{
    TraceCapture trace(kClimate + ":7");
    ClimateReport report;
    inCore([&](ClimateCtrlManager& climate) {
        configure(climate);
        const std::uint32_t kinds[] = {func_type::kCbu, func_type::kPsu, func_type::kRax, func_type::kRu,
                                       func_type::kScu, func_type::kTx,  func_type::kDu,  func_type::kBfu};
        for (std::uint32_t id = 1; id <= 8; ++id) climate.addTempSensor(kinds[id - 1], 400, -100, 100, id, 10 + id);
        climate.updateTemperature(1, 412);
        m_facade.getClimateReport(&report);
    });
    auto column = [&report](std::size_t word) {
        Ints values;
        for (const Row& row : report.hotSpots) values.push_back(row[word]);
        return values;
    };
    EXPECT_EQ(column(0), (Ints{11, 12, 13, 14, 16, 17, 18}));
    EXPECT_EQ(column(1), (Ints{120, 0, 0, 0, 0, 0, 0}));
    // A unit without a factor of its own counts at 100; 101 stays.
    EXPECT_EQ(column(3), (Ints{80, 50, 70, 40, 101, 100, 100}));
    EXPECT_EQ(column(9), (Ints{0, 1, 2, 3, 4, 5, -1}));
    EXPECT_EQ(column(10), Ints(7, 0));
    EXPECT_EQ(trace.count(kClimate, 7, "TempDeviation from SetPoint 1.20 = 41.20(temp) - 40.00(setpoint)"), 1u);
    EXPECT_EQ(trace.count("TempDeviation from SetPoint"), 7u) << "one per row, none for the SCU";
}

TEST_F(ClimateFacadeTest, WithoutSensorsTheReportHasNoRowsAndAReusedOneLosesItsOld)
{
    ClimateReport report;
    report.hotSpots.push_back(Row{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7});
    report.words[0] = 7;
    inCore([&](ClimateCtrlManager& climate) {
        configure(climate);
        m_facade.getClimateReport(&report);
    });
    EXPECT_TRUE(report.hotSpots.empty());
    // No pass yet: the regulator's memory as it starts, the integral term 1.
    const Words expected{{0, 1000, 0, 0, 0, 0, 0, 0, 4000000, 3000000, 5000000, 500000, 10, 6, 25, 18, 200, 56,
                          3300000, 3100000, 2}};
    EXPECT_EQ(report.words, expected);
}

// ---- the parameters ----

TEST_F(ClimateFacadeTest, TheParametersReachTheManagerAndTheirDeletionLeavesAnEmptyRecord)
{
    Ints seen;
    inCore([&](ClimateCtrlManager& climate) {
        seen.push_back(static_cast<std::int32_t>(m_facade.getClimateSystem()));
        m_facade.setClimateCfg(cabinetParameters());
        seen.push_back(static_cast<std::int32_t>(m_facade.getClimateSystem()));
        seen.push_back(climate.getClimateCfg().flowFactor);
        m_facade.deleteClimateCfg();
        seen.push_back(static_cast<std::int32_t>(m_facade.getClimateSystem()));
        seen.push_back(climate.getClimateCfg().flowFactor);
        seen.push_back(climate.getClimateCfg().valid ? 1 : 0);
    });
    EXPECT_EQ(seen, (Ints{2, 1, 200, 2, 0, 0}));
}

TEST(ClimateFacadeWithoutManagerTest, NothingIsPassedOnAndTheReportStaysEmpty)
{
    ASSERT_EQ(ClimateCtrlManager::getInstance(), nullptr);
    TraceCapture trace(kClimate + ":7");
    ClimateFacade facade;
    facade.setClimateCfg(cabinetParameters());
    facade.deleteClimateCfg();
    EXPECT_EQ(facade.getClimateSystem(), ClimateCfg::kUnknownClimateSystem);
    ClimateReport report;
    report.hotSpots.push_back(Row{});
    report.words[2] = 7;
    facade.getClimateReport(&report);
    EXPECT_EQ(report.words, Words{});
    EXPECT_TRUE(report.hotSpots.empty());
    EXPECT_EQ(trace.texts(kClimate, 5), (Texts{"setClimateCfg: ClimateCtrlManager is not created",
                                               "deleteClimateCfg: ClimateCtrlManager is not created",
                                               "getClimateSystem: ClimateCtrlManager is not created",
                                               "getClimateReport: ClimateCtrlManager is not created"}));
}

// ---- the periodic report ----

TEST_F(ClimateFacadeTest, ReportsFallDueEveryFiveOrSixtySecondsUntilTheirTimerStops)
{
    TraceCapture trace(kClimate + ":7");
    m_facade.setEventHandler(&m_recorder);
    Ints handles;
    step(100, [&](HWU_Broker&) {
        handles.push_back(m_facade.startAlgorithmParametersReport(1));
        handles.push_back(m_facade.startAlgorithmParametersReport(2));
    });
    step(22000, [&](HWU_Broker&) { m_facade.stopAlgorithmParametersReport(handles.at(0)); });
    runNode(125000);
    EXPECT_EQ(handles, (Ints{1, 2}));
    EXPECT_EQ(m_recorder.m_reports, (Texts{"1 @5100", "1 @10100", "1 @15100", "1 @20100", "2 @60100", "2 @120100"}));
    EXPECT_EQ(trace.texts(kClimate, 7),
              (Texts{"startAlgorithmParametersReport. timer started, timeout = 5000, timer id = 1",
                     "startAlgorithmParametersReport. timer started, timeout = 60000, timer id = 2"}));
}

TEST_F(ClimateFacadeTest, AnUnknownPeriodicityIsTracedAndReportsEveryFiveSecondsOrTracesWithoutAHandler)
{
    TraceCapture trace(kClimate + ":7");
    step(100, [&](HWU_Broker&) { m_facade.startAlgorithmParametersReport(7); });
    step(6000, [&](HWU_Broker&) { m_facade.setEventHandler(&m_recorder); });
    runNode(16000);
    EXPECT_EQ(m_recorder.m_reports, (Texts{"1 @10100", "1 @15100"}));
    EXPECT_EQ(trace.texts(kClimate, 5),
              (Texts{"Unrecognized periodicity value: 7. Cannot map this value to timeout value in ms. Sets timeout "
                     "to 5000ms",
                     "Unable to notify. No Event Handler implementing ClimateEventIf registered."}));
    EXPECT_TRUE(trace.contains("timer started, timeout = 5000, timer id = 1"));
}

// A timer left behind would call a facade that has gone.
TEST_F(ClimateFacadeTest, AFacadeThatGoesTakesItsReportTimersWithIt)
{
    std::unique_ptr<ClimateFacade> facade;
    step(100, [&](HWU_Broker&) {
        facade = std::make_unique<ClimateFacade>();
        facade->setEventHandler(&m_recorder);
        facade->startAlgorithmParametersReport(1);
        facade->startAlgorithmParametersReport(2);
    });
    step(7000, [&](HWU_Broker&) { facade.reset(); });
    runNode(70000);
    EXPECT_EQ(m_recorder.m_reports, Texts{"1 @5100"});
}

} // namespace
