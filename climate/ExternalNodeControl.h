#pragma once
// The air flow demands of the secondary nodes whose cabinets the primary
// also cools: the last demand of each, aged one step when a node falls
// silent for three minutes, and the highest of them for the regulator.

#include "cabinet/ExternalNodeObserver.h"
#include "frame/EC_LinkedList.h"
#include "frame/TimerObserverIf.h"

#include <cstdint>

class ExternalNodeControlCallbackIf;

class ExternalNodeControl : public TimerObserverIf, public ExternalNodeObserver {
public:
    static constexpr TimerType kSilenceTimer = 26;
    static constexpr std::uint32_t kSilenceMs = 180000;
    static constexpr float kSilenceStep = 20.0f; // fan speed points, over the flow factor

    explicit ExternalNodeControl(ExternalNodeControlCallbackIf* callback) : m_pCallback(callback) {}
    ~ExternalNodeControl() override;
    ExternalNodeControl(const ExternalNodeControl&) = delete;
    ExternalNodeControl& operator=(const ExternalNodeControl&) = delete;

    void nodeAdded(const ExternalNode& node) override;
    void nodeRemoved(const ExternalNode& node) override;
    void timeout(TimerId timerId) override;

    // A demand from the node that the primary knows by `id` (its FuncInst).
    void airflowDemand(std::uint32_t id, float demand);
    // Raises `*maxDemand` to the highest demand of the secondaries.
    void getMaxAirflow(float* maxDemand);
    bool hasNodeWithoutDemand();

private:
    struct Entry {
        std::uint32_t id;
        float demand;
        bool updated;
    };
    Entry* find(std::uint32_t id);

    EC_LinkedList<Entry> m_nodes;
    ExternalNodeControlCallbackIf* m_pCallback;
};
