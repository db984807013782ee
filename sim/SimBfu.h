#pragma once
// A simulated battery fuse unit.

#include "sim/SimUnit.h"

namespace sim {

class SimBfu : public SimUnit {
public:
    SimBfu(std::uint16_t port, std::uint8_t address);

protected:
    Handled answerTyped(SimRequest& request, SimFrame& confirm) override;

private:
    std::uint32_t statusWord() const;
    Handled takeConfig(SimRequest& request);
    Handled takeExtendedControl(SimRequest& request);
    void addCapabilities(SimFrame& confirm) const;
};

} // namespace sim
