#pragma once
// A simulated power supply unit.

#include "sim/SimUnit.h"

namespace sim {

class SimPsu : public SimUnit {
public:
    SimPsu(std::uint16_t port, std::uint8_t address);

protected:
    Handled answerTyped(SimRequest& request, SimFrame& confirm) override;
    void onRestart() override;
};

} // namespace sim
