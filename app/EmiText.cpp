#include "app/EmiText.h"

#include "adapters/EmiSignals.h"
#include "app/SignalLayout.h"

#include <array>
#include <cstring>

namespace emi_text {

using namespace emi;
using app::layoutOf;

namespace {

constexpr std::array<const char*, 9> kObjectNames{"NODE", "SCU", "SAU", "PSU", "PDU", "BFU", "EFUSE", "PORTGROUP", "CLU"};

template <std::size_t N>
std::string text(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

// The pieces one after the other (appending keeps g++ 12's -O3 restrict
// check quiet, which misreads chains of operator+).
std::string join(std::initializer_list<std::string_view> pieces)
{
    std::string line;
    for (std::string_view piece : pieces) line.append(piece);
    return line;
}

const char* errorText(std::uint16_t errorCode)
{
    switch (errorCode) {
    case 0: return "refused";
    case 1: return "not configured by this client";
    case 2: return "no data";
    default: return "unknown error";
    }
}

} // namespace

std::string objectName(std::uint16_t objectType, std::uint32_t objectId)
{
    const std::string kind = objectType < kObjectNames.size() ? kObjectNames[objectType] : std::to_string(objectType);
    return join({kind, "-", std::to_string(objectId)});
}

std::optional<std::uint16_t> objectTypeOf(std::string_view word)
{
    for (std::size_t type = 0; type < kObjectNames.size(); ++type) {
        const std::string_view name = kObjectNames[type];
        if (word.size() == name.size() &&
            std::equal(word.begin(), word.end(), name.begin(), [](char a, char b) { return std::toupper(a) == b; }))
            return static_cast<std::uint16_t>(type);
    }
    if (word.size() == 1 && word[0] >= '0' && word[0] <= '8') return static_cast<std::uint16_t>(word[0] - '0');
    return std::nullopt;
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
    static constexpr std::array<const char*, 5> kTexts{"NotApplicable", "NotAvailable", "Off", "SteadyOn",
                                                       "SlowBlink"};
    return state < kTexts.size() ? kTexts[state] : "state " + std::to_string(state);
}

std::string describe(const std::string& bytes)
{
    if (bytes.size() < sizeof(EMI_HEADER_S)) return {};
    const auto header = layoutOf<EMI_HEADER_S>(bytes);
    const std::string name = objectName(header.objectType, header.objectId);
    switch (static_cast<std::uint32_t>(header.sigNo)) {
    case EMI_SET_CONFIG_CFM: return join({name, ": configured"});
    case EMI_DELETE_CONFIG_CFM: return join({name, ": deleted"});
    case EMI_SUBSCRIBE_RESOURCE_DATA_CFM: return join({name, ": subscribed"});
    case EMI_UNSUBSCRIBE_RESOURCE_DATA_CFM: return join({name, ": unsubscribed"});
    case EMI_SET_CONFIG_REJ:
    case EMI_SUBSCRIBE_RESOURCE_DATA_REJ:
    case EMI_GET_RESOURCE_DATA_REJ:
    case EMI_GET_UNIT_PRODUCT_DATA_REJ:
    case EMI_GET_UNIT_MEASUREMENT_DATA_REJ: {
        const auto rej = layoutOf<EMI_REJ_S>(bytes);
        return join({name, ": refused, ", errorText(rej.errorCode)});
    }
    case EMI_RESOURCE_DATA_UPDATE_IND:
    case EMI_GET_RESOURCE_DATA_CFM: {
        const auto data = layoutOf<EMI_RESOURCE_DATA_S>(bytes);
        if (header.objectType == kEfuse) return join({name, ": LED ", ledText(data.words[0])});
        return join({name, ": ", data.words[0] != 0 ? "operational" : "not operational", ", operational LED ",
                     ledText(data.words[1]), ", fault LED ", ledText(data.words[2])});
    }
    case EMI_FAULT_IND:
    case EMI_FAULT_CEASE_IND: {
        const auto fault = layoutOf<EMI_FAULT_IND_S>(bytes);
        return join({name, ": fault ", header.sigNo == EMI_FAULT_IND ? "raised: " : "ceased: ",
                     faultText(fault.faultType)});
    }
    case EMI_GET_UNIT_PRODUCT_DATA_CFM: {
        const auto product = layoutOf<EMI_GET_UNIT_PRODUCT_DATA_CFM_S>(bytes);
        return join({name, ": product ", text(product.productNumber), " revision ", text(product.productRevision),
                     ", name ", text(product.productName), ", made ", text(product.productionDate), ", serial ",
                     text(product.serialNumber)});
    }
    case EMI_GET_UNIT_MEASUREMENT_DATA_CFM: {
        const auto values = layoutOf<EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S>(bytes);
        std::string line = join({name, ": measurements"});
        for (const auto& word : values.words) line.append(" ").append(std::to_string(static_cast<std::int32_t>(word)));
        return line;
    }
    case EMI_ACTION_CFM: return join({name, ": action accepted"});
    case EMI_ACTION_IND: return join({name, ": action done"});
    case EMI_ACTION_REJ: {
        const auto rej = layoutOf<EMI_ACTION_REJ_S>(bytes);
        return join({name, ": action refused, ", errorText(rej.errorCode)});
    }
    default: return {};
    }
}

} // namespace emi_text
