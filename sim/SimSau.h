#pragma once
// A simulated support alarm unit: external alarm inputs and outputs.

#include "sim/SimUnit.h"

namespace sim {

class SimSau : public SimUnit {
public:
    SimSau(std::uint16_t port, std::uint8_t address);

protected:
    Handled answerTyped(SimRequest& request, SimFrame& confirm) override;
};

} // namespace sim
