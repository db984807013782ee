#include "climate/TemperatureRegulator.h"

#include "climate/ClimateCfg.h"
#include "climate/ClimateConfigurationIf.h"
#include "climate/ClimateRegulationIf.h"
#include "climate/TempSensorList.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "ose/Format.h"

using namespace ssc_trace;

namespace {

std::string text(float value) { return ose::floatToString(value); }

// A divisor of 0 from a configuration that was never filled counts as 1, so
// that no pass divides by zero.
float divisor(float value) { return value != 0.0f ? value : 1.0f; }

} // namespace

TemperatureRegulator::TemperatureRegulator(ClimateRegulationIf* regulation, ClimateConfigurationIf* configuration)
    : m_pRegulation(regulation), m_pConfiguration(configuration)
{
}

void TemperatureRegulator::updateFanParameters()
{
    const ClimateCfg& cfg = m_pConfiguration->getClimateCfg();
    if (cfg.flowFactor != 0) {
        m_flowFactor = static_cast<float>(cfg.flowFactor) / 100.0f;
    } else {
        m_flowFactor = 1.0f;
        SSC_TRACE(climateGroup(), kError, "updateFanParameters: Climate control not possible, flow factor set to %d",
                  cfg.flowFactor);
    }
    m_nominalAirflow = static_cast<float>(cfg.nominalFanSpeed) / m_flowFactor;
    m_basicAirflow = static_cast<float>(m_basicFanSpeed) / m_flowFactor;
    m_maxAirflow = 100.0f / m_flowFactor;
}

void TemperatureRegulator::useBasicFanSpeed()
{
    m_basicFanSpeed = m_pConfiguration->getClimateCfg().basicFanSpeed;
    m_basicAirflow = static_cast<float>(m_basicFanSpeed) / divisor(m_flowFactor);
}

void TemperatureRegulator::useMissingNodeFanSpeed()
{
    m_basicFanSpeed = m_pConfiguration->getClimateCfg().missingNodeBasicFanSpeed;
    m_basicAirflow = static_cast<float>(m_basicFanSpeed) / divisor(m_flowFactor);
}

float TemperatureRegulator::minExternalAirflow() const
{
    return static_cast<float>(m_pConfiguration->getClimateCfg().minimumExternalFanSpeed) / divisor(m_flowFactor);
}

// All sensors share one integral term: each starts from the highest integral
// of the pass before, and the highest of this pass is kept for the next.
void TemperatureRegulator::getMaxAirflowFromSensors(float* maxDemand, float* scuTemp)
{
    *maxDemand = 0.0f;
    *scuTemp = 0.0f;
    float highestIntegral = 0.0f;
    float integral = 0.0f;
    float demand = 0.0f;
    bool anyCurrentSensor = false;
    m_pConfiguration->getTempSensorList().forEach([&](TempSensorElement& sensor) {
        const float temp = sensor.temperature();
        const char* unit = func_type::text(sensor.funcType());
        const int id = static_cast<int>(sensor.id());
        if (sensor.funcType() == func_type::kScu) {
            if (!sensor.updated()) {
                *scuTemp = m_scuTemperature;
            } else if (sensor.isValid()) {
                *scuTemp = temp;
            } else {
                *scuTemp = kScuInvalid;
                SSC_TRACE(climateGroup(), kFlow, "SCU temperature sensor not valid");
            }
            return;
        }
        // Only the low 8 bits of the age count.
        const std::uint32_t age = sensor.checkAge() & 0xFFU;
        if (age == 1 || age == 2) {
            integral = m_integralPressure;
            demand = highestIntegral;
            SSC_TRACE(climateGroup(), kFlow, "TempSensor on %s with ID %d has old temperature. Previous airflow requested.",
                      unit, id);
        } else if (age >= 3) {
            demand = m_nominalAirflow;
            SSC_TRACE(climateGroup(), kFlow, "TempSensor on %s with ID %d has old temperature. Nominal airflow requested.",
                      unit, id);
        } else if (temp >= sensor.minTemp() && temp <= sensor.maxTemp()) {
            SSC_TRACE(climateGroup(), kFlow, "TempSensor on %s with ID %d (%s[C]) is valid for regulation", unit, id,
                      text(temp).c_str());
            const float dev = sensor.calcTempDeviation();
            integral = sensor.calcIntegralPressure(dev, kSampleTimeS, m_integralPressure);
            demand = sensor.calcAirFlowDemand(integral, dev);
            SSC_TRACE(climateGroup(), kFlow, "TempSensor on %s with ID %d: Resulting air flow demand = %s", unit, id,
                      text(demand).c_str());
            anyCurrentSensor = true;
        } else {
            SSC_TRACE(climateGroup(), kFlow,
                      "TempSensor on %s with ID %d temp is abnormal (%s[C]). Not involved in regulation.", unit, id,
                      text(temp).c_str());
            anyCurrentSensor = true;
        }
        // The limits also keep the integral from winding up.
        if (demand < m_basicAirflow) integral = demand = m_basicAirflow;
        if (demand > m_maxAirflow) integral = demand = m_maxAirflow;
        if (integral > highestIntegral) highestIntegral = integral;
        if (demand > *maxDemand) {
            *maxDemand = demand;
            m_highestDemandTemp = temp;
        }
    });
    if (!anyCurrentSensor) *maxDemand = highestIntegral = m_nominalAirflow;
    SSC_TRACE(climateGroup(), kFlow, "Climate regulation result: Highest air flow = %s, nominal = %s, basic = %s, max = %s",
              text(*maxDemand).c_str(), text(m_nominalAirflow).c_str(), text(m_basicAirflow).c_str(),
              text(m_maxAirflow).c_str());
    m_integralPressure = highestIntegral;
}

