#pragma once
// A simulated power distribution unit with its e-fuses. Sixteen-sets are
// held as words: e-fuse k + 1 in bit k.

#include "sim/SimUnit.h"

namespace sim {

class SimPdu : public SimUnit {
public:
    SimPdu(std::uint16_t port, std::uint8_t address);

protected:
    Handled answerTyped(SimRequest& request, SimFrame& confirm) override;

private:
    Handled takeLimits(SimRequest& request);
    Handled takeEfuses(SimRequest& request);
};

} // namespace sim
