#include "climate/ClimateFacade.h"

#include "climate/ClimateCtrlManager.h"
#include "climate/ClimateEventIf.h"
#include "climate/TempSensorList.h"
#include "climate/TemperatureRegulator.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"

#include <cmath>

using namespace ssc_trace;

namespace {

constexpr double kAirflowScale = 100000.0;
constexpr double kGainScale = 1000.0;
constexpr double kTemperatureScale = 100.0;
// The cooling gain over 100 is a small number (-0.5 for a gain of 50): a
// scale below 1 would leave nothing of it, so the word keeps six decimals.
// The largest 16-bit gain, 327.67, still fits.
constexpr double kCoolingGainScale = 1000000.0;

// The largest magnitude a word takes; the negative end stays clear of
// -2147483648, which means "not set".
constexpr double kWordLimit = 2147483647.0;

// A double that does not fit the word would be undefined to cast: it
// saturates, and a value that is no number becomes 0.
std::int32_t truncated(double value)
{
    if (std::isnan(value)) return 0;
    if (value >= kWordLimit) return static_cast<std::int32_t>(kWordLimit);
    if (value <= -kWordLimit) return -static_cast<std::int32_t>(kWordLimit);
    return static_cast<std::int32_t>(value);
}

std::int32_t scaled(float value, double scale) { return truncated(static_cast<double>(value) * scale + 0.5); }

void fillRegulatorWords(TemperatureRegulator& regulator, const ClimateCfg& cfg, ClimateReport& report)
{
    float fanStart = 0.0f;
    float fanStop = 0.0f;
    std::int32_t slope = 0;
    regulator.getExternalFanThresholds(&fanStart, &fanStop, &slope);
    report.words = {{
        scaled(regulator.previousAirflow(), kAirflowScale),       // u_f_old
        scaled(regulator.integralPressure(), kGainScale),         // K_I_old
        scaled(regulator.maxAirflowDemand(), kAirflowScale),      // u_f
        scaled(regulator.externalAirflow(), kAirflowScale),       // u_x
        regulator.internalFanSpeed(),                             // U
        regulator.externalFanSpeed(),                             // U_x
        scaled(regulator.highestDemandTemp(), kTemperatureScale), // T
        scaled(regulator.scuTemperature(), 1.0),                  // scu_temp
        scaled(regulator.nominalAirflow(), kAirflowScale),        // u_nom
        scaled(regulator.basicAirflow(), kAirflowScale),          // u_bas
        scaled(regulator.maxAirflow(), kAirflowScale),            // u_max
        scaled(regulator.minExternalAirflow(), kAirflowScale),    // u_x_min
        cfg.minimumExternalFanSpeed,                              // U_x_min
        cfg.hysteresis,                                           // U_x_h
        cfg.externalFanStartTemp,                                 // Fan_start
        cfg.externalFanStopTemp,                                  // Fan_stop
        cfg.flowFactor,                                           // FlowFactor
        cfg.startingPoint,                                        // U_x_k
        scaled(fanStart, kAirflowScale),                          // u_x_on
        scaled(fanStop, kAirflowScale),                           // u_x_off
        slope,                                                    // k_x
    }};
}

// The deviation comes from the sensor itself, which traces it as a regulation
// pass does; the demand is the sensor's own, before the regulator's limits.
std::array<std::int32_t, ClimateReport::kRowWords> hotSpotOf(TempSensorElement& sensor)
{
    return {{
        static_cast<std::int32_t>(sensor.hwId()),                    // i_h
        scaled(sensor.calcTempDeviation(), kTemperatureScale),       // e
        scaled(sensor.airFlowDemand(), kAirflowScale),               // u
        truncated(sensor.unitPlacement()),                           // UnitPlace
        scaled(sensor.setPoint(), kTemperatureScale),                // T_r
        scaled(sensor.tempChangePressureDrop(), kCoolingGainScale),  // u_I
        scaled(sensor.timeConstChangePressureDrop(), kGainScale),    // Tau
        scaled(sensor.k(), kGainScale),                              // K
        scaled(sensor.ki(), kGainScale),                             // K_I
        sensor.placementIndex(),                                     // UnitType: numbered as the placement factors
        0,                                                           // UnitSlotPosition
    }};
}

// The SCU's sensor only steers the external fans; it has no hot spot.
void fillHotSpots(TempSensorList& sensors, ClimateReport& report)
{
    sensors.forEach([&report](TempSensorElement& sensor) {
        if (sensor.funcType() != func_type::kScu) report.hotSpots.push_back(hotSpotOf(sensor));
    });
}

ClimateCtrlManager* managerFor(const char* operation)
{
    ClimateCtrlManager* manager = ClimateCtrlManager::getInstance();
    if (manager == nullptr) SSC_TRACE(climateGroup(), kUnexpected, "%s: ClimateCtrlManager is not created", operation);
    return manager;
}

std::uint32_t reportPeriodOf(std::uint32_t periodicity)
{
    switch (periodicity) {
    case 1: return ClimateFacade::kFastReportMs;
    case 2: return ClimateFacade::kSlowReportMs;
    default:
        SSC_TRACE(climateGroup(), kUnexpected,
                  "Unrecognized periodicity value: %d. Cannot map this value to timeout value in ms. Sets timeout to "
                  "5000ms",
                  static_cast<int>(periodicity));
        return ClimateFacade::kFastReportMs;
    }
}

} // namespace

