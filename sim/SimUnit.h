#pragma once
// A simulated unit on the EC bus: its values (measurements, status flags,
// capabilities and the settings it was sent), its product identity, its
// start flag and boot, and the faults that a test makes it show. Each unit
// type answers its own PP messages; this base answers the common ones.

#include "sim/SimFrame.h"

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

enum class UnitType : std::uint8_t { SCU, SAU, CLU, PSU, BFU, PDU };
const char* unitTypeName(UnitType type);
std::optional<UnitType> unitTypeFromName(std::string_view name);

// One named value of a unit type and its value after power-up.
struct ValueDefinition {
    const char* name;
    std::int32_t initial;
};

struct ProductStrings {
    std::string productNumber;
    std::string revState;
    std::string productName;
    std::string productionDate;
    std::string serialNumber;
};

// The 68 bytes of product identity as a unit sends them.
void writeProduct(SimFrame& frame, const ProductStrings& product);

// A fault that affects the next `remaining` requests, or every request
// until cleared when `remaining` is 0.
struct CountedFault {
    bool active = false;
    std::uint32_t remaining = 0;
    std::int32_t value = 0;

    void arm(std::uint32_t count, std::int32_t withValue = 0)
    {
        active = true;
        remaining = count;
        value = withValue;
    }
    // True when the fault applies to this request; counts it down.
    bool take()
    {
        if (!active) return false;
        if (remaining > 0 && --remaining == 0) active = false;
        return true;
    }
};

struct UnitFaults {
    CountedFault silent;      // the unit does not answer: the server times out on the bus
    CountedFault late;        // the answer comes `value` ms late
    CountedFault empty;       // the server answers with length 0
    CountedFault a4ciReject;  // the server rejects with error code `value`
    CountedFault ppReject;    // the unit rejects with cause byte `value`
    CountedFault noAnswer;    // the server answers nothing at all
    CountedFault noProductData; // the unit refuses its product data (PP reject, cause `value`)
    std::deque<std::string> rawAnswers; // whole answer frames, sent as they stand

    void clear() { *this = UnitFaults{}; }
};

// What happened to one request, for the bus log.
struct UnitAnswer {
    bool answered = false; // false: the unit stayed silent
    std::string frame;
};

class SimUnit {
public:
    SimUnit(UnitType type, std::uint16_t port, std::uint8_t address, std::span<const ValueDefinition> definitions);
    virtual ~SimUnit() = default;
    SimUnit(const SimUnit&) = delete;
    SimUnit& operator=(const SimUnit&) = delete;

    UnitType type() const { return m_type; }
    std::uint16_t port() const { return m_port; }
    std::uint8_t address() const { return m_address; }

    // Values by name, for the site file, control signals and tests.
    std::span<const ValueDefinition> definitions() const { return m_definitions; }
    bool has(std::string_view name) const { return indexOf(name).has_value(); }
    std::optional<std::int32_t> get(std::string_view name) const;
    bool set(std::string_view name, std::int32_t value);

    ProductStrings& product() { return m_product; }
    bool startFlag() const { return m_startFlag; }
    void setStartFlag(bool on) { m_startFlag = on; }
    std::uint8_t lastIndication() const { return m_lastIndication; }
    // The payload of the last request of that number the unit took.
    std::string lastPayload(std::uint8_t message) const;

    UnitFaults& faults() { return m_faults; }
    std::uint32_t bootMs() const { return m_bootMs; }
    void setBootMs(std::uint32_t ms) { m_bootMs = ms; }
    bool isBooting(std::uint64_t nowMs) const { return nowMs < m_bootUntilMs; }

    // A reset or restart: deaf for the boot time, then up with the start flag.
    void restart(std::uint64_t nowMs);
    // Another unit of the same type in the same place: a new serial number.
    void replace(const std::string& serialNumber, std::uint64_t nowMs);

    // The unit's answer to one request frame at `nowMs`.
    UnitAnswer answer(const std::string& frame, std::uint64_t nowMs);

protected:
    enum class Handled { Answered, Unknown, Malformed };
    // Fills the payload of the confirm of the request, applying a setting.
    virtual Handled answerTyped(SimRequest& request, SimFrame& confirm) = 0;
    // What a reset does beyond the start flag and the boot (settings lost).
    virtual void onRestart() {}

    std::int32_t value(std::size_t index) const { return m_values[index]; }
    void setValue(std::size_t index, std::int32_t v) { m_values[index] = v; }
    bool flag(std::size_t index) const { return m_values[index] != 0; }

private:
    std::optional<std::size_t> indexOf(std::string_view name) const;
    Handled answerCommon(SimRequest& request, SimFrame& confirm);

    UnitType m_type;
    std::uint16_t m_port;
    std::uint8_t m_address;
    std::span<const ValueDefinition> m_definitions;
    std::vector<std::int32_t> m_values;
    ProductStrings m_product;
    bool m_startFlag = true; // set at power-up
    std::uint8_t m_lastIndication = 0;
    std::uint32_t m_bootMs = 200;
    std::uint64_t m_bootUntilMs = 0;
    UnitFaults m_faults;
    std::map<std::uint8_t, std::string> m_lastPayload;
};

} // namespace sim
