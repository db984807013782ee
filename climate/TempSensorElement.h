#pragma once
// One temperature sensor of the climate regulation, with its own PI
// controller: from its set point, the unit's cooling gain and time constant
// and the unit's placement factor it derives the gains K and KI, and turns a
// temperature deviation into an air flow demand. All arithmetic is single
// precision.

#include <cstdint>

class TempSensorElement {
public:
    // A placement factor that keeps the sensor out of the hot-spot algorithm.
    static constexpr float kNotInHotSpot = 101.0f;
    // The sensor signal's not-available value, -32768, after its division by 10.
    static constexpr std::int32_t kUndefinedTenths = -3276;

    // The set point in tenths of a degree, the cooling gain times 100, the
    // time constant times 10.
    TempSensorElement(std::int32_t setPointTenths, std::int16_t coolingGain, std::int16_t timeConstant,
                      std::int32_t placement, std::uint32_t id, std::uint32_t hwId, std::uint32_t funcType);

    void setTemperature(std::int32_t tenths) { m_temperature = static_cast<float>(tenths) / 10.0f; }
    void setUpdated(bool updated) { m_updated = updated; }
    void setValid(bool valid) { m_valid = valid; }
    void setSensorFault(bool fault) { m_sensorFault = fault; }

    // Delivered in the last supervision period, in the hot-spot algorithm,
    // and not reported faulty by its unit.
    bool isValid() const;
    // One regulation pass: 0 when usable, else one older. Returns the age.
    std::uint32_t checkAge();
    float calcTempDeviation();
    float calcIntegralPressure(float dev, std::int32_t sampleTime, float previous) const;
    float calcAirFlowDemand(float integral, float dev);
    void updatePlacementFactor(std::int32_t factor);
    // The unit's place among the cabinet parameters' placement factors; -1
    // for a unit without one.
    std::int32_t placementIndex() const;

    float temperature() const { return m_temperature; }
    bool updated() const { return m_updated; }
    float setPoint() const { return m_setPoint; }
    float ku() const { return m_ku; }
    float k() const { return m_k; }
    float ki() const { return m_ki; }
    float tempDev() const { return m_tempDev; }
    float minTemp() const { return m_minTemp; }
    float maxTemp() const { return m_maxTemp; }
    bool valid() const { return m_valid; }
    float airFlowDemand() const { return m_airFlowDemand; }
    std::uint32_t age() const { return m_age; }
    float unitPlacement() const { return m_unitPlacement; }
    float tempChangePressureDrop() const { return m_tempChangePressureDrop; }
    float timeConstChangePressureDrop() const { return m_timeConstChangePressureDrop; }
    bool sensorFault() const { return m_sensorFault; }
    std::uint32_t id() const { return m_id; }
    std::uint32_t hwId() const { return m_hwId; }
    std::uint32_t funcType() const { return m_funcType; }

private:
    void traceGains() const;

    float m_temperature;
    bool m_updated = false;
    float m_setPoint;
    float m_ku = 0.0f;
    float m_k = 0.0f;
    float m_ki = 0.0f;
    float m_tempDev = 0.0f;
    float m_minTemp = -550.0f;
    float m_maxTemp = 1250.0f;
    bool m_valid = false;
    float m_airFlowDemand = 0.0f;
    std::uint32_t m_age = 0;
    float m_unitPlacement = 0.0f;
    float m_tempChangePressureDrop;
    float m_timeConstChangePressureDrop;
    bool m_sensorFault = false;
    std::uint32_t m_id;
    std::uint32_t m_hwId;
    std::uint32_t m_funcType;
};
