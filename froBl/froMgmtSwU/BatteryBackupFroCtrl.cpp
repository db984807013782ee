#include "froBl/froMgmtSwU/export/BatteryBackupFroCtrl.h"

#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include <array>

using namespace sup_sys_trace;

namespace {

struct BatteryDefault {
    const char* name;
    const char* column1;
    const char* column2;
};

// Voltages and temperatures in the units of the attributes.
constexpr std::array<BatteryDefault, 13> kBatteryDefaults{{
    {"boostChargeTime", "5", "8"},
    {"boostChargeTriggerVoltage", "-470", "-470"},
    {"chargingVoltage", "-545", "-538"},
    {"equalizeChargeTime", "4", "4"},
    {"equalizeChargeCyclicInterval", "30", "30"},
    {"tempCompVoltageSlope", "-96", "-96"},
    {"nominalTemp", "250", "250"},
    {"increasedChargeVoltage", "-564", "-574"},
    {"intermittentChargeConnectTime", "72", "72"},
    {"intermittentChargeConnectVoltage", "-500", "-500"},
    {"intermittentChargeDisconnectTime", "12", "12"},
    {"tempCompMaxVoltage", "-569", "-569"},
    {"tempCompMinVoltage", "-528", "-528"},
}};

} // namespace

void BatteryBackupFroCtrl::postCreate()
{
    applyBatteryDefaults();
    SupSysGenericFroCtrl::postCreate();
}

// The fixed parameters are not stored; a restored battery gets them again,
// so the core charges it after a restart as it did before.
void BatteryBackupFroCtrl::restore()
{
    applyBatteryDefaults();
    SupSysGenericFroCtrl::restore();
}

void BatteryBackupFroCtrl::postSet()
{
    applyBatteryDefaults();
    SupSysGenericFroCtrl::postSet();
}

void BatteryBackupFroCtrl::applyBatteryDefaults()
{
    const std::string batteryType = getAttribute("batteryType");
    if (getAttribute("chargingMode") != "0" || (batteryType != "1" && batteryType != "2")) return;
    const int column = batteryType == "1" ? 1 : 2;
    SSC_TRACE(froCtrlGroup(), kFlow, "Attribute value %s results in column: %d when tagging hard-coded battery attributes",
              batteryType.c_str(), column);
    for (const BatteryDefault& entry : kBatteryDefaults)
        setAttribute(entry.name, std::string(column == 1 ? entry.column1 : entry.column2));
}
