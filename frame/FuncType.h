#pragma once
// The kinds of function that faults, units and configuration sit on, and the
// one table of their texts that every trace prints.

#include <array>
#include <cstdint>

namespace func_type {

inline constexpr std::uint32_t kCabinet = 0;
inline constexpr std::uint32_t kPsu = 1;
inline constexpr std::uint32_t kBfu = 2;
inline constexpr std::uint32_t kDu = 3;
inline constexpr std::uint32_t kRu = 4;
inline constexpr std::uint32_t kScu = 5;
inline constexpr std::uint32_t kSau = 6;
inline constexpr std::uint32_t kPdu = 7;
inline constexpr std::uint32_t kExternalNode = 8;
inline constexpr std::uint32_t kFan = 9;
inline constexpr std::uint32_t kBatteryBackup = 10;
inline constexpr std::uint32_t kPowerDistribution = 11;
inline constexpr std::uint32_t kPowerSupply = 12;
inline constexpr std::uint32_t kCbu = 13;
inline constexpr std::uint32_t kRax = 14;
inline constexpr std::uint32_t kTx = 15;
inline constexpr std::uint32_t kEquipSupFunc = 20;
inline constexpr std::uint32_t kClu = 21;

// Indexed by value; the gap from 16 to 19 has no function.
inline constexpr std::array<const char*, 22> kTexts{
    "Cabinet", "PSU", "BFU", "DU", "RU", "SCU", "SAU", "PDU", "External Node", "FAN", "Battery Backup",
    "Power Distribution", "Power Supply", "CBU", "RAX", "TX", nullptr, nullptr, nullptr, nullptr,
    "Equip Sup Func", "CLU"};

// The text of a FuncType; "UNDEFx" for a value without one.
constexpr const char* text(std::uint32_t funcType)
{
    if (funcType >= kTexts.size() || kTexts[funcType] == nullptr) return "UNDEFx";
    return kTexts[funcType];
}

} // namespace func_type
