// PP answers from the bus: any bytes, read as the confirm of each message of
// the catalogue in turn (the first byte picks it) and as they stand. The
// decoders must stay within the bytes and never take an answer that breaks
// the rules of its list.

#include "fuzz/FuzzTrace.h"
#include "hwu/PpFrameCodec.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // As it came, in a buffer of exactly its size so that any read beyond
    // it is caught.
    std::vector<std::uint8_t> frame(data, data + size);
    PpDeviceData out;
    PpFrameCodec::decodeAnswer(frame.empty() ? nullptr : frame.data(), static_cast<std::uint32_t>(frame.size()), out);
    if (size < 2) return 0;
    // As the confirm of a catalogue message picked by the first byte.
    const auto& entry = pp::kCatalogue[data[0] % std::size(pp::kCatalogue)];
    frame.assign(data + 1, data + size);
    frame[0] = pp::confirmOf(entry.request);
    const bool read = PpFrameCodec::decodeAnswer(frame.data(), static_cast<std::uint32_t>(frame.size()), out);
    // A fixed-size answer is never taken shorter than its catalogue length.
    if (read && entry.answerNeeded != 0 && entry.kind == pp::Kind::Get && frame.size() < entry.answerNeeded) std::abort();
    return 0;
}
