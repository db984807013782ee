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

ose::Signal* dataReject(std::uint16_t code)
{
    auto* rej = ose::alloc_as<a4ci::A4CI_DATA_REJ_S>(a4ci::A4CI_DATA_REJ);
    rej->errorCode = code;
    return reinterpret_cast<ose::Signal*>(rej);
}

ose::Signal* dataConfirm(std::uint16_t port, std::uint8_t address, const std::string& frame)
{
    const auto size = static_cast<ose::OSBUFSIZE>(a4ci::kDataCfmHeadSize + frame.size());
    ose::Signal* signal = ose::alloc(size, a4ci::A4CI_DATA_CFM);
    auto* cfm = reinterpret_cast<a4ci::A4CI_DATA_CFM_S*>(signal);
    cfm->port = port;
    cfm->address = address;
    cfm->length = static_cast<std::uint16_t>(frame.size());
    std::memcpy(reinterpret_cast<char*>(signal) + a4ci::kDataCfmHeadSize, frame.data(), frame.size());
    return signal;
}

std::string nameOf(const simctl::SIM_VALUE_REQ_S& request)
{
    const char* end = std::find(request.name, request.name + simctl::kNameSize, '\0');
    return std::string(request.name, end);
}

} // namespace

ose::PROCESS A4ciSimServer::start(ose::World& world, ose::Node& node, SimCabinet& cabinet, const std::string& name)
{
    cabinet.setClock([&world] { return world.now(); });
    ose::ProcessSpec spec;
    spec.name = name;
    spec.entry = [&cabinet] { A4ciSimServer(cabinet).run(); };
    const ose::PROCESS pid = world.createProcess(node, spec);
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
        dispatch(signal);
        if (signal != nullptr) ose::free_buf(&signal);
    }
}

void A4ciSimServer::dispatch(ose::Signal* signal)
{
    switch (ose::signalNumber(signal)) {
    case a4ci::A4CI_CONN_ESTABLISH_REQ: handleConnect(signal); break;
    case a4ci::A4CI_DATA_REQ: handleData(signal, false); break;
    case a4ci::A4CI_DATA_FWD: handleData(signal, true); break;
    case simctl::SIM_SET_VALUE_REQ: handleValue(signal, true); break;
    case simctl::SIM_GET_VALUE_REQ: handleValue(signal, false); break;
    case simctl::SIM_FAULT_REQ: handleFault(signal); break;
    case kDeliverLater: deliverDue(signal); break;
    default:
        SSC_TRACE(simGroup(), 5, "A4ciServer: signal 0x%x ignored", static_cast<unsigned>(ose::signalNumber(signal)));
        break;
    }
}

void A4ciSimServer::handleConnect(ose::Signal* signal)
{
    const auto* request = ose::signal_cast<a4ci::A4CI_CONN_ESTABLISH_REQ_S>(signal);
    const bool accept = request != nullptr && request->protocolVersion == a4ci::kProtocolVersion &&
                        !m_cabinet.refuseConnections;
    ose::Signal* answer = ose::alloc(sizeof(a4ci::A4CI_CONN_ESTABLISH_CFM_S),
                                     accept ? a4ci::A4CI_CONN_ESTABLISH_CFM : a4ci::A4CI_CONN_ESTABLISH_REJ);
    reinterpret_cast<a4ci::A4CI_CONN_ESTABLISH_CFM_S*>(answer)->protocolVersion = a4ci::kProtocolVersion;
    if (accept) ++m_cabinet.connections;
    ose::send(&answer, ose::sender(&signal));
}

void A4ciSimServer::handleData(ose::Signal* signal, bool forward)
{
    const ose::PROCESS client = ose::sender(&signal);
    const auto* request = ose::signal_cast<a4ci::A4CI_DATA_REQ_S>(signal);
    if (request == nullptr || request->length > pp::BCP_A4CI_MAX_DATA_SIZE) {
        SSC_TRACE(simGroup(), 5, "A4ciServer: malformed data request refused");
        if (!forward) deliver(dataReject(a4ci::BCP_A4CI_UNEXPECTED_PARAMETER_VALUE), client, 0);
        return;
    }
    BusLogEntry entry;
    entry.timeMs = m_cabinet.now();
    entry.port = request->port;
    entry.address = request->address;
    entry.request.assign(reinterpret_cast<const char*>(request->data), request->length);
    SimUnit* unit = m_cabinet.unit(entry.port, entry.address);
    if (forward) {
        if (unit != nullptr) unit->answer(entry.request, entry.timeMs);
        entry.outcome = BusLogEntry::Outcome::Forwarded;
    } else {
        answerRequest(client, entry.port, entry.address, entry.request, entry);
    }
    m_cabinet.log(std::move(entry));
}

