#pragma once
// The cabinet's DC system as magnitudes (volts positive here; the units put
// the sign of the -48 V system on): PSUs that hold a set point with a droop
// up to a current limit while mains is present, a constant-power load behind
// an undervoltage disconnect, and one battery string on a contactor. Each
// step finds the bus voltage where the sources carry the load, then moves
// the battery's charge. Deterministic: a fixed search, no randomness.

#include <cstdint>
#include <vector>

namespace sim {

struct PsuParameters {
    double setPointV = 54.5;
    double droopOhm = 0.02;     // output voltage falls this much per ampere
    double currentLimitA = 50.0;
    double efficiency = 0.92;   // output power over input power
    // After mains returns the output current may rise to its limit over
    // this many seconds, as a rectifier walks in.
    double walkInS = 10.0;
};

struct BatteryParameters {
    double capacityAh = 100.0;
    std::uint32_t blocks = 4;   // 12 V blocks in series
    double emptyBlockV = 11.6;  // open-circuit voltage of a block at 0 % charge
    double fullBlockV = 12.9;   // and at 100 %
    // An exhausted block: below kneeCharge its voltage falls on to this at
    // 0 %, so that a deep discharge shows on the bus.
    double exhaustedBlockV = 10.0;
    double kneeCharge = 0.05;
    double internalOhm = 0.04;  // of the whole string
    double chargeEfficiency = 0.9; // share of the charge that is stored
    // A block takes charge only above its open-circuit voltage plus this
    // much times the eighth power of its charge: a full string floats at
    // 13.8 V a block and takes almost nothing more.
    double chargeRiseBlockV = 0.9;
    double stateOfCharge = 1.0;    // 0 to 1
};

struct ElectricalParameters {
    double loadW = 1200.0;
    double disconnectV = 43.2;  // the load is disconnected below this bus voltage
    double reconnectV = 48.0;   // and connected again when the bus is back at this
};

class ElectricalModel {
public:
    ElectricalModel(const ElectricalParameters& parameters, const BatteryParameters& battery);

    std::size_t addPsu(const PsuParameters& psu);
    void setPsuSetPoint(std::size_t psu, double volts);
    // A PSU that failed, or was taken out, gives nothing.
    void setPsuEnabled(std::size_t psu, bool enabled);
    void setMains(bool present)
    {
        if (present && !m_mains) m_sinceMainsS = 0.0;
        m_mains = present;
    }
    void setLoadW(double watts) { m_parameters.loadW = watts < 0 ? 0 : watts; }
    // A failed cell: the string loses a cell's voltage and its resistance
    // doubles.
    void failCell();
    // The node's connect command for the battery.
    void setContactor(bool closed) { m_contactorClosed = closed; }
    // The undervoltage disconnect's thresholds, as the node configures them.
    void setDisconnect(double disconnectV, double reconnectV);

    void step(double seconds);

    double busV() const { return m_busV; }
    double psuCurrentA(std::size_t psu) const { return psu < m_psuCurrentA.size() ? m_psuCurrentA[psu] : 0.0; }
    double psuLossW() const;
    // Positive while charging.
    double batteryCurrentA() const { return m_batteryChargeA; }
    double batteryVoltageV() const;
    double openCircuitV() const;
    // The voltage above which the string charges.
    double chargeEmfV() const;
    double stateOfCharge() const { return m_battery.stateOfCharge; }
    double loadCurrentA() const { return m_busV > 0 ? loadNowW() / m_busV : 0.0; }
    // What the load draws now: nothing while it is disconnected.
    double loadNowW() const { return m_loadDisconnected ? 0.0 : m_parameters.loadW; }
    bool loadDisconnected() const { return m_loadDisconnected; }
    bool contactorClosed() const { return m_contactorClosed; }
    bool mains() const { return m_mains; }
    // Charge that went in and out of the battery, in ampere hours, since start.
    double ampHoursIn() const { return m_ampHoursIn; }
    double ampHoursOut() const { return m_ampHoursOut; }

private:
    double psuCurrent(const PsuParameters& psu, double volts) const;
    // Out of the battery at bus voltage `volts`: positive discharging,
    // negative charging, nothing in between.
    double batteryOutA(double volts) const;
    // Source current minus load current at bus voltage `volts`.
    double surplusA(double volts) const;
    double solveBusV() const;

    ElectricalParameters m_parameters;
    BatteryParameters m_battery;
    std::vector<PsuParameters> m_psus;
    std::vector<double> m_psuCurrentA;
    std::vector<bool> m_psuEnabled;
    bool m_mains = true;
    double m_sinceMainsS = 1e9; // since mains came back
    bool m_contactorClosed = true;
    bool m_loadDisconnected = false;
    double m_busV = 0.0;
    double m_batteryChargeA = 0.0;
    double m_ampHoursIn = 0.0;
    double m_ampHoursOut = 0.0;
    double m_failedCellsV = 0.0;
};

} // namespace sim
