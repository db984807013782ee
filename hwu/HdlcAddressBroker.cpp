#include "hwu/HdlcAddressBroker.h"

#include "frame/FuncType.h"
#include "frame/SscTrace.h"

#include <algorithm>

using namespace ssc_trace;
using namespace func_type;

namespace {

struct BaseRow {
    std::uint32_t funcType;
    std::uint32_t first;
    std::uint32_t last; // the end of the range; no computation needs it
};

constexpr std::array<BaseRow, 7> kBaseTable{{
    {kScu, 32, 32},
    {kSau, 33, 33},
    {kClu, 44, 44},
    {kPsu, 48, 63},
    {kBfu, 64, 79},
    {kPdu, 80, 95},
    {kExternalNode, 237, 254},
}};

struct PositionRow {
    std::string_view position;
    std::uint32_t value; // offset from the base address, or the address itself
};

// Searched from the top: where texts share an offset, the first one names it.
constexpr std::array<PositionRow, 23> kOffsetTable{{
    {"A1", 0},  {"A0", 0},  {"B0", 0},  {"B1", 1},  {"A2", 2},  {"B2", 3},  {"A3", 4},  {"B3", 5},
    {"A4", 6},  {"B4", 7},  {"A5", 8},  {"B5", 9},  {"A6", 10}, {"B6", 11}, {"A7", 12}, {"B7", 13},
    {"A8", 14}, {"B8", 15}, {"A", 0},   {"B", 2},   {"C", 13},  {"D", 9},   {"E", 4},
}};

constexpr std::array<PositionRow, 23> kExternalNodeTable{{
    {"A0", 254}, {"B0", 253}, {"A1", 252}, {"B1", 251}, {"A2", 250}, {"B2", 249}, {"A3", 248}, {"B3", 247},
    {"A4", 246}, {"B4", 245}, {"A5", 244}, {"B5", 243}, {"A6", 242}, {"B6", 241}, {"A7", 240}, {"B7", 239},
    {"A8", 238}, {"B8", 237}, {"A", 252},  {"B", 250},  {"C", 240},  {"D", 244},  {"E", 248},
}};

constexpr std::uint32_t kFirstCascadingAddress = 96;
constexpr std::uint32_t kMaxCascadingOrder = 7;
constexpr std::uint32_t kNoOffset = 0xFFFFFFFF;

const BaseRow* findBase(std::uint32_t funcType)
{
    const auto* row = std::find_if(kBaseTable.begin(), kBaseTable.end(),
                                   [funcType](const BaseRow& base) { return base.funcType == funcType; });
    return row != kBaseTable.end() ? row : nullptr;
}

template <std::size_t N>
const PositionRow* findPosition(const std::array<PositionRow, N>& table, std::string_view position)
{
    const auto* row = std::find_if(table.begin(), table.end(),
                                   [position](const PositionRow& entry) { return entry.position == position; });
    return row != table.end() ? row : nullptr;
}

// The units that have one address whatever their socket.
bool hasSingleAddress(std::uint32_t funcType) { return funcType == kScu || funcType == kSau || funcType == kClu; }

} // namespace

std::string_view HubPositionList::text(std::size_t index) const
{
    if (index >= positions.size()) return {};
    const auto& field = positions[index];
    const auto* end = std::find(field.begin(), field.end(), '\0');
    return {field.data(), static_cast<std::size_t>(end - field.begin())};
}

namespace Hdlc {

HubPositionText splitHubPosition(std::string_view hubPosition)
{
    const std::size_t blank = hubPosition.find(' ');
    if (blank == std::string_view::npos) return {kMainPort, hubPosition};
    const std::string_view portWord = hubPosition.substr(0, blank);
    return {portWord == "AUX" ? kAuxPort : kMainPort, hubPosition.substr(blank + 1)};
}

bool getHdlcAddress(std::string_view hubPosition, std::uint32_t funcType, HdlcAddress* address)
{
    const BaseRow* base = findBase(funcType);
    if (base == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Hdlc::getHdlcAddress: Invalid funcType %d supplied.", funcType);
        return false;
    }
    if (hasSingleAddress(funcType)) {
        const bool known = hubPosition.empty() || hubPosition == "NA" ||
                           findPosition(kOffsetTable, hubPosition) != nullptr;
        if (known && address != nullptr) address->address = base->first;
        return known;
    }
    if (hubPosition.empty()) return false;
    const bool externalNode = funcType == kExternalNode;
    const PositionRow* row = findPosition(externalNode ? kExternalNodeTable : kOffsetTable, hubPosition);
    if (row == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Hdlc::getHdlcAddress: Invalid hubposition: \"%.*s\", FuncType = %d supplied",
                  static_cast<int>(hubPosition.size()), hubPosition.data(), funcType);
        return false;
    }
    if (address != nullptr) address->address = externalNode ? row->value : base->first + row->value;
    return true;
}

bool getHdlcAddress(std::string_view hubPosition, HdlcAddress* address)
{
    return getHdlcAddress(hubPosition, kExternalNode, address);
}

bool getHdlcAddresses(const HubPositionList& hubPositions, std::span<HdlcAddress> addresses)
{
    // The count comes from outside: never past the fields nor the room given.
    const std::size_t count =
        std::min({static_cast<std::size_t>(hubPositions.count), HubPositionList::kMaxPositions, addresses.size()});
    bool found = false;
    for (std::size_t index = 0; index < count; ++index)
        found = getHdlcAddress(hubPositions.text(index), &addresses[index]) || found;
    return found;
}

bool getCascadingAddress(std::uint32_t order, HdlcAddress* address)
{
    if (order < 1 || order > kMaxCascadingOrder) return false;
    if (address != nullptr) address->address = kFirstCascadingAddress + order - 1;
    return true;
}

std::string_view getAlreadyInUse() { return "ALREADY_IN_USE"; }

std::string_view getHubPosition(std::uint32_t offset)
{
    const auto* row = std::find_if(kOffsetTable.begin(), kOffsetTable.end(),
                                   [offset](const PositionRow& entry) { return entry.value == offset; });
    return row != kOffsetTable.end() ? row->position : std::string_view{};
}

std::string_view getHubPosition(std::uint32_t funcType, std::uint32_t address)
{
    const std::uint32_t base = getBaseAddress(funcType, address);
    // Below the base there is no socket (and no wrap round to a large offset).
    return address >= base ? getHubPosition(address - base) : getHubPosition(kNoOffset);
}

std::uint32_t getBaseAddress(std::uint32_t funcType, std::uint32_t address)
{
    if (funcType == kScu) return address > 95 ? kFirstCascadingAddress : 32;
    if (funcType == kExternalNode || !findBase(funcType)) return 237;
    return findBase(funcType)->first;
}

} // namespace Hdlc
