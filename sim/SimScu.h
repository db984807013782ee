#pragma once
// A simulated support control unit: fan groups, heaters, smoke and door
// ports, external inputs, and the cabinet's product data in its memory.

#include "sim/SimUnit.h"

namespace sim {

class SimScu : public SimUnit {
public:
    SimScu(std::uint16_t port, std::uint8_t address);

    // The cabinet's identity held in the unit's memory (read by 208,
    // written by 211).
    ProductStrings& cabinet() { return m_cabinet; }
    const ProductStrings& cabinet() const { return m_cabinet; }

protected:
    Handled answerTyped(SimRequest& request, SimFrame& confirm) override;

private:
    void capabilities(SimFrame& confirm) const;
    void addCapabilities(SimFrame& confirm) const;
    void extendedStatus(SimFrame& confirm) const;
    Handled takeConfig(SimRequest& request);
    Handled takeAddConfig(SimRequest& request);
    Handled takeExtendedControl(SimRequest& request);
    Handled takeFanSpeeds(SimRequest& request);
    Handled takeCabinet(SimRequest& request);

    ProductStrings m_cabinet;
};

} // namespace sim
