#include "froBl/froMgmtSwU/export/HwUnitFroCtrl.h"

#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include <cstdint>
#include <vector>

using namespace sup_sys_trace;

void HwUnitFroCtrl::postCreate()
{
    setConfig();
    alarmsCreated();
    makeDeviceGroups();
}

// A restored unit takes the path of a new one: the core has not seen it
// since the process started.
void HwUnitFroCtrl::restore()
{
    postCreate();
}

void HwUnitFroCtrl::preDelete()
{
    if (froMgr* pTable = table(); pTable != nullptr) {
        std::vector<std::string> groups;
        pTable->getChildren(ownLdn(), groups, 1, "DeviceGroup");
        for (const std::string& groupLdn : groups) {
            if (fRO* group = pTable->getFro(groupLdn); group != nullptr) deleteConfig(*group);
            pTable->deleteMO(groupLdn);
        }
    }
    deleteConfig(*this);
    alarmsDeleted();
}

void HwUnitFroCtrl::makeDeviceGroups()
{
    const std::string unitType = getAttribute("unitType");
    const std::string ldn = ownLdn();
    if (unitType == "SAU") {
        makeDeviceGroup(ldn + ",DeviceGroup=0", 1, 0, unitType);
        makeDeviceGroup(ldn + ",DeviceGroup=1", 1, 1, unitType);
    } else if (unitType == "SCU" || unitType == "SUP") {
        makeDeviceGroup(ldn + ",DeviceGroup=0", 0, 0, unitType);
    }
}

void HwUnitFroCtrl::makeDeviceGroup(const std::string& ldn, int typeOfUnit, int groupOfPort,
                                    const std::string& unitType)
{
    froMgr* pTable = table();
    if (pTable == nullptr || pTable->exists(ldn)) return;
    fRO* group = pTable->createMO(ldn, fro_types::kDeviceGroup, -1);
    if (group == nullptr) {
        SSC_TRACE(froCtrlGroup(), kError, "Could not make the device group %s", ldn.c_str());
        return;
    }
    group->setAttribute("typeOfUnit", static_cast<std::int32_t>(typeOfUnit));
    group->setAttribute("groupOfPort", static_cast<std::int32_t>(groupOfPort));
    group->setAttribute("parentObjectType", unitType);
}
