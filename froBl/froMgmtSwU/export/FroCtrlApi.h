#pragma once
// The allocation callbacks of the persistent classes: each makes the
// controller of its class, bound to the services the process gives.

#include "froBl/froMgmtSwU/export/FroCtrlServices.h"
#include "froBl/froMgmtSwU/export/fRO.h"

#include <memory>

class froMgr;

class FroCtrlApi {
public:
    explicit FroCtrlApi(const FroCtrlServices& services) : m_services(services) {}

    // Registers every class under its name at the table, in a fixed order.
    void registerAll(froMgr& table) const;

    std::unique_ptr<fRO> allocBatteryBackupCallback() const;
    std::unique_ptr<fRO> allocEfuseCallback() const;
    std::unique_ptr<fRO> externalNodeCallback() const;
    std::unique_ptr<fRO> allocBatteryHwUnit() const;
    std::unique_ptr<fRO> allocEcPortCallback() const;
    std::unique_ptr<fRO> allocAlarmPortCallback() const;
    std::unique_ptr<fRO> allocCallback() const;

private:
    FroCtrlServices m_services;
};
