#include "app/SiteConfigurator.h"

#include "adapters/CmiSignals.h"
#include "adapters/EmiSignals.h"
#include "app/EmiText.h"
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

// The object layer's configuration of an outdoor cabinet: the node is the
// site's primary; two internal fan groups at least at 20 %, the PSUs' hot
// spots fully placed, the SCU's heaters between 5 and 10 degrees.
constexpr std::uint32_t kCabinetId = 0;
constexpr std::uint32_t kFirstFanGroupId = 101;

template <typename T>
void sendCmi(ose::PROCESS server, ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId, const T& config)
{
    cmi::CMI_SET_CONFIG_REQ_S body{};
    body.header.sigNo = sigNo;
    body.header.clientRef = objectType;
    body.header.objectId = objectId;
    body.header.objectType = objectType;
    std::memcpy(body.config, &config, sizeof config);
    const std::size_t size = sigNo == cmi::CMI_SET_CONFIG_REQ ? sizeof body : sizeof body.header;
    ose::Signal* signal = ose::alloc(static_cast<ose::OSBUFSIZE>(size), sigNo);
    std::memcpy(static_cast<void*>(signal), &body, size);
    ose::send(&signal, server);
}

// A fixed field holds as much of the text as fits, NUL-padded.
template <std::size_t N>
void copyField(char (&field)[N], const std::string& text)
{
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N));
}

cmi::CMI_CABINET_CONFIG_S outdoorCabinet()
{
    cmi::CMI_CABINET_CONFIG_S config{};
    config.parameters[1] = 2;    // numberOfBlowers
    config.parameters[2] = 100;  // flowFactor: fan speed = air flow
    config.parameters[3] = 70;   // nominalFanSpeed
    config.parameters[4] = 20;   // basicFanSpeed
    config.parameters[11] = 100; // placementFactorPSU
    config.parameters[16] = 1;   // fanGroup1Control: internal
    config.parameters[17] = 1;   // fanGroup2Control: internal
    config.parameters[23] = 5;   // heater1OnTemp
    config.parameters[24] = 10;  // heater1OffTemp
    config.parameters[25] = 0;   // heater2OnTemp
    config.parameters[26] = 5;   // heater2OffTemp
    // The SCU's own fan control within its limits, in case it runs alone.
    config.parameters[27] = 20;  // intFanLoTemp
    config.parameters[28] = 35;  // intFanHiTemp
    config.parameters[29] = 30;  // extFanLoUpTemp
    config.parameters[30] = 40;  // extFanHiUpTemp
    config.parameters[31] = 25;  // extFanLoDownTemp
    config.parameters[32] = 35;  // extFanHiDownTemp
    config.parameters[33] = 50;  // extFanSpeedFault
    return config;
}

void configureCabinet(const sim::SimCabinet& cabinet)
{
    ose::PROCESS server = 0;
    while (!ose::hunt(cmi::kServerName, 0, &server, nullptr)) ose::delay(10);
    cmi::CMI_EQUIPMENT_SUPPORT_FUNCTION_CONFIG_S node{};
    node.supportSystemControl = 1;
    std::strncpy(node.logicalName, "site", sizeof node.logicalName - 1);
    sendCmi(server, cmi::CMI_SET_CONFIG_REQ, cmi::kEquipmentSupportFunction, 1, node);
    cmi::CMI_CABINET_CONFIG_S config = outdoorCabinet();
    for (const sim::SimUnit* unit : cabinet.units())
        if (unit->type() == sim::UnitType::SCU)
            if (const auto* scu = dynamic_cast<const sim::SimScu*>(unit)) {
                copyField(config.serialNumber, scu->cabinet().serialNumber);
                copyField(config.productName, scu->cabinet().productName);
                copyField(config.productNumber, scu->cabinet().productNumber);
                copyField(config.productRevision, scu->cabinet().revState);
                copyField(config.productionDate, scu->cabinet().productionDate);
            }
    sendCmi(server, cmi::CMI_SET_CONFIG_REQ, cmi::kCabinet, kCabinetId, config);
    for (std::uint16_t group = 1; group <= 2; ++group) {
        cmi::CMI_FAN_GROUP_CONFIG_S fanGroup{};
        fanGroup.fanGroupId = group;
        fanGroup.parentObjectId = kCabinetId;
        sendCmi(server, cmi::CMI_SET_CONFIG_REQ, cmi::kFanGroup, kFirstFanGroupId + group - 1, fanGroup);
        sendCmi(server, cmi::CMI_SUBSCRIBE_RESOURCE_DATA_REQ, cmi::kFanGroup, kFirstFanGroupId + group - 1, fanGroup);
    }
    sendCmi(server, cmi::CMI_SUBSCRIBE_RESOURCE_DATA_REQ, cmi::kCabinet, kCabinetId, config);
    SSC_TRACE(group(), 4, "node: primary, cabinet %d: outdoor climate, fan groups %d and %d", static_cast<int>(kCabinetId),
              static_cast<int>(kFirstFanGroupId), static_cast<int>(kFirstFanGroupId + 1));
}

// One line for what the cabinet interface tells; empty for anything else.
std::string describeCmi(const std::string& bytes)
{
    if (bytes.size() < sizeof(cmi::CMI_HEADER_S)) return {};
    cmi::CMI_HEADER_S header;
    std::memcpy(&header, bytes.data(), sizeof header);
    const std::string object = header.objectType == cmi::kFanGroup ? "fan group " + std::to_string(header.objectId)
                               : header.objectType == cmi::kCabinet ? "cabinet " + std::to_string(header.objectId)
                                                                    : "node";
    switch (header.sigNo) {
    case cmi::CMI_SET_CONFIG_CFM: return object + ": configured";
    case cmi::CMI_SET_CONFIG_REJ: return object + ": refused, error " + std::to_string(header.word14);
    case cmi::CMI_FAULT_IND: return object + ": fault " + std::to_string(header.word14);
    case cmi::CMI_FAULT_CEASE_IND: return object + ": fault " + std::to_string(header.word14) + " ceased";
    default: return {};
    }
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
        if (line.empty()) line = describeCmi(bytes);
        if (!line.empty()) SSC_TRACE(group(), 4, "%s", line.c_str());
    }

    std::vector<Unit> m_units;
    const sim::SimCabinet* m_pClimateOf; // NIL: units only
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
