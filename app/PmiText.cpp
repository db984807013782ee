#include "app/PmiText.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

namespace pmi_text {

using namespace pmi;

namespace {

// One readable setting: its name, its scale onto the wire and its range on
// the wire, and where it goes.
struct Setting {
    const char* name;
    double scale;
    double low;
    double high;
    std::function<void(void*, std::int32_t)> store;
};

bool apply(const std::vector<Setting>& table, const std::map<std::string, std::string>& settings, void* record,
           std::string& error)
{
    for (const auto& [name, text] : settings) {
        const Setting* setting = nullptr;
        for (const Setting& row : table)
            if (name == row.name) setting = &row;
        if (setting == nullptr) {
            error = "unknown setting '" + name + "'";
            return false;
        }
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        const double wire = std::round(value * setting->scale);
        if (text.empty() || end == nullptr || *end != '\0' || !(wire >= setting->low && wire <= setting->high)) {
            error = "setting '" + name + "' needs a number, not '" + text + "'";
            return false;
        }
        setting->store(record, static_cast<std::int32_t>(wire));
    }
    return true;
}

template <typename T>
std::string configRequest(std::uint16_t objectType, std::uint32_t clientRef, const T& record)
{
    PMI_SET_CONFIG_REQ_S body{};
    std::memcpy(body.config, &record, sizeof record);
    std::string bytes = request(PMI_SET_CONFIG_REQ, objectType, clientRef, 0, body.config, sizeof body.config);
    return bytes;
}

constexpr double kI16 = 32767.0;
constexpr double kI32 = 2147483647.0;

template <typename Record, typename Field>
Setting field(const char* name, double scale, double low, double high, Field Record::*member)
{
    return {name, scale, low, high, [member](void* record, std::int32_t value) {
                static_cast<Record*>(record)->*member = static_cast<decltype(std::declval<Field>().get())>(value);
            }};
}

const std::vector<Setting>& supplySettings()
{
    using R = PMI_POWER_SUPPLY_CONFIG_S;
    static const std::vector<Setting> table{
        field<R>("nominal", 10, -kI16, kI16, &R::nominalVoltage),
        field<R>("over", 10, -kI16, kI16, &R::systemOvervoltageAlarmLevel),
        field<R>("over-cease", 10, -kI16, kI16, &R::systemOvervoltageAlarmCeaseOffset),
        field<R>("under", 10, -kI16, kI16, &R::systemUndervoltageAlarmLevel),
        field<R>("under-cease", 10, -kI16, kI16, &R::systemUndervoltageAlarmCeaseOffset),
    };
    return table;
}

const std::vector<Setting>& distributionSettings()
{
    using R = PMI_POWER_DISTRIBUTION_CONFIG_S;
    const auto limit = [](const char* name, ose::be_u16 R::*member) {
        return Setting{name, 10, -kI16, kI16, [member](void* record, std::int32_t value) {
                           static_cast<R*>(record)->*member = static_cast<std::uint16_t>(static_cast<std::int16_t>(value));
                       }};
    };
    static const std::vector<Setting> table{
        limit("main", &R::mainLoadUndervoltageDisconnect),
        limit("priority", &R::priorityLoadUndervoltageDisconnect),
        field<R>("cease", 10, 0, 255, &R::undervoltageDisconnectCeaseOffset),
    };
    return table;
}

const std::vector<Setting>& batterySettings()
{
    using R = PMI_BATTERY_BACKUP_CONFIG_S;
    static const std::vector<Setting> table{
        field<R>("charging", 10, -kI32, kI32, &R::chargingVoltage),
        field<R>("max-current", 1, 0, 65535, &R::chargeMaxCurrent),
        field<R>("disconnect-temp", 1, -128, 127, &R::batteryDisconnectTemp),
        field<R>("disconnect-cease", 1, 0, 255, &R::batteryDisconnectTempCeaseOffset),
        field<R>("nominal-temp", 10, -kI32, kI32, &R::nominalTemp),
        field<R>("comp-slope", 1000, -kI32, kI32, &R::tempCompVoltageSlope),
        field<R>("comp-min", 10, -kI32, kI32, &R::tempCompMinVoltage),
        field<R>("comp-max", 10, -kI32, kI32, &R::tempCompMaxVoltage),
        field<R>("increased", 10, -kI32, kI32, &R::increasedChargeVoltage),
        field<R>("test-mode", 1, 0, 2, &R::testMode),
        field<R>("charging-mode", 1, 0, 1, &R::chargingMode),
        field<R>("reference-capacity", 1, -kI32, kI32, &R::referenceBatteryCapacity),
    };
    return table;
}

std::string names(const std::vector<Setting>& table)
{
    std::string all;
    for (const Setting& row : table) all += (all.empty() ? "" : ", ") + std::string(row.name);
    return all;
}

} // namespace

std::string request(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t clientRef, std::uint16_t word14,
                    const void* body, std::size_t size)
{
    PMI_HEADER_S header{};
    header.sigNo = sigNo;
    header.clientRef = clientRef;
    header.objectType = objectType;
    header.word14 = word14;
    std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
    if (body != nullptr) bytes.append(static_cast<const char*>(body), size);
    return bytes;
}

bool supplyConfig(const std::map<std::string, std::string>& settings, std::uint32_t clientRef, std::string& bytes,
                  std::string& error)
{
    PMI_POWER_SUPPLY_CONFIG_S config{};
    config.nominalVoltage = -545;
    config.systemOvervoltageAlarmLevel = -570;
    config.systemOvervoltageAlarmCeaseOffset = 5;
    config.systemUndervoltageAlarmLevel = -440;
    config.systemUndervoltageAlarmCeaseOffset = 30;
    if (!apply(supplySettings(), settings, &config, error)) return false;
    bytes = configRequest(kPowerSupply, clientRef, config);
    return true;
}

bool distributionConfig(const std::map<std::string, std::string>& settings, std::uint32_t clientRef,
                        std::string& bytes, std::string& error)
{
    PMI_POWER_DISTRIBUTION_CONFIG_S config{};
    config.mainLoadUndervoltageDisconnect = static_cast<std::uint16_t>(-432);
    config.priorityLoadUndervoltageDisconnect = static_cast<std::uint16_t>(-440);
    config.undervoltageDisconnectCeaseOffset = 30;
    if (!apply(distributionSettings(), settings, &config, error)) return false;
    bytes = configRequest(kPowerDistribution, clientRef, config);
    return true;
}

bool batteryConfig(const std::map<std::string, std::string>& settings, std::uint32_t clientRef, std::string& bytes,
                   std::string& error)
{
    PMI_BATTERY_BACKUP_CONFIG_S config{};
    config.chargingVoltage = -545;
    config.chargeMaxCurrent = 20;
    config.batteryDisconnectTemp = 60;
    config.batteryDisconnectTempCeaseOffset = 5;
    config.nominalTemp = 250;
    config.tempCompMinVoltage = -530;
    config.tempCompMaxVoltage = -560;
    config.increasedChargeVoltage = -560;
    config.testMode = 2; // no battery tests
    config.referenceBatteryCapacity = static_cast<std::int32_t>(kNoValue);
    config.lastNominalBatteryCapacity = static_cast<std::int32_t>(kNoValue);
    config.chargingMode = 0;
    if (!apply(batterySettings(), settings, &config, error)) return false;
    bytes = configRequest(kBatteryBackup, clientRef, config);
    return true;
}

std::string settingNames(std::uint16_t objectType)
{
    if (objectType == kPowerSupply) return names(supplySettings());
    if (objectType == kPowerDistribution) return names(distributionSettings());
    return names(batterySettings());
}

namespace {

const char* faultText(std::uint16_t faultType)
{
    static constexpr std::array<const char*, 16> kTexts{
        "no battery present",          "intermittent charging connected too often",
        "battery backup time too short", "recharge too long",
        "battery over temperature",    "running on batteries",
        "battery temperature sensor faulty", "main load disconnected",
        "priority load disconnected",  "PDU main temperature high",
        "no PSU usable",               "system overvoltage",
        "system undervoltage",         "low battery capacity",
        "consumed capacity not covered", "multiple power subracks"};
    return faultType < kTexts.size() ? kTexts[faultType] : "unknown";
}

std::string objectOf(std::uint16_t objectType)
{
    switch (objectType) {
    case kBatteryBackup: return "battery backup";
    case kPowerDistribution: return "power distribution";
    case kPowerSupply: return "power supply";
    default: return "object type " + std::to_string(objectType);
    }
}

std::int32_t word(const std::string& bytes, std::size_t offset)
{
    return static_cast<std::int32_t>(ose::loadBe32(bytes.data() + offset));
}

std::string number(std::int32_t value, const char* unit, int tenths = 0)
{
    if (static_cast<std::uint32_t>(value) == kNoValue) return "not measured";
    char text[40];
    if (tenths != 0) std::snprintf(text, sizeof text, "%.1f", value / 10.0);
    else std::snprintf(text, sizeof text, "%d", value);
    return *unit == '\0' ? std::string(text) : std::string(text) + " " + unit;
}

std::string textAt(const std::string& bytes, std::size_t offset, std::size_t size)
{
    return std::string(bytes.data() + offset, strnlen(bytes.data() + offset, size));
}

std::string resource(const std::string& bytes, std::uint16_t objectType)
{
    if (bytes.size() < sizeof(PMI_RESOURCE_DATA_S)) return {};
    const std::string object = objectOf(objectType);
    if (objectType == kPowerSupply) return object + ": system voltage " + number(word(bytes, 16), "V", 1);
    if (objectType != kBatteryBackup) return object + ": no values";
    return object + ": current " + number(word(bytes, 16), "A") + ", temperature " + number(word(bytes, 20), "C") +
           ", voltage " + number(word(bytes, 24), "V", 1) + ", reference capacity " + number(word(bytes, 28), "Ah") +
           ", next test \"" + textAt(bytes, 32, kDateSize) + "\", test running " + (word(bytes, 44) != 0 ? "yes" : "no");
}

std::string batteryEvent(const std::string& bytes, std::uint16_t eventType)
{
    if (bytes.size() < sizeof(PMI_BATTERY_EVENT_IND_S)) return {};
    switch (eventType) {
    case kTestStarted: return "battery test started, initiation " + std::to_string(word(bytes, 16));
    case kTestFinished:
        return "battery test finished: initiation " + number(word(bytes, 16), "") + ", outcome " +
               number(word(bytes, 36), "") + ", backup time " + number(word(bytes, 24), "min") + ", started " +
               textAt(bytes, 40, kDateSize) + " " + textAt(bytes, 52, kTimeSize);
    case kLogData:
        return "battery log: " + std::to_string(word(bytes, 16 + 4 * 47)) + " minutes disconnected, " +
               std::to_string(word(bytes, 16 + 4 * 53)) + " tests passed, " + std::to_string(word(bytes, 16 + 4 * 54)) +
               " failed, next test \"" + textAt(bytes, 16 + 4 * 77, kDateSize) + "\"";
    default: return "battery event " + std::to_string(eventType);
    }
}

std::string actionName(std::uint16_t actionType)
{
    static constexpr std::array<const char*, 5> kNames{"start equalize", "stop equalize", "start test", "stop test",
                                                       "test status"};
    return actionType < kNames.size() ? kNames[actionType] : "action " + std::to_string(actionType);
}

} // namespace

std::string describe(const std::string& bytes)
{
    if (bytes.size() < sizeof(PMI_HEADER_S)) return {};
    PMI_HEADER_S header;
    std::memcpy(&header, bytes.data(), sizeof header);
    const std::string object = objectOf(header.objectType);
    const std::string code = std::to_string(header.word14);
    switch (header.sigNo) {
    case PMI_SET_CONFIG_CFM: return object + ": configured";
    case PMI_SET_CONFIG_REJ: return object + ": refused, error " + code;
    case PMI_DELETE_CONFIG_CFM: return object + ": deleted";
    case PMI_SUBSCRIBE_RESOURCE_DATA_CFM: return object + ": subscribed";
    case PMI_UNSUBSCRIBE_RESOURCE_DATA_CFM: return object + ": unsubscribed";
    case PMI_SUBSCRIBE_RESOURCE_DATA_REJ:
    case PMI_GET_RESOURCE_DATA_REJ: return object + ": not configured by this client, error " + code;
    case PMI_RESOURCE_DATA_UPDATE_IND:
    case PMI_GET_RESOURCE_DATA_CFM: return resource(bytes, header.objectType);
    case PMI_FAULT_IND: return object + ": fault " + code + " (" + faultText(header.word14) + ")";
    case PMI_FAULT_CEASE_IND: return object + ": fault " + code + " (" + faultText(header.word14) + ") ceased";
    case PMI_ACTION_CFM: return actionName(header.word14) + ": done";
    case PMI_ACTION_REJ:
        if (bytes.size() < sizeof(PMI_ACTION_REJ_S)) return {};
        return actionName(header.word14) + ": refused, error " +
               std::to_string(static_cast<std::uint32_t>(word(bytes, 16)) >> 16);
    case PMI_ACTION_IND:
        if (bytes.size() < sizeof(PMI_ACTION_IND_S)) return {};
        return "battery test: state " + std::to_string(word(bytes, 16)) + ", " + std::to_string(word(bytes, 20)) +
               " min, " + std::to_string(word(bytes, 24)) + " Ah consumed, " + std::to_string(word(bytes, 28)) +
               " min left";
    case PMI_BATTERY_EVENT_IND: return batteryEvent(bytes, header.word14);
    default: return {};
    }
}

} // namespace pmi_text
