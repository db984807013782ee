#pragma once
// One uniform trace block for each signal of the management interfaces:
// the headline ("EMI_SET_CONFIG_REQ signal is received."), then the client's
// pid, its reference, the object's type by name and the object's id.

#include "ose/Types.h"

#include <cstdint>

namespace signal_trace {

// The name of an EMI objectType; "Unknown" beyond the table.
const char* emiObjectTypeName(std::uint16_t objectType);

void emi(const char* headline, ose::PROCESS pid, std::uint32_t clientRef, std::uint16_t objectType,
         std::uint32_t objectId);

// The name of a PMI objectType: the three power objects, then two names
// that the trace table keeps beside them; "Unknown" beyond.
const char* pmiObjectTypeName(std::uint16_t objectType);

void pmi(const char* headline, ose::PROCESS pid, std::uint32_t clientRef, std::uint16_t objectType,
         std::uint32_t objectId);

} // namespace signal_trace
