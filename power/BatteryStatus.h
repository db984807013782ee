#pragma once
// Watches whether the battery is fully charged: a charge current under the
// threshold for 30 minutes (timer 44 of the charger) says so, and a
// recharge that goes on for more than eleven days raises a fault.

#include <cstdint>

class BatteryBackupCfg;
class BatteryChargerIf;
class FaultsRegisterIf;

class BatteryStatus {
public:
    static constexpr std::uint32_t kStayedChargedMs = 1'800'000;
    // Minutes a recharge may last before fault 20005.
    static constexpr std::uint32_t kMaxRechargeMinutes = 15'839;

    BatteryStatus(BatteryChargerIf* charger, FaultsRegisterIf* faults, BatteryBackupCfg* cfg);
    virtual ~BatteryStatus() = default;
    BatteryStatus(const BatteryStatus&) = delete;
    BatteryStatus& operator=(const BatteryStatus&) = delete;

    // False when a value is not available: the pass is skipped.
    bool checkBatteryStatus(float batteryVoltage, float current);
    // Timer 44 expired: the current stayed low for 30 minutes.
    void stayedCharged();
    bool isFullyCharged() const { return m_fullyCharged; }

private:
    void watchRecharge(float current);
    void stopStayedChargedTimer();

    BatteryChargerIf* m_pCharger;
    FaultsRegisterIf* m_pFaults;
    BatteryBackupCfg* m_pCfg;
    bool m_fullyCharged = false;
    bool m_recharging = false;
    std::uint32_t m_rechargeStart = 0; // minutes since 1970; 0 while none runs
    bool m_rechargeSeen = false;
};
