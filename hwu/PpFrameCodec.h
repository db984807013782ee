#pragma once
// The bytes of PP frames: requests built from their records, confirms read
// into theirs. Nothing here talks to the bus; PpCommunicationHandler does.
// Every read stays within the bytes given, whatever the frame claims.

#include "hwu/PpRecords.h"

#include <array>
#include <cstdint>

class PpFrameCodec {
public:
    using Frame = std::array<std::uint8_t, pp::BCP_A4CI_MAX_DATA_SIZE>;

    // Builds the request `message` with `sequence` from `data`. False with
    // a trace for a message that carries no record, data of another
    // message, or a control item the units do not know.
    static bool encodeSet(pp::MessageNo message, std::uint8_t sequence, const PpSetData& data, Frame& frame,
                          std::uint32_t& length);

    // Reads the confirm in `frame` (`length` bytes received) into `out`.
    // False with a trace for an unknown confirm, a list that breaks its
    // rules, or a frame shorter than what was read from it.
    static bool decodeAnswer(const std::uint8_t* frame, std::uint32_t length, PpDeviceData& out);
};
