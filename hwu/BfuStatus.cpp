#include "hwu/BfuStatus.h"

#include <algorithm>

namespace {

template <typename Predicate>
bool any(const std::vector<BfuIf*>& bfus, Predicate predicate)
{
    return std::any_of(bfus.begin(), bfus.end(), [&](BfuIf* bfu) { return predicate(*bfu); });
}

// The value over a set, or 999 when the set is empty.
template <typename Value, typename Fold>
float fold(const std::vector<BfuIf*>& bfus, float start, Value value, Fold combine)
{
    if (bfus.empty()) return 999.0F;
    float result = start;
    for (BfuIf* bfu : bfus) result = combine(result, value(*bfu));
    return result;
}

float plus(float a, float b) { return a + b; }
float lower(float a, float b) { return std::min(a, b); }
float higher(float a, float b) { return std::max(a, b); }

} // namespace

std::vector<BfuIf*> BfuStatus::operational() const
{
    std::vector<BfuIf*> found = m_bfus();
    std::erase_if(found, [](BfuIf* bfu) { return !bfu->isAvailable(); });
    return found;
}

std::vector<BfuIf*> BfuStatus::withGoodSensor() const
{
    std::vector<BfuIf*> found = operational();
    std::erase_if(found, [](BfuIf* bfu) { return bfu->isTempSensorFaulty(); });
    return found;
}

std::vector<BfuIf*> BfuStatus::withBattery() const
{
    std::vector<BfuIf*> found = operational();
    std::erase_if(found, [](BfuIf* bfu) { return !bfu->isBatteryPresent(); });
    return found;
}

bool BfuStatus::anyBfuSlowCharging() { return any(operational(), [](BfuIf& b) { return b.isSlowCharging(); }); }
bool BfuStatus::anyBfuOperational() { return !operational().empty(); }
bool BfuStatus::allBfusOperational() { return !any(m_bfus(), [](BfuIf& b) { return !b.isAvailable(); }); }
bool BfuStatus::allTempSensorsOk() { return !any(operational(), [](BfuIf& b) { return b.isTempSensorFaulty(); }); }

float BfuStatus::getBatteryCurrent()
{
    return fold(operational(), 0.0F, [](BfuIf& b) { return b.getBatteryCurrent(); }, plus);
}
float BfuStatus::getLowestCurrent()
{
    return fold(operational(), 100000.0F, [](BfuIf& b) { return b.getBatteryCurrent(); }, lower);
}
float BfuStatus::getHighestCurrent()
{
    return fold(operational(), -100000.0F, [](BfuIf& b) { return b.getBatteryCurrent(); }, higher);
}

float BfuStatus::getAverageTemperature()
{
    const std::vector<BfuIf*> bfus = withGoodSensor();
    const float sum = fold(bfus, 0.0F, [](BfuIf& b) { return b.getBatteryTemperature(); }, plus);
    return bfus.empty() ? kNoValue : sum / static_cast<float>(bfus.size());
}
float BfuStatus::getLowestTemperature()
{
    return fold(withGoodSensor(), 2000.0F, [](BfuIf& b) { return b.getBatteryTemperature(); }, lower);
}
float BfuStatus::getHighestTemperature()
{
    return fold(withGoodSensor(), -2000.0F, [](BfuIf& b) { return b.getBatteryTemperature(); }, higher);
}

bool BfuStatus::anyBfuConnected() { return any(m_bfus(), [](BfuIf& b) { return b.isBatteryConnected(); }); }
bool BfuStatus::allBfusConnected()
{
    const std::vector<BfuIf*> bfus = operational();
    return !bfus.empty() && !any(bfus, [](BfuIf& b) { return !b.isBatteryConnected(); });
}
bool BfuStatus::anyBatteryPresent() { return any(m_bfus(), [](BfuIf& b) { return b.isBatteryPresent(); }); }

float BfuStatus::getBatteryVoltage()
{
    const std::vector<BfuIf*> bfus = withBattery();
    const float sum = fold(bfus, 0.0F, [](BfuIf& b) { return b.getBatteryVoltage(); }, plus);
    return bfus.empty() ? kNoValue : sum / static_cast<float>(bfus.size());
}
float BfuStatus::getLowestBatteryVoltage()
{
    // Numerically lowest, from 0: of negative voltages the one of the
    // largest magnitude.
    return fold(withBattery(), 0.0F, [](BfuIf& b) { return b.getBatteryVoltage(); }, lower);
}

bool BfuStatus::isChargeCurrentHigh(float limit, float* result)
{
    for (BfuIf* bfu : operational()) {
        const float current = bfu->getBatteryCurrent();
        if (current > limit) {
            if (result != nullptr) *result = limit;
            return true;
        }
        if (current > bfu->getCurrentLimit() * 0.96F) {
            if (result != nullptr) *result = bfu->getCurrentLimit();
            return true;
        }
    }
    return false;
}

bool BfuStatus::anyHwFault() { return any(m_bfus(), [](BfuIf& b) { return b.isFaulty(); }); }
bool BfuStatus::anyMainLoadDisconnected()
{
    return any(operational(), [](BfuIf& b) { return b.isMainLoadDisconnected(); });
}
bool BfuStatus::anyBatteryOverTemperature()
{
    return any(withGoodSensor(), [](BfuIf& b) { return b.isBatteryOverTemperature(); });
}
bool BfuStatus::anyCircuitBreakerFault() { return any(m_bfus(), [](BfuIf& b) { return b.isCircuitBreakerFault(); }); }
bool BfuStatus::anyExtFlag12Clear()
{
    return any(operational(), [](BfuIf& b) { return b.hasLoadControl() && b.isExtFlag12Clear(); });
}

bool BfuStatus::isBatteryVoltageBelowLimits()
{
    // The limit comes in hundredths of a volt, the voltage in volts: the
    // limit is brought to volts before the numeric comparison.
    const float lowest = getLowestBatteryVoltage();
    return !any(operational(), [lowest](BfuIf& b) {
        return lowest >= static_cast<float>(b.getVoltageLimit()) / 100.0F;
    });
}

bool BfuStatus::allBfusHaveVoltageConnect()
{
    return !any(m_bfus(), [](BfuIf& b) { return !b.hasVoltageConnect(); });
}

bool BfuStatus::isDischargeOverload()
{
    return any(operational(), [](BfuIf& b) { return b.getBatteryCurrent() < -0.96F * b.getCurrentLimit(); });
}
