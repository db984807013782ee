#pragma once
// Attributes, with default value and type, that a new object of a class has.

#include <array>
#include <string_view>

namespace default_attributes {

struct Row {
    std::string_view moType;
    std::string_view name;
    std::string_view value;
    std::string_view type;
};

// The default of a unit's product data: a struct of five empty texts, in the
// form that the XML writer gives, so that a stored default reads back equal.
inline constexpr std::string_view kProductData =
    "<struct name=\"productData\">\n"
    "<attr name=\"productionDate\" type=\"STRING\" value=\"\"/>\n"
    "<attr name=\"productName\" type=\"STRING\" value=\"\"/>\n"
    "<attr name=\"productNumber\" type=\"STRING\" value=\"\"/>\n"
    "<attr name=\"productRevision\" type=\"STRING\" value=\"\"/>\n"
    "<attr name=\"serialNumber\" type=\"STRING\" value=\"\"/>\n"
    "</struct>\n";

inline constexpr std::array<Row, 35> kRows{{
    {"AlarmPort", "operationalState", "0", "S32"},
    {"AlarmPort", "activeExternalAlarm", "0", "S32"},
    {"AlarmPort", "availabilityStatus", "0", "S32"},
    {"ControlPort", "operationalState", "0", "S32"},
    {"ControlPort", "availabilityStatus", "0", "S32"},
    {"Cabinet", "cabinetIdentifier", "", "STRING"},
    {"Cabinet", "smokeDetector", "0", "S32"},
    {"FanGroup", "fanGroupFaultIndicator", "1", "S32"},
    {"HwUnit", "productData", kProductData, "struct"},
    {"HwUnit", "availabilityStatus", "0", "S32"},
    {"HwUnit", "operationalState", "0", "S32"},
    {"HwUnit", "operationalIndicator", "1", "S32"},
    {"HwUnit", "faultIndicator", "1", "S32"},
    {"HwUnit", "batteryFaultIndicator", "0", "S32"},
    {"HwUnit", "powerDistrFaultIndicator", "1", "S32"},
    {"BatteryBackup", "batteryCurrent", "-9999", "S32"},
    {"BatteryBackup", "batteryTemperature", "999", "S32"},
    {"BatteryBackup", "batteryTestIsRunning", "0", "S32"},
    {"BatteryBackup", "batteryVoltage", "-1", "S32"},
    {"BatteryBackup", "referenceBatteryCapacity", "-1", "S32"},
    {"BatteryBackup", "nextScheduledTestDate", "00000000", "STRING"},
    {"PowerSupply", "systemVoltage", "-1", "S32"},
    {"ExternalNode", "logicalName", "", "STRING"},
    {"ExternalNode", "fullDistinguishedName", "", "STRING"},
    {"ExternalNode", "radioAccessTechnology", "0", "S32"},
    {"ExternalNode", "supportSystemControl", "2", "S32"},
    {"EFuse", "parentObjectId", "", "S32"},
    {"EFuse", "eFuseIndicator", "1", "S32"},
    {"XpProgram", "swUpgradeCreated", "false", "bool"},
    {"DeviceGroup", "huntPath", "", "STRING"},
    {"DeviceGroup", "typeOfUnit", "", "STRING"},
    {"DeviceGroup", "unitInstanceNumber", "", "STRING"},
    {"DeviceGroup", "groupOfPort", "", "STRING"},
    {"DeviceGroup", "parentObjectType", "", "STRING"},
    {"DeviceGroup", "parentObjectId", "", "STRING"},
}};

} // namespace default_attributes
