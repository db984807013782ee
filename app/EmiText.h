#pragma once
// The equipment management interface in words: an object's name and what a
// signal from the server says, one line each, for people watching a node.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace emi_text {

// "PSU-1", "EFUSE-3"; the objectType's number for one without a name.
std::string objectName(std::uint16_t objectType, std::uint32_t objectId);
// "psu" or "3" to an objectType; nothing for another word.
std::optional<std::uint16_t> objectTypeOf(std::string_view word);
const char* faultText(std::uint16_t faultType);
// "SteadyOn" for an LED state.
std::string ledText(std::uint16_t state);
// The line for a signal of the server ("PSU-1: operational, ..."); empty for
// a signal that is not the server's or is too short to say anything.
std::string describe(const std::string& signalBytes);

} // namespace emi_text
