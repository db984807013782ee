#include "froBl/froMgmtSwU/export/FroCtrlApi.h"

#include "froBl/froMgmtSwU/export/AlarmPortFroCtrl.h"
#include "froBl/froMgmtSwU/export/BatteryBackupFroCtrl.h"
#include "froBl/froMgmtSwU/export/EcPortFroCtrl.h"
#include "froBl/froMgmtSwU/export/EfuseFroCtrl.h"
#include "froBl/froMgmtSwU/export/ExternalNodeFroCtrl.h"
#include "froBl/froMgmtSwU/export/HwUnitFroCtrl.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include <array>

using namespace sup_sys_trace;

namespace {

using Allocate = std::unique_ptr<fRO> (FroCtrlApi::*)() const;

struct ClassEntry {
    const char* key;
    Allocate allocate;
};

constexpr std::array<ClassEntry, 12> kClasses{{
    {"Cabinet", &FroCtrlApi::allocCallback},
    {"FanGroup", &FroCtrlApi::allocCallback},
    {"HwUnit", &FroCtrlApi::allocBatteryHwUnit},
    {"BatteryBackup", &FroCtrlApi::allocBatteryBackupCallback},
    {"ExternalNode", &FroCtrlApi::externalNodeCallback},
    {"PowerDistribution", &FroCtrlApi::allocCallback},
    {"PowerSupply", &FroCtrlApi::allocCallback},
    {"AlarmPort", &FroCtrlApi::allocAlarmPortCallback},
    {"EcPort", &FroCtrlApi::allocEcPortCallback},
    {"EquipmentSupportFunction", &FroCtrlApi::allocCallback},
    {"ControlPort", &FroCtrlApi::allocCallback},
    {"EFuse", &FroCtrlApi::allocEfuseCallback},
}};

template <class Controller>
std::unique_ptr<fRO> allocate(const char* callbackName, const FroCtrlServices& services)
{
    SSC_TRACE(froCtrlGroup(), kFlow, "%s in FroCtrlApi", callbackName);
    return std::make_unique<Controller>(services);
}

} // namespace

void FroCtrlApi::registerAll(froMgr& table) const
{
    for (const ClassEntry& entry : kClasses)
        table.registerType(entry.key, [api = *this, allocateOne = entry.allocate] { return (api.*allocateOne)(); });
}

std::unique_ptr<fRO> FroCtrlApi::allocBatteryBackupCallback() const
{
    return allocate<BatteryBackupFroCtrl>("allocBatteryBackupCallback()", m_services);
}

// The e-fuse's callback traces the battery callback's name: that is the
// text people search the trace for.
std::unique_ptr<fRO> FroCtrlApi::allocEfuseCallback() const
{
    return allocate<EfuseFroCtrl>("allocBatteryBackupCallback()", m_services);
}

std::unique_ptr<fRO> FroCtrlApi::externalNodeCallback() const
{
    return allocate<ExternalNodeFroCtrl>("externalNodeCallback()", m_services);
}

std::unique_ptr<fRO> FroCtrlApi::allocBatteryHwUnit() const
{
    return allocate<HwUnitFroCtrl>("allocBatteryHwUnit()", m_services);
}

std::unique_ptr<fRO> FroCtrlApi::allocEcPortCallback() const
{
    return allocate<EcPortFroCtrl>("allocEcPortCallback()", m_services);
}

std::unique_ptr<fRO> FroCtrlApi::allocAlarmPortCallback() const
{
    return allocate<AlarmPortFroCtrl>("allocAlarmPortCallback()", m_services);
}

std::unique_ptr<fRO> FroCtrlApi::allocCallback() const
{
    return allocate<SupSysGenericFroCtrl>("allocCallback()", m_services);
}
