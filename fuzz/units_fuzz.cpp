// Answers of units from the bus, seen by the unit objects: one unit of the
// kind the first byte picks is configured under the broker and polled for
// some seconds, and every exchange on the bus is answered from the input
// (nothing, a confirm of the request, a reject, or bytes as they stand).
// The units must stay within the bytes, and their records sane, whatever
// the flags, counts, strings and values say.

#include "frame/ActiveFaultsRegister.h"
#include "frame/FuncType.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTrace.h"
#include "hwu/HWU_Broker.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/PpCommunicationService.h"
#include "hwu/PpMessages.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "frame/TimerService.h"
#include "platform/WLOsHandler.h"
#include "platform/WLTimerHandler.h"

#include "ose/World.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::array<std::uint32_t, 6> kKinds{func_type::kScu, func_type::kPsu, func_type::kBfu,
                                              func_type::kPdu, func_type::kSau, func_type::kClu};

// The bus as the input says it is.
class FuzzBus : public PpCommunicationHandler {
public:
    explicit FuzzBus(FuzzInput& input) : m_input(input) {}

    bool sendCommand(std::uint32_t, std::uint32_t inLength, const std::uint8_t* data, std::uint32_t bufferLength,
                     std::uint32_t* outLength, std::uint8_t* out, bool waitForAnswer, std::uint32_t) override
    {
        if (outLength != nullptr) *outLength = 0;
        const std::uint8_t how = m_input.byte();
        if (!waitForAnswer) return (how & 1U) != 0;
        if ((how & 1U) == 0 || out == nullptr || bufferLength == 0) return false;
        const std::string_view piece = m_input.piece();
        const std::uint32_t length = std::min<std::uint32_t>(static_cast<std::uint32_t>(piece.size()), bufferLength);
        std::memcpy(out, piece.data(), length);
        if (length > 0 && inLength > 0 && data != nullptr && (how & 2U) != 0)
            out[0] = (how & 4U) != 0 ? pp::rejectOf(data[0]) : pp::confirmOf(data[0]);
        if (outLength != nullptr) *outLength = static_cast<std::uint32_t>(piece.size());
        return true;
    }

private:
    FuzzInput& m_input;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const std::uint32_t kind = kKinds[data[0] % kKinds.size()];
    FuzzInput input(data + 1, size - 1);
    ActiveFaultsRegister faults;
    HwuUnitFactory factory;
    ose::World world;
    ose::ProcessSpec core;
    core.name = "SSC_THREAD";
    core.entry = [&input, &faults, &factory, kind] {
        WLOsHandler os;
        OsService::setHandler(&os);
        SignalDispatcher dispatcher;
        WLTimerHandler timers(&dispatcher);
        TimerService::setHandler(&timers);
        FuzzBus bus(input);
        PpCommunicationService::setHandler(&bus);
        struct ServicesReset {
            ~ServicesReset()
            {
                PpCommunicationService::setHandler(nullptr);
                TimerService::setHandler(nullptr);
                OsService::setHandler(nullptr);
            }
        } reset;
        HWU_Broker broker(faults, factory);
        const bool singleAddress = kind == func_type::kScu || kind == func_type::kSau || kind == func_type::kClu;
        broker.configureHwu(FuncId_t{kind, 1}, singleAddress ? "" : "A1", 0, 0);
        dispatcher.run();
    };
    world.start(world.createProcess(world.defaultNode(), core));
    world.runFor(12'000);
    return 0;
}