void TemperatureRegulator::regulate()
{
    float demand = 0.0f;
    float scuTemp = 0.0f;
    getMaxAirflowFromSensors(&demand, &scuTemp);
    SSC_TRACE(climateGroup(), kFlow, "Max primary air flow demand: %s", text(demand).c_str());
    m_pRegulation->getMaxAirflowDemand(&demand);
    SSC_TRACE(climateGroup(), kFlow, "Max air flow demand after checking with secondaries: %s", text(demand).c_str());
    m_maxAirflowDemand = demand;
    m_scuTemperature = scuTemp;
    calculateInternalFanSpeed(&demand);
    calculateExternalFanSpeed(scuTemp, demand);
    m_pRegulation->setFanSpeeds(m_internalFanSpeed, m_externalFanSpeed);
}

void TemperatureRegulator::reportAirflowDemand()
{
    float demand = 0.0f;
    float scuTemp = 0.0f;
    getMaxAirflowFromSensors(&demand, &scuTemp);
    m_maxAirflowDemand = demand;
    m_pRegulation->sendAirflowDemand(demand);
}

std::int32_t TemperatureRegulator::fanSpeedOf(float airflow, float flowFactor)
{
    const float speed = airflow * flowFactor;
    return static_cast<std::int32_t>(static_cast<double>(speed) + 0.5);
}

// The filter remembers the unlimited value: the fan speed leaves a limit
// only once the filtered air flow has crossed it.
void TemperatureRegulator::calculateInternalFanSpeed(float* airflow)
{
    const float newAirflow = *airflow;
    float filtered = m_PreviousAirflow + (newAirflow - m_PreviousAirflow) / 5.0f;
    SSC_TRACE(climateGroup(), kFlow,
              "New air flow with smoothing filter (%s):  m_PreviousAirflow(%s) + ((newAirflow(%s) - m_PreviousAirflow)/5",
              text(filtered).c_str(), text(m_PreviousAirflow).c_str(), text(newAirflow).c_str());
    m_PreviousAirflow = filtered;
    SSC_TRACE(climateGroup(), kFlow, "Saving uf in uf_old: %s", text(m_PreviousAirflow).c_str());
    if (filtered <= m_basicAirflow) {
        SSC_TRACE(climateGroup(), kFlow, "Requested air flow (%s) is below limit = %s", text(filtered).c_str(),
                  text(m_basicAirflow).c_str());
        filtered = m_basicAirflow;
    }
    if (filtered >= m_maxAirflow) {
        SSC_TRACE(climateGroup(), kFlow, "Requested air flow (%s) is above allowed limit = %s", text(filtered).c_str(),
                  text(m_maxAirflow).c_str());
        filtered = m_maxAirflow;
    }
    m_internalFanSpeed = fanSpeedOf(filtered, m_flowFactor);
    *airflow = filtered;
    SSC_TRACE(climateGroup(), kFlow, "calculated internal fan speed=%d", m_internalFanSpeed);
}

void TemperatureRegulator::calculateExternalFanSpeed(float scuTemp, float airflow)
{
    const ClimateCfg& cfg = m_pConfiguration->getClimateCfg();
    if (scuTemp == kScuInvalid || scuTemp == kNotAvailable) {
        m_externalFanSpeed = cfg.extFanSpeedFault;
        return;
    }
    if (!cfg.anyExternalFanGroup()) {
        m_externalFanSpeed = 0;
        m_externalAirflow = 0.0f;
        return;
    }
    const float fromInternal = externalAirflowFromInternal(cfg, airflow, scuTemp, m_externalAirflow);
    float fromScu = 0.0f;
    if (cfg.climateControlMode == 1) {
        fromScu = externalAirflowFromScuTemperature(cfg, scuTemp, m_externalAirflow);
        if (fromScu < fromInternal)
            SSC_TRACE(climateGroup(), kFlow, "External air flow demand is set by internal airflow");
        else
            SSC_TRACE(climateGroup(), kFlow, "External air flow demand is set by SCU temp");
    }
    const float external = fromScu > fromInternal ? fromScu : fromInternal;
    m_externalAirflow = m_previousExternalAirflow = external;
    m_externalFanSpeed = fanSpeedOf(external, m_flowFactor);
    SSC_TRACE(climateGroup(), kFlow, "calculated external fan speed=%d", m_externalFanSpeed);
}

