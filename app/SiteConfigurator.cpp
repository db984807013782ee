#include "app/SiteConfigurator.h"

#include "adapters/EmiSignals.h"
#include "frame/FuncType.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/Led.h"

#include "ose/Kernel.h"
#include "ose/Trace.h"

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
        unit.name = std::string(func_type::text(kind.funcType)) + "-" + std::to_string(unit.objectId);
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

const char* faultText(std::uint16_t faultType)
{
    static constexpr std::array<const char*, 14> kTexts{
        "unit missing",
        "BFU circuit breaker fault",
        "PSU input voltage high or low",
        "general hardware error",
        "BFU temperature fault",
        "PSU high temperature, class 2",
        "PSU low temperature, class 2",
        "PSU high temperature, class 1",
        "PSU low temperature, class 1",
        "fault type 9",
        "no HDLC address for the hub position",
        "HDLC address or port already in use",
        "fault type 12",
        "hub position conflict"};
    return faultType < kTexts.size() ? kTexts[faultType] : "unknown fault type";
}

std::string ledText(std::uint16_t state)
{
    // "LedState_SteadyOn" reads as "SteadyOn".
    const std::string text = Led::text(state);
    const std::size_t cut = text.find('_');
    return cut == std::string::npos ? text : text.substr(cut + 1);
}

class Configurator {
public:
    explicit Configurator(std::vector<Unit> units) : m_units(std::move(units)) {}

    void run()
    {
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
    const Unit* unitOf(const EMI_HEADER_S& header) const
    {
        for (const Unit& unit : m_units)
            if (unit.objectType == header.objectType && unit.objectId == header.objectId) return &unit;
        return nullptr;
    }

    void report(ose::Signal* signal)
    {
        if (ose::sigsize(&signal) < sizeof(EMI_HEADER_S)) return;
        EMI_RESOURCE_DATA_S in{};
        std::memcpy(&in, signal, std::min<std::size_t>(sizeof in, ose::sigsize(&signal)));
        const Unit* unit = unitOf(in.header);
        if (unit == nullptr) return;
        const char* name = unit->name.c_str();
        switch (ose::signalNumber(signal)) {
        case EMI_RESOURCE_DATA_UPDATE_IND:
            SSC_TRACE(group(), 4, "%s: %s, operational LED %s, fault LED %s", name,
                      in.words[0] != 0 ? "operational" : "not operational", ledText(in.words[1]).c_str(),
                      ledText(in.words[2]).c_str());
            break;
        case EMI_FAULT_IND:
        case EMI_FAULT_CEASE_IND: {
            EMI_FAULT_IND_S fault{};
            std::memcpy(&fault, &in, sizeof fault);
            SSC_TRACE(group(), 4, "%s: fault %s: %s", name,
                      ose::signalNumber(signal) == EMI_FAULT_IND ? "raised" : "ceased", faultText(fault.faultType));
            break;
        }
        case EMI_SET_CONFIG_REJ:
        case EMI_SUBSCRIBE_RESOURCE_DATA_REJ: {
            EMI_REJ_S rej{};
            std::memcpy(&rej, &in, sizeof rej);
            SSC_TRACE(group(), 4, "%s: refused, errorCode %u", name, static_cast<unsigned>(rej.errorCode));
            break;
        }
        default: break;
        }
    }

    std::vector<Unit> m_units;
};

} // namespace

void startSiteConfigurator(ose::World& world, ose::Node& node, const sim::SimCabinet& cabinet)
{
    ose::ProcessSpec spec;
    spec.name = "site_configurator";
    spec.entry = [units = unitsOf(cabinet)] {
        Configurator configurator(units);
        configurator.run();
    };
    world.start(world.createProcess(node, spec));
}

} // namespace site
