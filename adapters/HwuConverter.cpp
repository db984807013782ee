#include "adapters/HwuConverter.h"

#include "frame/SscTrace.h"

#include <array>
#include <cmath>
#include <cstring>

using namespace ssc_trace;

namespace hwu_converter {

namespace {

// FuncType 1 to 21.
constexpr std::array<std::uint16_t, 21> kObjectTypes{3, 5, 0, 0, 1, 2, 4, 0, 0, 0, 0,
                                                     0, 0, 0, 0, 0, 0, 0, 6, 0, 8};

// A measured float as a word: cut toward zero, held within the word.
std::int32_t wordOf(float value)
{
    if (std::isnan(value)) return 0;
    const float held = std::fmax(std::fmin(value, 2147483520.0F), -2147483648.0F);
    return static_cast<std::int32_t>(held);
}

void putU16(ose::be_u8* at, std::uint16_t value)
{
    at[0] = static_cast<std::uint8_t>(value >> 8);
    at[1] = static_cast<std::uint8_t>(value);
}

} // namespace

std::uint16_t objectTypeOf(std::uint32_t funcType)
{
    return funcType >= 1 && funcType <= kObjectTypes.size() ? kObjectTypes[funcType - 1] : 0;
}

std::uint16_t ledOnWire(std::uint32_t state) { return state <= 4 ? static_cast<std::uint16_t>(state) : 0; }

bool createEmiResourceStatusDataUnionU(std::uint16_t objectType, const HwuStatusRecord& status,
                                       ose::be_u16 (&words)[emi::kResourceDataSize / 2])
{
    words[0] = status.available;
    words[1] = ledOnWire(status.operationalLed);
    words[2] = ledOnWire(status.faultLed);
    switch (objectType) {
    case emi::kScu:
    case emi::kSau:
    case emi::kPsu:
    case emi::kClu: words[3] = status.commOk; return true;
    case emi::kPdu:
        words[3] = ledOnWire(status.powerDistrFaultIndicator);
        words[4] = status.commOk;
        return true;
    case emi::kBfu:
        words[3] = ledOnWire(status.batteryFaultIndicator);
        words[4] = status.commOk;
        return true;
    default:
        SSC_TRACE(swuGroup(), kUnexpected,
                  "HwuConverter::createEmiResourceStatusDataUnionU: Conversion unable, unrecognized object type "
                  "received: %d",
                  objectType);
        return false;
    }
}

bool createEmiMeasuredStatusDataUnionU(std::uint16_t objectType, const HwuMeasurementRecord& record,
                                       ose::be_i32 (&words)[4])
{
    const auto& v = record.values;
    switch (objectType) {
    case emi::kScu: words[0] = static_cast<std::int8_t>(wordOf(v[0])); return true;
    case emi::kPsu:
        for (std::size_t index = 0; index < 4; ++index) words[index] = wordOf(v[index]);
        return true;
    case emi::kPdu: words[0] = wordOf(v[0]); return true;
    case emi::kBfu:
        // The BFU's words: current, temperature, voltage.
        words[0] = wordOf(v[1]);
        words[1] = wordOf(v[2]);
        words[2] = wordOf(v[0]);
        return true;
    default:
        SSC_TRACE(swuGroup(), kUnexpected,
                  "HwuConverter::createEmiMeasuredStatusDataUnionU: Conversion unable, unrecognized object type "
                  "received: %d",
                  objectType);
        return false;
    }
}

void createClimateReport(const ScuClimateParams& params, ose::be_u8 (&result)[emi::kActionResultSize])
{
    std::memset(result, 0, sizeof result);
    putU16(&result[0], params.availableHw);
    putU16(&result[2], params.scuFlags);
    putU16(&result[4], params.availableExternalInputs);
    result[6] = params.availableFanGroups;
    for (std::size_t index = 0; index < params.controlOutputsAndLimits.size(); ++index)
        result[7 + index] = static_cast<std::uint8_t>(params.controlOutputsAndLimits[index]);
    result[30] = static_cast<std::uint8_t>(params.temperature);
    result[31] = params.connectedFans;
    result[32] = params.fanGroupFailure;
}

} // namespace hwu_converter
