#pragma once
// The outward face of the battery backup: configuration, status and the
// operator's battery actions in, to the power control; the battery backup's
// faults out, to its event handler.

#include "frame/FaultsRegisterReportIf.h"
#include "power/BatteryBackupFacadeIf.h"

#include <cstdint>

class FaultsRegisterIf;
class PowerCtrlManagerIf;

class BatteryBackupFacade : public BatteryBackupFacadeIf, public FaultsRegisterReportIf {
public:
    // Initiations of a battery test asked for by the operator, and the
    // operator's reason to stop one.
    static constexpr std::uint32_t kInitiationOnDemand = 4;
    static constexpr std::uint32_t kInitiationOnDemandForced = 5;
    static constexpr std::uint32_t kStopByOperator = 1;
    // Answers while there is no power control to ask: equalize charging is
    // refused, a test can't start because the power system can't be reached,
    // and none runs that could be stopped.
    static constexpr std::uint32_t kEqualizeRefused = 1;
    static constexpr std::uint32_t kErrorPowerSystemUnreachable = 6;
    static constexpr std::uint32_t kErrorTestNotRunning = 3;

    // `manager` may be NIL: every request is then traced and answered as
    // refused or empty, and faults still reach the event handler.
    BatteryBackupFacade(FaultsRegisterIf& faults, PowerCtrlManagerIf* manager);
    ~BatteryBackupFacade() override;
    BatteryBackupFacade(const BatteryBackupFacade&) = delete;
    BatteryBackupFacade& operator=(const BatteryBackupFacade&) = delete;

    // The core makes the facades before the power manager.
    void setManager(PowerCtrlManagerIf* manager) { m_pManager = manager; }
    void setEventHandler(BatteryBackupEventIf* handler) override { m_pBatteryBackupAdapter = handler; }
    void updateBatteryParameters(const BatteryBackupCfg& cfg) override;
    void deleteBatteryBackup() override;
    void getBatteryBackupStatus(BatteryBackupStatus* status) override;
    std::uint32_t startEqualizeCharging() override;
    void stopEqualizeCharging() override;
    bool startBatteryTest(bool forced, std::uint32_t* error) override;
    bool stopBatteryTest(std::uint32_t* error) override;
    bool getBatteryTestProgress(std::int32_t words[4]) override;
    std::uint32_t getBatteryTestResults() override;
    bool isRunningOnBatteries() const override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

private:
    // The power control, or NIL after a trace naming `operation`.
    PowerCtrlManagerIf* manager(const char* operation) const;
    void report(const FaultId_t& faultId, const FuncId_t& funcId, bool raise);

    FaultsRegisterIf* m_pFaults;
    PowerCtrlManagerIf* m_pManager;
    BatteryBackupEventIf* m_pBatteryBackupAdapter = nullptr;
};
