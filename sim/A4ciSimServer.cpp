#include "sim/A4ciSimServer.h"

#include "hwu/A4ciSignals.h"
#include "sim/SimControlSignals.h"

#include "ose/Format.h"
#include "ose/Kernel.h"
#include "ose/Trace.h"
#include "ose/World.h"

#include <algorithm>
#include <cstring>

namespace sim {

namespace {

inline ose::TraceGroupId simGroup() { return ose::traceGroup<"sim">(); }

// A late answer waits under this time-out signal, which carries its reference.
constexpr ose::SIGSELECT kDeliverLater = 0x1707F01;
struct DELIVER_LATER_S {
    ose::be_u32 sigNo;
    ose::be_u32 ref;
};
OSE_SIGNAL_LAYOUT(DELIVER_LATER_S, 8);

std::uint32_t key(std::uint16_t port, std::uint8_t address) { return (std::uint32_t{port} << 8) | address; }

// A received signal's bytes seen as its layout; NIL when too short.
template <typename T>
const T* view(const std::string& signal)
{
    return signal.size() >= sizeof(T) ? reinterpret_cast<const T*>(signal.data()) : nullptr;
}

template <typename T>
std::string bytesOf(const T& layout)
{
    return std::string(reinterpret_cast<const char*>(&layout), sizeof layout);
}

std::string dataReject(std::uint16_t code)
{
    a4ci::A4CI_DATA_REJ_S rej{};
    rej.sigNo = a4ci::A4CI_DATA_REJ;
    rej.errorCode = code;
    return bytesOf(rej);
}

std::string dataConfirm(std::uint16_t port, std::uint8_t address, const std::string& frame)
{
    a4ci::A4CI_DATA_CFM_S head{};
    head.sigNo = a4ci::A4CI_DATA_CFM;
    head.port = port;
    head.address = address;
    head.length = static_cast<std::uint16_t>(frame.size());
    return bytesOf(head) + frame;
}

std::string nameOf(const simctl::SIM_VALUE_REQ_S& request)
{
    const char* end = std::find(request.name, request.name + simctl::kNameSize, '\0');
    return std::string(request.name, end);
}

} // namespace

ose::PROCESS A4ciSimServer::start(ose::World& world, ose::Node& node, SimCabinet& cabinet, const std::string& name)
{
    ose::ProcessSpec definition;
    definition.name = name;
    definition.entry = [&cabinet] { A4ciSimServer(cabinet).run(); };
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}

// Answers still waiting when the process goes are dropped with it.
A4ciSimServer::~A4ciSimServer()
{
    for (auto& [ref, pending] : m_pending) ose::free_buf(&pending.signal);
}

void A4ciSimServer::run()
{
    for (;;) {
        ose::Signal* signal = ose::receive(ose::kAnySignal);
        if (ose::signalNumber(signal) == kDeliverLater) {
            deliverDue(signal);
        } else {
            const std::string bytes(reinterpret_cast<const char*>(signal), ose::sigsize(&signal));
            sendFromProcess(handle(bytes, ose::sender(&signal), ose::get_time_ms()));
        }
        ose::free_buf(&signal);
    }
}

std::vector<A4ciSimServer::Outgoing> A4ciSimServer::handle(const std::string& signal, ose::PROCESS from,
                                                           std::uint64_t nowMs)
{
    m_client = from;
    m_nowMs = nowMs;
    m_outgoing.clear();
    m_cabinet.advancePlant(nowMs);
    const ose::SIGSELECT sigNo = signal.size() >= 4 ? ose::loadBe32(signal.data()) : 0;
    switch (sigNo) {
    case a4ci::A4CI_CONN_ESTABLISH_REQ: handleConnect(signal); break;
    case a4ci::A4CI_DATA_REQ: handleData(signal, false); break;
    case a4ci::A4CI_DATA_FWD: handleData(signal, true); break;
    case simctl::SIM_SET_VALUE_REQ: handleValue(signal, true); break;
    case simctl::SIM_GET_VALUE_REQ: handleValue(signal, false); break;
    case simctl::SIM_FAULT_REQ: handleFault(signal); break;
    case simctl::SIM_RAW_ANSWER_REQ: handleRawAnswer(signal); break;
    default: SSC_TRACE(simGroup(), 5, "A4ciServer: signal 0x%x ignored", static_cast<unsigned>(sigNo)); break;
    }
    return std::move(m_outgoing);
}

void A4ciSimServer::reply(std::string bytes, std::uint32_t delayMs)
{
    m_outgoing.push_back({std::move(bytes), m_client, delayMs});
}

void A4ciSimServer::handleConnect(const std::string& signal)
{
    const auto* request = view<a4ci::A4CI_CONN_ESTABLISH_REQ_S>(signal);
    const bool accept = request != nullptr && request->protocolVersion == a4ci::kProtocolVersion &&
                        !m_cabinet.refuseConnections;
    a4ci::A4CI_CONN_ESTABLISH_CFM_S answer{};
    answer.sigNo = accept ? a4ci::A4CI_CONN_ESTABLISH_CFM : a4ci::A4CI_CONN_ESTABLISH_REJ;
    answer.protocolVersion = a4ci::kProtocolVersion;
    if (accept) ++m_cabinet.connections;
    reply(bytesOf(answer));
}

void A4ciSimServer::handleData(const std::string& signal, bool forward)
{
    const auto* request = view<a4ci::A4CI_DATA_REQ_S>(signal);
    if (request == nullptr || request->length > pp::BCP_A4CI_MAX_DATA_SIZE) {
        SSC_TRACE(simGroup(), 5, "A4ciServer: malformed data request refused");
        if (!forward) reply(dataReject(a4ci::BCP_A4CI_UNEXPECTED_PARAMETER_VALUE));
        return;
    }
    BusLogEntry entry;
    entry.timeMs = m_nowMs;
    entry.port = request->port;
    entry.address = request->address;
    entry.request.assign(reinterpret_cast<const char*>(request->data), request->length);
    SimUnit* unit = m_cabinet.unit(entry.port, entry.address);
    if (forward) {
        if (unit != nullptr) unit->answer(entry.request, entry.timeMs);
        entry.outcome = BusLogEntry::Outcome::Forwarded;
    } else {
        answerRequest(entry.port, entry.address, entry.request, entry);
    }
    m_cabinet.log(std::move(entry));
}

void A4ciSimServer::answerRequest(std::uint16_t port, std::uint8_t address, const std::string& request,
                                  BusLogEntry& entry)
{
    SimUnit* unit = m_cabinet.unit(port, address);
    if (unit == nullptr) { // nothing on that address: the bus times out at once
        entry.outcome = BusLogEntry::Outcome::Rejected;
        entry.rejectCode = a4ci::BCP_A4CI_TIME_OUT;
        reply(dataReject(a4ci::BCP_A4CI_TIME_OUT));
        return;
    }
    // An empty request asks again for the answer to the last one.
    std::string& last = m_lastRequest[key(port, address)];
    if (!request.empty()) last = request;
    UnitFaults& faults = unit->faults();
    if (faults.noAnswer.take()) {
        entry.outcome = BusLogEntry::Outcome::NoAnswer;
        return;
    }
    if (faults.a4ciReject.take()) {
        entry.outcome = BusLogEntry::Outcome::Rejected;
        entry.rejectCode = static_cast<std::uint16_t>(faults.a4ciReject.value);
        reply(dataReject(entry.rejectCode));
        return;
    }
    const std::uint32_t delayMs = faults.late.take() ? static_cast<std::uint32_t>(faults.late.value) : 0;
    if (faults.empty.take() || last.empty()) {
        entry.outcome = BusLogEntry::Outcome::Empty;
        reply(dataConfirm(port, address, {}), delayMs);
        return;
    }
    UnitAnswer answer = unit->answer(last, m_nowMs);
    if (!answer.answered) {
        entry.outcome = BusLogEntry::Outcome::Rejected;
        entry.rejectCode = a4ci::BCP_A4CI_TIME_OUT;
        reply(dataReject(a4ci::BCP_A4CI_TIME_OUT), delayMs + m_cabinet.busTimeoutMs);
        return;
    }
    entry.answer = answer.frame;
    reply(dataConfirm(port, address, answer.frame), delayMs);
}

void A4ciSimServer::sendFromProcess(std::vector<Outgoing> outgoing)
{
    for (Outgoing& out : outgoing) {
        ose::Signal* signal = ose::alloc(static_cast<ose::OSBUFSIZE>(out.bytes.size()), 0);
        std::memcpy(signal, out.bytes.data(), out.bytes.size());
        if (out.delayMs == 0) {
            ose::send(&signal, out.to);
            continue;
        }
        const std::uint32_t ref = m_nextPending++;
        m_pending[ref] = {signal, out.to};
        auto* marker = ose::alloc_as<DELIVER_LATER_S>(kDeliverLater);
        marker->ref = ref;
        ose::Signal* markerSignal = reinterpret_cast<ose::Signal*>(marker);
        ose::request_tmo(out.delayMs, &markerSignal);
    }
}

void A4ciSimServer::deliverDue(ose::Signal* marker)
{
    const auto* later = ose::signal_cast<DELIVER_LATER_S>(marker);
    if (later == nullptr) return;
    const auto found = m_pending.find(later->ref);
    if (found == m_pending.end()) return;
    Pending pending = found->second;
    m_pending.erase(found);
    ose::send(&pending.signal, pending.to);
}

void A4ciSimServer::reject(ose::SIGSELECT sigNo, const std::string& reason)
{
    simctl::SIM_REJ_S rej{};
    rej.sigNo = sigNo;
    ose::snprintf(rej.reason, sizeof rej.reason, "%s", reason.c_str());
    reply(bytesOf(rej));
}

void A4ciSimServer::handleValue(const std::string& signal, bool set)
{
    const ose::SIGSELECT rejNo = set ? simctl::SIM_SET_VALUE_REJ : simctl::SIM_GET_VALUE_REJ;
    const auto* request = view<simctl::SIM_VALUE_REQ_S>(signal);
    if (request == nullptr) return reject(rejNo, "signal too short");
    SimUnit* unit = m_cabinet.unit(request->port, request->address);
    if (unit == nullptr) return reject(rejNo, "no unit at that port and address");
    const std::string name = nameOf(*request);
    if (set && !unit->set(name, request->value)) return reject(rejNo, "no value named " + name);
    const auto value = unit->get(name);
    if (!value) return reject(rejNo, "no value named " + name);
    simctl::SIM_VALUE_CFM_S cfm{};
    cfm.sigNo = set ? simctl::SIM_SET_VALUE_CFM : simctl::SIM_GET_VALUE_CFM;
    cfm.value = *value;
    reply(bytesOf(cfm));
}

void A4ciSimServer::handleFault(const std::string& signal)
{
    using simctl::FaultKind;
    const auto* request = view<simctl::SIM_FAULT_REQ_S>(signal);
    if (request == nullptr) return reject(simctl::SIM_FAULT_REJ, "signal too short");
    if (static_cast<std::uint16_t>(request->kind) >= static_cast<std::uint16_t>(FaultKind::MainsLoss))
        return handlePlantEvent(*request);
    SimUnit* unit = m_cabinet.unit(request->port, request->address);
    if (unit == nullptr) return reject(simctl::SIM_FAULT_REJ, "no unit at that port and address");
    UnitFaults& faults = unit->faults();
    const std::uint32_t count = request->count;
    const std::int32_t value = request->value;
    switch (static_cast<FaultKind>(static_cast<std::uint16_t>(request->kind))) {
    case FaultKind::Clear: faults.clear(); break;
    case FaultKind::Silent: faults.silent.arm(count); break;
    case FaultKind::Late: faults.late.arm(count, value); break;
    case FaultKind::Empty: faults.empty.arm(count); break;
    case FaultKind::A4ciReject: faults.a4ciReject.arm(count, value); break;
    case FaultKind::PpReject: faults.ppReject.arm(count, value); break;
    case FaultKind::NoAnswer: faults.noAnswer.arm(count); break;
    case FaultKind::StartFlag: unit->setStartFlag(true); break;
    case FaultKind::Replace: unit->replace(ose::format("SIM%08d", value), m_nowMs); break;
    case FaultKind::Restart: unit->restart(m_nowMs); break;
    case FaultKind::NoProductData: faults.noProductData.arm(count, value); break;
    default: return reject(simctl::SIM_FAULT_REJ, "unknown fault kind");
    }
    simctl::SIM_VALUE_CFM_S cfm{};
    cfm.sigNo = simctl::SIM_FAULT_CFM;
    reply(bytesOf(cfm));
}

void A4ciSimServer::handlePlantEvent(const simctl::SIM_FAULT_REQ_S& request)
{
    using simctl::FaultKind;
    if (!m_cabinet.plant) return reject(simctl::SIM_FAULT_REJ, "this site has no plant");
    Plant& plant = *m_cabinet.plant;
    const std::int32_t value = request.value;
    switch (static_cast<FaultKind>(static_cast<std::uint16_t>(request.kind))) {
    case FaultKind::MainsLoss: plant.electrical().setMains(false); break;
    case FaultKind::MainsReturn: plant.electrical().setMains(true); break;
    case FaultKind::FanFailure: if (!setFans(plant, value, FanState::Failed)) return; break;
    case FaultKind::FanRepair: if (!setFans(plant, value, FanState::Working)) return; break;
    case FaultKind::FanBlocked: if (!setFans(plant, value, FanState::Blocked)) return; break;
    case FaultKind::Ambient: plant.thermal().setAmbientC(value); break;
    case FaultKind::BatteryCellFault: plant.electrical().failCell(); break;
    default: return reject(simctl::SIM_FAULT_REJ, "unknown fault kind");
    }
    simctl::SIM_VALUE_CFM_S cfm{};
    cfm.sigNo = simctl::SIM_FAULT_CFM;
    reply(bytesOf(cfm));
}

bool A4ciSimServer::setFans(Plant& plant, std::int32_t value, FanState state)
{
    const auto groups = static_cast<std::int32_t>(ThermalModel::kFanGroups);
    const auto fans = static_cast<std::int32_t>(ThermalModel::kFansPerGroup);
    const bool wholeGroup = value >= 1 && value <= groups;
    const bool oneFan = value / 10 >= 1 && value / 10 <= groups && value % 10 >= 1 && value % 10 <= fans;
    if (!wholeGroup && !oneFan) {
        reject(simctl::SIM_FAULT_REJ, "no fan " + std::to_string(value) + " (a group 1 to 4, or 10 x group + fan)");
        return false;
    }
    const auto group = static_cast<std::uint32_t>(wholeGroup ? value - 1 : value / 10 - 1);
    for (std::uint32_t fan = 0; fan < ThermalModel::kFansPerGroup; ++fan)
        if (wholeGroup || static_cast<std::int32_t>(fan) == value % 10 - 1) plant.thermal().setFan(group, fan, state);
    return true;
}

void A4ciSimServer::handleRawAnswer(const std::string& signal)
{
    const auto* request = view<simctl::SIM_RAW_ANSWER_REQ_S>(signal);
    if (request == nullptr) return reject(simctl::SIM_RAW_ANSWER_REJ, "signal too short");
    if (request->length > simctl::kRawAnswerSize) return reject(simctl::SIM_RAW_ANSWER_REJ, "answer too long");
    SimUnit* unit = m_cabinet.unit(request->port, request->address);
    if (unit == nullptr) return reject(simctl::SIM_RAW_ANSWER_REJ, "no unit at that port and address");
    unit->faults().rawAnswers.emplace_back(reinterpret_cast<const char*>(request->frame), request->length);
    simctl::SIM_VALUE_CFM_S cfm{};
    cfm.sigNo = simctl::SIM_RAW_ANSWER_CFM;
    reply(bytesOf(cfm));
}

} // namespace sim
