#include "sim/SimUnit.h"

#include "hwu/PpMessages.h"

#include <array>

namespace sim {

namespace {

constexpr std::array<const char*, 6> kTypeNames = {"SCU", "SAU", "CLU", "PSU", "BFU", "PDU"};

// The cause a unit gives for a request it cannot take.
constexpr std::uint8_t kCauseUnknownMessage = 1;
constexpr std::uint8_t kCauseBadLength = 2;

} // namespace

void writeProduct(SimFrame& frame, const ProductStrings& product)
{
    frame.text(product.productNumber, pp::kProductNumberSize);
    frame.text(product.revState, pp::kRevStateSize);
    frame.text(product.productName, pp::kProductNameSize);
    frame.text(product.productionDate, pp::kProductionDateSize);
    frame.text(product.serialNumber, pp::kSerialNumberSize);
}

const char* unitTypeName(UnitType type) { return kTypeNames[static_cast<std::size_t>(type)]; }

std::optional<UnitType> unitTypeFromName(std::string_view name)
{
    for (std::size_t i = 0; i < kTypeNames.size(); ++i)
        if (name == kTypeNames[i]) return static_cast<UnitType>(i);
    return std::nullopt;
}

SimUnit::SimUnit(UnitType type, std::uint16_t port, std::uint8_t address, std::span<const ValueDefinition> definitions)
    : m_type(type), m_port(port), m_address(address), m_definitions(definitions)
{
    m_values.reserve(definitions.size());
    for (const ValueDefinition& definition : definitions) m_values.push_back(definition.initial);
    m_product = {"KDU 137 000/1", "R1A", unitTypeName(type), "20260101", "SIM00000001"};
}

std::optional<std::size_t> SimUnit::indexOf(std::string_view name) const
{
    for (std::size_t i = 0; i < m_definitions.size(); ++i)
        if (name == m_definitions[i].name) return i;
    return std::nullopt;
}

std::optional<std::int32_t> SimUnit::get(std::string_view name) const
{
    if (name == "startFlag") return m_startFlag ? 1 : 0;
    const auto index = indexOf(name);
    if (!index) return std::nullopt;
    return m_values[*index];
}

bool SimUnit::set(std::string_view name, std::int32_t value)
{
    if (name == "startFlag") {
        m_startFlag = value != 0;
        return true;
    }
    const auto index = indexOf(name);
    if (!index) return false;
    m_values[*index] = value;
    return true;
}

std::string SimUnit::lastPayload(std::uint8_t message) const
{
    const auto found = m_lastPayload.find(message);
    return found != m_lastPayload.end() ? found->second : std::string();
}

void SimUnit::restart(std::uint64_t nowMs)
{
    m_bootUntilMs = nowMs + m_bootMs;
    m_startFlag = true;
    m_lastIndication = 0;
    onRestart();
}

void SimUnit::replace(const std::string& serialNumber, std::uint64_t nowMs)
{
    m_product.serialNumber = serialNumber;
    restart(nowMs);
}

UnitAnswer SimUnit::answer(const std::string& frame, std::uint64_t nowMs)
{
    if (isBooting(nowMs) || frame.size() < 2 || m_faults.silent.take()) return {};
    SimRequest request(frame);
    const std::uint8_t message = request.message();
    m_lastPayload[message] = frame.substr(2);
    if (message == pp::CC_RESET_FWD) {
        restart(nowMs);
        return {};
    }
    if (!m_faults.rawAnswers.empty()) {
        UnitAnswer raw{true, std::move(m_faults.rawAnswers.front())};
        m_faults.rawAnswers.pop_front();
        return raw;
    }
    SimFrame confirm;
    std::optional<std::int32_t> cause;
    if (m_faults.ppReject.take())
        cause = m_faults.ppReject.value;
    else if (message == pp::CC_HW_PID_REQ && m_faults.noProductData.take())
        cause = m_faults.noProductData.value;
    if (cause) {
        confirm.u8(pp::rejectOf(message));
        confirm.u8(request.sequence());
        confirm.u8(static_cast<std::uint8_t>(*cause));
        return {true, confirm.bytes()};
    }
    confirm.u8(pp::confirmOf(message));
    confirm.u8(request.sequence());
    Handled handled = answerCommon(request, confirm);
    if (handled == Handled::Unknown) handled = answerTyped(request, confirm);
    if (handled == Handled::Answered) return {true, confirm.bytes()};
    SimFrame reject;
    reject.u8(pp::rejectOf(message));
    reject.u8(request.sequence());
    reject.u8(handled == Handled::Unknown ? kCauseUnknownMessage : kCauseBadLength);
    return {true, reject.bytes()};
}

SimUnit::Handled SimUnit::answerCommon(SimRequest& request, SimFrame& confirm)
{
    switch (request.message()) {
    case pp::CC_CLEAR_START_FLAG_REQ:
        m_startFlag = false;
        return Handled::Answered;
    case pp::CC_HW_PID_REQ: writeProduct(confirm, m_product); return Handled::Answered;
    case pp::CC_VISUAL_INDICATION_REQ: {
        const std::uint8_t code = request.u8();
        if (!request.complete()) return Handled::Malformed;
        m_lastIndication = code;
        return Handled::Answered;
    }
    default: return Handled::Unknown;
    }
}

} // namespace sim
