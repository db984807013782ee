#include "app/SiteConfigurator.h"

#include "adapters/EmiSignals.h"
#include "app/CmiText.h"
#include "app/EmiText.h"
#include "app/PmiText.h"
#include "frame/FuncType.h"
#include "hwu/HdlcAddressBroker.h"
#include "sim/SimScu.h"

#include "ose/Kernel.h"
#include "ose/Trace.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace site {
namespace {

using namespace emi;

ose::TraceGroupId group() { return ose::traceGroup<"site">(); }

struct Unit {
    std::uint16_t objectType;
    std::uint32_t objectId;
    std::string hubPosition;
    std::string name; // "PSU-1"
};

struct Kind {
    std::uint16_t objectType;
    std::uint32_t funcType;
};

Kind kindOf(sim::UnitType type)
{
    switch (type) {
    case sim::UnitType::SCU: return {kScu, func_type::kScu};
    case sim::UnitType::SAU: return {kSau, func_type::kSau};
    case sim::UnitType::CLU: return {kClu, func_type::kClu};
    case sim::UnitType::PSU: return {kPsu, func_type::kPsu};
    case sim::UnitType::BFU: return {kBfu, func_type::kBfu};
    case sim::UnitType::PDU: return {kPdu, func_type::kPdu};
    }
    return {kPsu, func_type::kPsu};
}

// Each unit of the site numbered from 1 within its kind, placed by its
// address: the hub position that gives that address, with the port word.
std::vector<Unit> unitsOf(const sim::SimCabinet& cabinet)
{
    std::vector<Unit> units;
    std::map<std::uint16_t, std::uint32_t> counts;
    for (const sim::SimUnit* simUnit : cabinet.units()) {
        const Kind kind = kindOf(simUnit->type());
        Unit unit;
        unit.objectType = kind.objectType;
        unit.objectId = ++counts[kind.objectType];
        std::string position(Hdlc::getHubPosition(kind.funcType, simUnit->address()));
        if (simUnit->port() == Hdlc::kAuxPort) position = "AUX " + position;
        unit.hubPosition = position;
        unit.name = emi_text::objectName(unit.objectType, unit.objectId);
        units.push_back(unit);
    }
    return units;
}

template <typename T>
void sendTo(ose::PROCESS server, T body, ose::SIGSELECT sigNo, const Unit& unit)
{
    auto& header = reinterpret_cast<EMI_HEADER_S&>(body);
    header.sigNo = sigNo;
    header.clientRef = unit.objectType << 16 | unit.objectId;
    header.objectType = unit.objectType;
    header.objectId = unit.objectId;
    ose::Signal* signal = ose::alloc(sizeof(T), sigNo);
    std::memcpy(static_cast<void*>(signal), &body, sizeof(T));
    ose::send(&signal, server);
}

constexpr std::uint32_t kCabinetId = 0;
constexpr std::uint32_t kFirstFanGroupId = 101;

void sendBytes(ose::PROCESS server, const std::string& bytes)
{
    std::uint32_t sigNo = 0;
    for (std::size_t i = 0; i < 4; ++i) sigNo = sigNo << 8 | static_cast<unsigned char>(bytes[i]);
    ose::Signal* signal = ose::alloc(static_cast<ose::OSBUFSIZE>(bytes.size()), sigNo);
    std::memcpy(static_cast<void*>(signal), bytes.data(), bytes.size());
    ose::send(&signal, server);
}

// The node is the site's primary, its cabinet an outdoor one with the
// identity that its SCU's memory holds, and fan groups 1 and 2.
void configureCabinet(const sim::SimCabinet& cabinet)
{
    ose::PROCESS server = 0;
    while (!ose::hunt(cmi::kServerName, 0, &server, nullptr)) ose::delay(10);
    sendBytes(server, cmi_text::nodeConfig(true, "site"));
    cmi::CMI_CABINET_CONFIG_S config = cmi_text::outdoorCabinet();
    for (const sim::SimUnit* unit : cabinet.units())
        if (const auto* scu = dynamic_cast<const sim::SimScu*>(unit)) {
            cmi_text::copyField(config.serialNumber, scu->cabinet().serialNumber);
            cmi_text::copyField(config.productName, scu->cabinet().productName);
            cmi_text::copyField(config.productNumber, scu->cabinet().productNumber);
            cmi_text::copyField(config.productRevision, scu->cabinet().revState);
            cmi_text::copyField(config.productionDate, scu->cabinet().productionDate);
        }
    sendBytes(server, cmi_text::request(cmi::CMI_SET_CONFIG_REQ, cmi::kCabinet, kCabinetId, 1, &config, sizeof config));
    for (std::uint16_t group = 1; group <= 2; ++group) {
        const std::uint32_t fanGroup = kFirstFanGroupId + group - 1;
        sendBytes(server, cmi_text::fanGroupConfig(fanGroup, group, kCabinetId, 1));
        sendBytes(server, cmi_text::request(cmi::CMI_SUBSCRIBE_RESOURCE_DATA_REQ, cmi::kFanGroup, fanGroup, 1));
    }
    sendBytes(server, cmi_text::request(cmi::CMI_SUBSCRIBE_RESOURCE_DATA_REQ, cmi::kCabinet, kCabinetId, 1));
    SSC_TRACE(group(), 4, "node: primary, cabinet %d: outdoor climate, fan groups %d and %d", static_cast<int>(kCabinetId),
              static_cast<int>(kFirstFanGroupId), static_cast<int>(kFirstFanGroupId + 1));
}

// The power system as a site with one lead-acid string of 4 x 12 V has it:
// the supply at 54.5 V with its alarm limits, the loads disconnected at
// 43.2 V, and the string floated at 55.0 V at 25 degrees, 72 mV less for
// each degree warmer, charged with at most 20 A.
void configurePower()
{
    ose::PROCESS server = 0;
    while (!ose::hunt(pmi::kServerName, 0, &server, nullptr)) ose::delay(10);
    std::string bytes;
    std::string error;
    constexpr std::uint32_t kClientRef = 1;
    if (pmi_text::supplyConfig({}, kClientRef, bytes, error)) sendBytes(server, bytes);
    if (pmi_text::distributionConfig({}, kClientRef, bytes, error)) sendBytes(server, bytes);
    const std::map<std::string, std::string> battery{{"charging", "-55.0"}, {"nominal-temp", "25"},
                                                     {"comp-slope", "-0.072"}, {"comp-min", "-54.0"},
                                                     {"comp-max", "-56.0"}, {"increased", "-55.5"}};
    if (pmi_text::batteryConfig(battery, kClientRef, bytes, error)) sendBytes(server, bytes);
    else SSC_TRACE(group(), 1, "battery backup: %s", error.c_str());
    for (const std::uint16_t objectType : {pmi::kBatteryBackup, pmi::kPowerDistribution, pmi::kPowerSupply})
        sendBytes(server, pmi_text::request(pmi::PMI_SUBSCRIBE_RESOURCE_DATA_REQ, objectType, kClientRef));
    SSC_TRACE(group(), 4, "power: supply 54.5 V, loads off at 43.2 V, battery floated at 55.0 V with 20 A at most");
}

class Configurator {
public:
    Configurator(std::vector<Unit> units, const sim::SimCabinet* climateOf)
        : m_units(std::move(units)), m_pClimateOf(climateOf)
    {
    }

