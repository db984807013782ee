#pragma once
// Class numbers of the managed objects. The first twelve are the persistent
// classes, stored in the database; DeviceGroup objects live only at run time.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace fro_types {

inline constexpr std::uint32_t kCabinet = 0x7040000;
inline constexpr std::uint32_t kFanGroup = 0x7040001;
inline constexpr std::uint32_t kHwUnit = 0x7040002;
inline constexpr std::uint32_t kAlarmPort = 0x7040003;
inline constexpr std::uint32_t kControlPort = 0x7040004;
inline constexpr std::uint32_t kBatteryBackup = 0x7040005;
inline constexpr std::uint32_t kEcPort = 0x7040006;
inline constexpr std::uint32_t kExternalNode = 0x7040007;
inline constexpr std::uint32_t kPowerDistribution = 0x7040008;
inline constexpr std::uint32_t kPowerSupply = 0x7040009;
inline constexpr std::uint32_t kEquipmentSupportFunction = 0x704000A;
inline constexpr std::uint32_t kEFuse = 0x704000B;
inline constexpr std::uint32_t kDeviceGroup = 0x704000C;

// Range of the numbers of this system's classes.
inline constexpr std::uint32_t kFirst = 0x7040000;
inline constexpr std::uint32_t kEnd = 0x7050000;

struct FroClass {
    std::uint32_t froType;
    std::string_view name;
};

inline constexpr std::array<FroClass, 13> kClasses{{
    {kCabinet, "Cabinet"},
    {kFanGroup, "FanGroup"},
    {kHwUnit, "HwUnit"},
    {kAlarmPort, "AlarmPort"},
    {kControlPort, "ControlPort"},
    {kBatteryBackup, "BatteryBackup"},
    {kEcPort, "EcPort"},
    {kExternalNode, "ExternalNode"},
    {kPowerDistribution, "PowerDistribution"},
    {kPowerSupply, "PowerSupply"},
    {kEquipmentSupportFunction, "EquipmentSupportFunction"},
    {kEFuse, "EFuse"},
    {kDeviceGroup, "DeviceGroup"},
}};

inline constexpr std::size_t kPersistentCount = 12;

// Class name of a number; empty when the number is not one of ours.
constexpr std::string_view className(std::uint32_t froType)
{
    for (const FroClass& c : kClasses)
        if (c.froType == froType)
            return c.name;
    return {};
}

// The class number of a class name; 0 for a name that is no class.
constexpr std::uint32_t froType(std::string_view name)
{
    for (const FroClass& c : kClasses)
        if (c.name == name)
            return c.froType;
    return 0;
}

} // namespace fro_types
