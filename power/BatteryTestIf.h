#pragma once
// The battery test as the power control and the battery backup facade
// reach it. `error` takes the reason when an answer is false.

#include <cstdint>

class BatteryTestIf {
public:
    // Who asked for a test, or why it stops.
    static constexpr std::uint32_t kAcMains = 3;

    virtual ~BatteryTestIf() = default;
    virtual bool start(std::uint32_t initiation, std::uint32_t* error) = 0;
    virtual bool stop(std::uint32_t reason, std::uint32_t* error) = 0;
    virtual bool getProgress(std::int32_t words[4]) = 0;
    // Pending or in progress.
    virtual bool isRunning() const = 0;
    virtual void evaluate() = 0;
    virtual void configure() = 0;
    virtual std::uint32_t getInitiation() const = 0;
};
