#pragma once
// One LED of a unit as the core believes it to be: what was last set on the
// unit, or not available when the unit cannot tell.

#include <cstdint>

class Led {
public:
    enum Type : std::uint32_t { kFault = 0, kOperational = 1, kFanGroup = 2, kBattery = 3 };
    enum State : std::uint32_t {
        kNotApplicable = 0,
        kNotAvailable = 1,
        kOff = 2,
        kSteadyOn = 3,
        kSlowBlink = 4,
    };

    explicit Led(std::uint32_t type) : m_type(type) {}
    ~Led() = default;

    std::uint32_t getType() const { return m_type; }
    std::uint32_t getLedState() const { return m_state; }
    // A fault LED never blinks: the state stays as it was.
    void setLedState(std::uint32_t state);

    static const char* text(std::uint32_t state);
    // The code of a fault LED state in the units' LED control items: off 0,
    // slow blink 1, steady on 2. False for a state that has none.
    static bool wireCode(std::uint32_t state, std::uint8_t& code);

private:
    std::uint32_t m_type;
    std::uint32_t m_state = kNotAvailable;
};