ClimateFacade::~ClimateFacade() { TimerService::stopAllTimers(this); }

void ClimateFacade::setClimateCfg(const ClimateCfg& cfg)
{
    if (ClimateCtrlManager* manager = managerFor("setClimateCfg")) manager->setClimateCfg(cfg);
}

void ClimateFacade::deleteClimateCfg()
{
    if (ClimateCtrlManager* manager = managerFor("deleteClimateCfg")) manager->setClimateCfg(ClimateCfg{});
}

// Without a manager the climate system is as unknown as before any
// parameters came.
std::uint32_t ClimateFacade::getClimateSystem()
{
    ClimateCtrlManager* manager = managerFor("getClimateSystem");
    return manager != nullptr ? manager->getClimateCfg().climateSystem : ClimateCfg::kUnknownClimateSystem;
}

// The report is rebuilt whole, so that a reused one carries no rows of
// sensors that have gone.
void ClimateFacade::getClimateReport(ClimateReport* report)
{
    if (report == nullptr) return;
    *report = ClimateReport{};
    ClimateCtrlManager* manager = managerFor("getClimateReport");
    if (manager == nullptr) return;
    fillRegulatorWords(manager->regulator(), manager->getClimateCfg(), *report);
    fillHotSpots(manager->getTempSensorList(), *report);
}

std::int32_t ClimateFacade::startAlgorithmParametersReport(std::uint32_t periodicity)
{
    const std::uint32_t timeoutMs = reportPeriodOf(periodicity);
    ++m_timerHandle;
    SSC_TRACE(climateGroup(), kFlow, "startAlgorithmParametersReport. timer started, timeout = %d, timer id = %d",
              static_cast<int>(timeoutMs), static_cast<int>(m_timerHandle));
    TimerService::startCyclicTimer(timeoutMs, kReportTimer, this, static_cast<std::uint32_t>(m_timerHandle));
    return m_timerHandle;
}

void ClimateFacade::stopAlgorithmParametersReport(std::int32_t handle)
{
    TimerService::stopTimer(kReportTimer, this, static_cast<std::uint32_t>(handle));
}

void ClimateFacade::timeout(TimerId timerId)
{
    if (timerId.timerType != kReportTimer) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected,
                  "Unable to notify. No Event Handler implementing ClimateEventIf registered.");
        return;
    }
    m_pEventHandler->climateReport(static_cast<std::int32_t>(timerId.argument));
}
