#pragma once
// Switches the system voltage control between voltage regulation, where a
// common offset moves the bus towards the wanted voltage, and active load
// sharing, where that offset stands still and each PSU gets a small offset
// of its own that evens the loads out.

#include <cstdint>

class BatteryChargerIf;
class FaultsRegisterIf;
class HwuBrokerIf;

class LoadSharing {
public:
    static constexpr float kEnterDeviation = 0.03F;
    static constexpr float kLeaveDeviation = 0.05F;
    static constexpr float kMinimumAverageLoad = 10.0F;
    static constexpr float kUnloaded = 3.0F;
    static constexpr float kBalanceBand = 3.0F;
    static constexpr float kGain = 2000.0F; // watts per volt of offset
    static constexpr float kOffsetLimit = 0.75F;

    // The charger may be NIL: then no charging type stops load sharing.
    LoadSharing(HwuBrokerIf* broker, BatteryChargerIf* charger, FaultsRegisterIf* faults);

    bool isActive() const { return m_loadSharingActive; }
    // `deviation` is |wanted| - |system| in volts; true when the voltage
    // control must leave its common offset alone.
    bool checkRegulationMode(float deviation);
    void balanceLoads();
    // Voltage regulation again, and no PSU keeps an offset.
    void reset();
    void setCharger(BatteryChargerIf* charger) { m_pCharger = charger; }

private:
    float averageLoad() const;
    // The reasons beyond deviation and load that end load sharing; only
    // looked at with two BFUs or more.
    bool batterySideForbidsSharing();
    void stopSharing();

    HwuBrokerIf* m_pBroker;
    BatteryChargerIf* m_pCharger;
    bool m_loadSharingActive = false;
    FaultsRegisterIf* m_pFaults;
};
