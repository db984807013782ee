#pragma once
// The cabinet management interface for people and test programs: the
// requests a client sends (an outdoor cabinet's configuration among them)
// and what the server's signals say, one line each.

#include "adapters/CmiSignals.h"

#include <cstdint>
#include <string>

namespace cmi_text {

// The object layer's configuration of an outdoor cabinet: two internal fan
// groups at least at 20 %, the PSUs' hot spots fully placed, the SCU's
// heaters between 5 and 10 degrees and its own fan control within its
// limits.
cmi::CMI_CABINET_CONFIG_S outdoorCabinet();
// The signal's bytes; `config` goes behind the header of a CMI_SET_CONFIG_REQ.
std::string request(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId, std::uint32_t clientRef,
                    const void* config = nullptr, std::size_t size = 0);
std::string nodeConfig(bool primary, const std::string& logicalName);
std::string fanGroupConfig(std::uint32_t objectId, std::uint16_t fanGroupId, std::uint32_t cabinetId,
                           std::uint32_t clientRef);
std::string startReport(std::uint32_t objectId, std::uint16_t periodicity, std::uint32_t clientRef);

// A fixed field holds as much of the text as fits, NUL-padded.
template <std::size_t N>
void copyField(char (&field)[N], const std::string& text)
{
    for (std::size_t i = 0; i < N; ++i) field[i] = i < text.size() ? text[i] : '\0';
}

// "cabinet 0: configured", "fan group 101: fault 5 (fan group failure)";
// empty for a signal that is not the server's or is too short.
std::string describe(const std::string& signalBytes);

} // namespace cmi_text
