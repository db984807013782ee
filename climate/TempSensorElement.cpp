#include "climate/TempSensorElement.h"

#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "ose/Format.h"

#include <bit>

using namespace ssc_trace;

namespace {

// 4/3 as the nearest single-precision float.
constexpr float kFourThirds = std::bit_cast<float>(0x3FAAAAABU);

std::string text(float value) { return ose::floatToString(value); }

} // namespace

TempSensorElement::TempSensorElement(std::int32_t setPointTenths, std::int16_t coolingGain, std::int16_t timeConstant,
                                     std::int32_t placement, std::uint32_t id, std::uint32_t hwId,
                                     std::uint32_t funcType)
    : m_temperature(static_cast<float>(setPointTenths) / 10.0f),
      m_setPoint(m_temperature),
      m_tempChangePressureDrop((0.0f - static_cast<float>(coolingGain)) / 100.0f),
      m_timeConstChangePressureDrop(static_cast<float>(timeConstant) / 10.0f),
      m_id(id),
      m_hwId(hwId),
      m_funcType(funcType)
{
    // A gain or time constant of 0 would divide by zero in the gains.
    if (m_tempChangePressureDrop == 0.0f) m_tempChangePressureDrop = -0.1f;
    if (m_timeConstChangePressureDrop == 0.0f) m_timeConstChangePressureDrop = 0.1f;
    updatePlacementFactor(placement);
}

bool TempSensorElement::isValid() const { return m_valid && m_unitPlacement != kNotInHotSpot && !m_sensorFault; }

std::uint32_t TempSensorElement::checkAge()
{
    if (isValid()) m_age = 0;
    else ++m_age;
    return m_age;
}

float TempSensorElement::calcTempDeviation()
{
    m_tempDev = m_temperature - m_setPoint;
    SSC_TRACE(climateGroup(), kFlow, "TempDeviation from SetPoint %s = %s(temp) - %s(setpoint)", text(m_tempDev).c_str(),
              text(m_temperature).c_str(), text(m_setPoint).c_str());
    return m_tempDev;
}

float TempSensorElement::calcIntegralPressure(float dev, std::int32_t sampleTime, float previous) const
{
    const float integral = previous + (static_cast<float>(sampleTime) * m_ki) * dev;
    SSC_TRACE(climateGroup(), kFlow, "IntegralPressure %s(uI) = %s(KI_old) + (%s(KI) * %d(sampletime) * %s(tempdev))",
              text(integral).c_str(), text(previous).c_str(), text(m_ki).c_str(), sampleTime, text(dev).c_str());
    return integral;
}

float TempSensorElement::calcAirFlowDemand(float integral, float dev)
{
    m_airFlowDemand = (dev * m_k) + integral;
    SSC_TRACE(climateGroup(), kFlow, "AirFlowDemand %s(u) = (%s(K) * %s(tempdev)) + %s(uI)",
              text(m_airFlowDemand).c_str(), text(m_k).c_str(), text(dev).c_str(), text(integral).c_str());
    return m_airFlowDemand;
}

void TempSensorElement::updatePlacementFactor(std::int32_t factor)
{
    m_unitPlacement = static_cast<float>(factor);
    const bool scu = m_funcType == func_type::kScu;
    if (!scu && m_unitPlacement != kNotInHotSpot && (factor <= 0 || factor > 100)) m_unitPlacement = 100.0f;
    m_ku = (m_unitPlacement / 100.0f) * m_tempChangePressureDrop;
    m_k = 1.5f / m_ku;
    m_ki = kFourThirds / (m_ku * m_timeConstChangePressureDrop);
    if (!scu) traceGains();
}

void TempSensorElement::traceGains() const
{
    SSC_TRACE(climateGroup(), kFlow, "Unit placement factor is updated according to cabinet parameters:");
    if (m_unitPlacement == kNotInHotSpot) {
        SSC_TRACE(climateGroup(), kFlow, "\tTemp sensor not allowed to participate in hot spot algorithm");
        return;
    }
    SSC_TRACE(climateGroup(), kFlow, "\tuI  = %s = TempChangePressureDrop (config as cooling gain) * -1 / 100",
              text(m_tempChangePressureDrop).c_str());
    SSC_TRACE(climateGroup(), kFlow, "\ttau = %s = TimeConstChangePressureDrop (config as timeConstant) / 10",
              text(m_timeConstChangePressureDrop).c_str());
    SSC_TRACE(climateGroup(), kFlow, "\tku  = %s = unitplace(%s) * uI / 100", text(m_ku).c_str(),
              text(m_unitPlacement).c_str());
    SSC_TRACE(climateGroup(), kFlow, "\tK   = %s = (3/2) / (ku)", text(m_k).c_str());
    SSC_TRACE(climateGroup(), kFlow, "\tKI  = %s = (4/3) / (tau * ku)", text(m_ki).c_str());
}

std::int32_t TempSensorElement::placementIndex() const
{
    switch (m_funcType) {
    case func_type::kCbu: return 0;
    case func_type::kPsu: return 1;
    case func_type::kRax: return 2;
    case func_type::kRu: return 3;
    case func_type::kTx: return 4;
    case func_type::kDu: return 5;
    default: return -1;
    }
}
