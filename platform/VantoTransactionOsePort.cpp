#include "platform/VantoTransactionOsePort.h"

#include "platform/VantoTransactionSignals.h"
#include "platform/VantoTransactionTrace.h"

#include "ose/Kernel.h"

#include <cstring>

using namespace vanto_trans;

std::vector<std::uint8_t> VantoTransactionOsePort::request(const std::vector<std::uint8_t>& signal,
                                                           std::uint32_t replyNo, std::uint32_t timeoutMs)
{
    ose::PROCESS server = 0;
    if (signal.size() < 8 || !ose::hunt(kServerName, 0, &server, nullptr) || server == 0) {
        SSC_TRACE(vtpGroup(), 1, "Transaction Server not found");
        return {};
    }
    ose::Signal* out = ose::alloc(static_cast<ose::OSBUFSIZE>(signal.size()), ose::loadBe32(signal.data()));
    if (out == nullptr)
        return {};
    std::memcpy(out, signal.data(), signal.size());
    ose::send(&out, server);

    const std::uint32_t clientRef = ose::loadBe32(signal.data() + 4);
    const std::uint64_t deadline = ose::get_time_ms() + timeoutMs;
    const ose::SIGSELECT selector[] = {1, replyNo};
    for (std::uint64_t now = ose::get_time_ms(); now < deadline; now = ose::get_time_ms()) {
        ose::Signal* answer = ose::receive_from(static_cast<ose::OSTIME>(deadline - now), selector, server);
        if (answer == nullptr)
            break;
        const ose::OSBUFSIZE size = ose::sigsize(&answer);
        if (size >= 8 && ose::loadBe32(reinterpret_cast<const std::uint8_t*>(answer) + 4) == clientRef) {
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(answer);
            std::vector<std::uint8_t> result(bytes, bytes + size);
            ose::free_buf(&answer);
            return result;
        }
        // The answer to an earlier request that was given up.
        SSC_TRACE(vtpGroup(), 5, "Late answer 0x%x of %u bytes dropped", replyNo, size);
        ose::free_buf(&answer);
    }
    SSC_TRACE(vtpGroup(), 1, "No answer 0x%x from the transaction server within %u ms", replyNo, timeoutMs);
    return {};
}