void A4ciSimServer::answerRequest(ose::PROCESS client, std::uint16_t port, std::uint8_t address,
                                  const std::string& request, BusLogEntry& entry)
{
    SimUnit* unit = m_cabinet.unit(port, address);
    if (unit == nullptr) { // nothing on that address: the bus times out at once
        entry.outcome = BusLogEntry::Outcome::Rejected;
        entry.rejectCode = a4ci::BCP_A4CI_TIME_OUT;
        deliver(dataReject(a4ci::BCP_A4CI_TIME_OUT), client, 0);
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
        deliver(dataReject(entry.rejectCode), client, 0);
        return;
    }
    const std::uint32_t delayMs = faults.late.take() ? static_cast<std::uint32_t>(faults.late.value) : 0;
    if (faults.empty.take() || last.empty()) {
        entry.outcome = BusLogEntry::Outcome::Empty;
        deliver(dataConfirm(port, address, {}), client, delayMs);
        return;
    }
    UnitAnswer answer = unit->answer(last, entry.timeMs);
    if (!answer.answered) {
        entry.outcome = BusLogEntry::Outcome::Rejected;
        entry.rejectCode = a4ci::BCP_A4CI_TIME_OUT;
        deliver(dataReject(a4ci::BCP_A4CI_TIME_OUT), client, delayMs + m_cabinet.busTimeoutMs);
        return;
    }
    entry.answer = answer.frame;
    deliver(dataConfirm(port, address, answer.frame), client, delayMs);
}

void A4ciSimServer::deliver(ose::Signal* signal, ose::PROCESS to, std::uint32_t delayMs)
{
    if (delayMs == 0) {
        ose::send(&signal, to);
        return;
    }
    const std::uint32_t ref = m_nextPending++;
    m_pending[ref] = {signal, to};
    auto* marker = ose::alloc_as<DELIVER_LATER_S>(kDeliverLater);
    marker->ref = ref;
    ose::Signal* markerSignal = reinterpret_cast<ose::Signal*>(marker);
    ose::request_tmo(delayMs, &markerSignal);
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

void A4ciSimServer::reject(ose::PROCESS to, ose::SIGSELECT sigNo, const std::string& reason)
{
    auto* rej = ose::alloc_as<simctl::SIM_REJ_S>(sigNo);
    ose::snprintf(rej->reason, sizeof rej->reason, "%s", reason.c_str());
    ose::Signal* signal = reinterpret_cast<ose::Signal*>(rej);
    ose::send(&signal, to);
}

void A4ciSimServer::handleValue(ose::Signal* signal, bool set)
{
    const ose::PROCESS client = ose::sender(&signal);
    const ose::SIGSELECT rejNo = set ? simctl::SIM_SET_VALUE_REJ : simctl::SIM_GET_VALUE_REJ;
    const auto* request = ose::signal_cast<simctl::SIM_VALUE_REQ_S>(signal);
    if (request == nullptr) return reject(client, rejNo, "signal too short");
    SimUnit* unit = m_cabinet.unit(request->port, request->address);
    if (unit == nullptr) return reject(client, rejNo, "no unit at that port and address");
    const std::string name = nameOf(*request);
    if (set && !unit->set(name, request->value)) return reject(client, rejNo, "no value named " + name);
    const auto value = unit->get(name);
    if (!value) return reject(client, rejNo, "no value named " + name);
    auto* cfm = ose::alloc_as<simctl::SIM_VALUE_CFM_S>(set ? simctl::SIM_SET_VALUE_CFM : simctl::SIM_GET_VALUE_CFM);
    cfm->value = *value;
    ose::Signal* answer = reinterpret_cast<ose::Signal*>(cfm);
    ose::send(&answer, client);
}

void A4ciSimServer::handleFault(ose::Signal* signal)
{
    using simctl::FaultKind;
    const ose::PROCESS client = ose::sender(&signal);
    const auto* request = ose::signal_cast<simctl::SIM_FAULT_REQ_S>(signal);
    if (request == nullptr) return reject(client, simctl::SIM_FAULT_REJ, "signal too short");
    SimUnit* unit = m_cabinet.unit(request->port, request->address);
    if (unit == nullptr) return reject(client, simctl::SIM_FAULT_REJ, "no unit at that port and address");
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
    case FaultKind::Replace: unit->replace(ose::format("SIM%08d", value), m_cabinet.now()); break;
    case FaultKind::Restart: unit->restart(m_cabinet.now()); break;
    default: return reject(client, simctl::SIM_FAULT_REJ, "unknown fault kind");
    }
    auto* cfm = ose::alloc_as<simctl::SIM_VALUE_CFM_S>(simctl::SIM_FAULT_CFM);
    ose::Signal* answer = reinterpret_cast<ose::Signal*>(cfm);
    ose::send(&answer, client);
}

} // namespace sim
