#pragma once
// The power management interface for people and test programs: the
// requests a client sends, built from readable values (volts, amperes,
// degrees), and what the server's signals say, one line each.

#include "adapters/PmiSignals.h"

#include <cstdint>
#include <map>
#include <string>

namespace pmi_text {

// The request's bytes: a header, with `body` behind it when given.
std::string request(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t clientRef, std::uint16_t word14 = 0,
                    const void* body = nullptr, std::size_t size = 0);

// Configurations from settings such as {"nominal", "-54.5"}. Each starts
// from a working default; false with a message for a setting that is not
// known or not a number in range.
bool supplyConfig(const std::map<std::string, std::string>& settings, std::uint32_t clientRef, std::string& bytes,
                  std::string& error);
bool distributionConfig(const std::map<std::string, std::string>& settings, std::uint32_t clientRef,
                        std::string& bytes, std::string& error);
bool batteryConfig(const std::map<std::string, std::string>& settings, std::uint32_t clientRef, std::string& bytes,
                   std::string& error);
// The names the three accept, for the help text and error messages.
std::string settingNames(std::uint16_t objectType);

// "supply: configured", "battery backup: fault 5 (running on batteries)";
// empty for a signal that is not the server's or is too short.
std::string describe(const std::string& signalBytes);

} // namespace pmi_text
