#pragma once
// The arithmetic of the climate regulation, one pass every five seconds: the
// highest air flow demand of the cabinet's hot-spot sensors, raised to the
// secondary nodes' demand, smoothed and limited, becomes the internal fan
// speed; the external fan speed follows from that air flow and from the SCU
// temperature. Air flow is fan speed over the flow factor. Single precision
// throughout, double only where air flow becomes a fan speed.

#include <cstdint>

class ClimateConfigurationIf;
class ClimateRegulationIf;
struct ClimateCfg;

class TemperatureRegulator {
public:
    static constexpr std::int32_t kSampleTimeS = 5;
    static constexpr float kScuInvalid = -127.0f;
    static constexpr float kNotAvailable = 999.0f;

    TemperatureRegulator(ClimateRegulationIf* regulation, ClimateConfigurationIf* configuration);

    // One pass on the primary node: fan speeds out.
    void regulate();
    // One pass on a node that is not primary: its demand to the primary.
    void reportAirflowDemand();
    void updateFanParameters();
    void useBasicFanSpeed();
    void useMissingNodeFanSpeed();
    // For the climate report: the air flows where the external fan starts
    // and stops, and the slope of its line.
    void getExternalFanThresholds(float* start, float* stop, std::int32_t* slope);

    float previousAirflow() const { return m_PreviousAirflow; }
    void setPreviousAirflow(float airflow) { m_PreviousAirflow = airflow; }
    float integralPressure() const { return m_integralPressure; }
    float maxAirflowDemand() const { return m_maxAirflowDemand; }
    float externalAirflow() const { return m_externalAirflow; }
    std::int32_t internalFanSpeed() const { return m_internalFanSpeed; }
    std::int32_t externalFanSpeed() const { return m_externalFanSpeed; }
    float highestDemandTemp() const { return m_highestDemandTemp; }
    float scuTemperature() const { return m_scuTemperature; }
    float flowFactor() const { return m_flowFactor; }
    float nominalAirflow() const { return m_nominalAirflow; }
    float basicAirflow() const { return m_basicAirflow; }
    float maxAirflow() const { return m_maxAirflow; }
    float minExternalAirflow() const;
    std::int32_t basicFanSpeed() const { return m_basicFanSpeed; }

private:
    void getMaxAirflowFromSensors(float* maxDemand, float* scuTemp);
    // Filtered and limited; leaves the limited air flow in `*airflow`.
    void calculateInternalFanSpeed(float* airflow);
    void calculateExternalFanSpeed(float scuTemp, float airflow);
    float externalAirflowFromInternal(const ClimateCfg& cfg, float airflow, float scuTemp, float previous);
    float externalAirflowFromScuTemperature(const ClimateCfg& cfg, float scuTemp, float previous) const;
    static std::int32_t fanSpeedOf(float airflow, float flowFactor);

    ClimateRegulationIf* m_pRegulation;
    ClimateConfigurationIf* m_pConfiguration;
    std::int32_t m_internalFanSpeed = 0;
    std::int32_t m_externalFanSpeed = 0;
    float m_externalAirflow = 0.0f;
    float m_scuTemperature = 0.0f;
    float m_integralPressure = 1.0f;
    float m_flowFactor = 0.0f;
    float m_nominalAirflow = 0.0f;
    float m_basicAirflow = 0.0f;
    float m_maxAirflow = 0.0f;
    float m_highestDemandTemp = 0.0f;
    float m_maxAirflowDemand = 0.0f;
    std::int32_t m_basicFanSpeed = 0;
    float m_PreviousAirflow = 0.0f;
    float m_previousExternalAirflow = 0.0f;
};
