// Hub positions from outside: any bytes as the equipment interface's list of
// node positions (a count and fields of 12 characters) and as texts of each
// kind of function, checked one and two at a time. Nothing may be read
// beyond the bytes, and every address found must lead back to a position
// that gives the same address.

#include "frame/ActiveFaultsRegister.h"
#include "frame/FuncType.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTrace.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/HdlcAddressFacade.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void checkList(const std::uint8_t* data, std::size_t size)
{
    HubPositionList list;
    std::memcpy(&list.count, data, std::min(size, sizeof list.count));
    if (size > sizeof list.count)
        std::memcpy(list.positions.data(), data + sizeof list.count,
                    std::min(size - sizeof list.count, sizeof list.positions));
    std::array<HdlcAddress, 4> addresses;
    Hdlc::getHdlcAddresses(list, addresses);
    for (const HdlcAddress& address : addresses)
        if (address.isValid() && (address.address < 237 || address.address > 254)) std::abort();
}

void checkText(std::string_view text)
{
    // An owned copy of exactly its size, so that a read past it is caught.
    const std::string owned(text);
    const HubPositionText parts = Hdlc::splitHubPosition(owned);
    if (parts.port != Hdlc::kMainPort && parts.port != Hdlc::kAuxPort) std::abort();
    for (std::uint32_t funcType = 0; funcType <= func_type::kClu; ++funcType) {
        HdlcAddress address;
        if (!Hdlc::getHdlcAddress(parts.position, funcType, &address)) continue;
        if (funcType == func_type::kExternalNode) continue;
        const std::string_view back = Hdlc::getHubPosition(funcType, address.address);
        HdlcAddress again;
        if (!Hdlc::getHdlcAddress(back, funcType, &again) || again.address != address.address) std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    checkList(data, size);
    FuzzInput input(data, size);
    const std::string first(input.piece());
    const std::string second(input.piece());
    checkText(first);
    checkText(second);

    ActiveFaultsRegister faults;
    HdlcAddressFacade facade(faults);
    const std::array<std::string_view, 2> both{first, second};
    const FuncId_t node{func_type::kEquipSupFunc, 1};
    const bool one = facade.checkHubPositions(std::span(both).first(1), node);
    const bool two = facade.checkHubPositions(both, node);
    // A good first position is never refused, alone or with another.
    if (one && !two) std::abort();
    return 0;
}