float TemperatureRegulator::externalAirflowFromInternal(const ClimateCfg& cfg, float airflow, float scuTemp,
                                                        float previous)
{
    const float flowFactorPercent = divisor(static_cast<float>(cfg.flowFactor) / 100.0f);
    const auto basic = static_cast<float>(m_basicFanSpeed);
    float result = previous;
    if (previous > 0.0f) {
        if (airflow < basic / flowFactorPercent + 1.0f && scuTemp <= static_cast<float>(cfg.externalFanStopTemp))
            result = 0.0f;
    } else if (airflow > (static_cast<float>(cfg.hysteresis) + basic) / flowFactorPercent ||
               scuTemp >= static_cast<float>(cfg.externalFanStartTemp)) {
        result = airflow;
    }
    if (cfg.startingPoint == 0) {
        SSC_TRACE(climateGroup(), kFlow, "Starting point = 0 indicating no external fans");
    } else if (result > 0.0f) {
        // Above the starting point the external fans follow the internal ones
        // on a line that reaches full speed together with them. A starting
        // point of 100 counts as 99, so that the line has a slope.
        const float minExternal = minExternalAirflow();
        const float maxFlow = 100.0f / divisor(m_flowFactor);
        const std::int32_t startingPoint = cfg.startingPoint == 100 ? 99 : cfg.startingPoint;
        const float slope = static_cast<float>(100 - cfg.minimumExternalFanSpeed) / static_cast<float>(100 - startingPoint);
        result = maxFlow - slope * (maxFlow - airflow);
        if (result < minExternal) result = minExternal;
    }
    SSC_TRACE(climateGroup(), kFlow, "External air flow demand from internal airflow = %s", text(result).c_str());
    return result;
}

float TemperatureRegulator::externalAirflowFromScuTemperature(const ClimateCfg& cfg, float scuTemp, float previous) const
{
    const float minExternal = minExternalAirflow();
    const float maxFlow = 100.0f / divisor(m_flowFactor);
    const auto stopTemp = static_cast<float>(cfg.externalFanStopTemp);
    const auto rampUpTemp = static_cast<float>(cfg.externalFanRampUpTemp);
    const auto maxTemp = static_cast<float>(cfg.externalFanMaxTemp);
    float result = previous;
    if (previous <= 0.0f) {
        if (scuTemp >= static_cast<float>(cfg.externalFanStartTemp)) result = minExternal;
    } else {
        if (scuTemp <= stopTemp) {
            result = 0.0f;
            SSC_TRACE(climateGroup(), kFlow, "getExternalFanSpeedFromScuTemperature: turn off external fan");
        }
        if (scuTemp > stopTemp && scuTemp < rampUpTemp) {
            result = minExternal;
            SSC_TRACE(climateGroup(), kFlow, "getExternalFanSpeedFromScuTemperature: set external fan to min");
        }
        if (scuTemp >= rampUpTemp && scuTemp <= maxTemp) {
            SSC_TRACE(climateGroup(), kFlow, "getExternalFanSpeedFromScuTemperature: ramp up external fan");
            // A ramp without width is a step to full speed.
            float target = maxFlow;
            if (maxTemp != rampUpTemp) {
                const float k = (maxFlow - minExternal) / (maxTemp - rampUpTemp);
                target = (maxFlow - k * maxTemp) + k * scuTemp;
            }
            result = m_previousExternalAirflow + (target - m_previousExternalAirflow) / 5.0f;
        }
        if (scuTemp > maxTemp) {
            result = maxFlow;
            SSC_TRACE(climateGroup(), kFlow, "getExternalFanSpeedFromScuTemperature: set external fan to max");
        }
    }
    SSC_TRACE(climateGroup(), kFlow, "External air flow demand from SCU temp = %s", text(result).c_str());
    return result;
}

void TemperatureRegulator::getExternalFanThresholds(float* start, float* stop, std::int32_t* slope)
{
    const ClimateCfg& cfg = m_pConfiguration->getClimateCfg();
    std::int32_t flowFactor = cfg.flowFactor;
    if (flowFactor == 0) {
        flowFactor = 1;
        if (cfg.valid) SSC_TRACE(climateGroup(), kError, "Flow factor is NA (= 0).");
        else SSC_TRACE(climateGroup(), kFlow, "No cabinet available");
    }
    const float flow = static_cast<float>(flowFactor) / 100.0f;
    *start = (static_cast<float>(cfg.hysteresis) + static_cast<float>(m_basicFanSpeed)) / flow;
    *stop = static_cast<float>(m_basicFanSpeed) / flow + 1.0f;
    std::int32_t startingPoint = cfg.startingPoint;
    if (startingPoint == 100) {
        startingPoint = 99;
        SSC_TRACE(climateGroup(), kError, "Starting point out of range (= 100).");
    }
    *slope = (100 - cfg.minimumExternalFanSpeed) / (100 - startingPoint);
}