    void run()
    {
        if (m_pClimateOf != nullptr) configureCabinet(*m_pClimateOf);
        ose::PROCESS server = 0;
        while (!ose::hunt(kServerName, 0, &server, nullptr)) ose::delay(10);
        for (const Unit& unit : m_units) {
            EMI_SET_CONFIG_HWU_REQ_S config{};
            std::strncpy(config.hubPosition, unit.hubPosition.c_str(), sizeof config.hubPosition - 1);
            sendTo(server, config, EMI_SET_CONFIG_REQ, unit);
            sendTo(server, EMI_REQ_S{}, EMI_SUBSCRIBE_RESOURCE_DATA_REQ, unit);
            SSC_TRACE(group(), 4, "%s at hub position \"%s\": configuring", unit.name.c_str(), unit.hubPosition.c_str());
        }
        // Power needs the node to be the primary, as the climate does.
        if (m_pClimateOf != nullptr) configurePower();
        for (;;) {
            ose::Signal* signal = ose::receive(ose::kAnySignal);
            report(signal);
            ose::free_buf(&signal);
        }
    }

private:
    void report(ose::Signal* signal)
    {
        const std::string bytes(reinterpret_cast<const char*>(signal), ose::sigsize(&signal));
        std::string line = emi_text::describe(bytes);
        if (line.empty()) line = cmi_text::describe(bytes);
        if (line.empty()) line = pmi_text::describe(bytes);
        if (line.empty() || isRepeat(line)) return;
        SSC_TRACE(group(), 4, "%s", line.c_str());
    }

    // The power objects report every pass and every BFU flag; a line that
    // says of an object what its last line said is no news.
    bool isRepeat(const std::string& line)
    {
        const std::string object = line.substr(0, line.find(':'));
        std::string& last = m_lastLine[object];
        if (last == line) return true;
        last = line;
        return false;
    }

    std::vector<Unit> m_units;
    const sim::SimCabinet* m_pClimateOf; // NIL: units only
    std::map<std::string, std::string> m_lastLine;
};

} // namespace

void startSiteConfigurator(ose::World& world, ose::Node& node, const sim::SimCabinet& cabinet, bool climate)
{
    ose::ProcessSpec spec;
    spec.name = "site_configurator";
    spec.entry = [units = unitsOf(cabinet), climateOf = climate ? &cabinet : nullptr] {
        Configurator configurator(units, climateOf);
        configurator.run();
    };
    world.start(world.createProcess(node, spec));
}

} // namespace site
