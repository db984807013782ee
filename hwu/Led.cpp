#include "hwu/Led.h"

#include "frame/SscTrace.h"

#include <array>

using namespace ssc_trace;

void Led::setLedState(std::uint32_t state)
{
    if (m_type == kFault && state == kSlowBlink) {
        SSC_TRACE(equipmentGroup(), kFlow, "Led::setLedState: Trying to set Fault LED to LedState Flash. No action taken.");
        return;
    }
    m_state = state;
}

bool Led::wireCode(std::uint32_t state, std::uint8_t& code)
{
    switch (state) {
    case kOff: code = 0; return true;
    case kSlowBlink: code = 1; return true;
    case kSteadyOn: code = 2; return true;
    default: return false;
    }
}

const char* Led::text(std::uint32_t state)
{
    static constexpr std::array<const char*, 5> kTexts{"LedState_NotApplicable", "LedState_NotAvailable",
                                                       "LedState_Off", "LedState_SteadyOn", "LedState_SlowBlink"};
    return state < kTexts.size() ? kTexts[state] : "LedState without readable string";
}
