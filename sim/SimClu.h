#pragma once
// A simulated climate unit.

#include "sim/SimUnit.h"

namespace sim {

class SimClu : public SimUnit {
public:
    SimClu(std::uint16_t port, std::uint8_t address);

protected:
    Handled answerTyped(SimRequest& request, SimFrame& confirm) override;
};

} // namespace sim
