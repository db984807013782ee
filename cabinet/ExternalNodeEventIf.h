#pragma once
// What the external node facade tells the equipment interface.

#include "cabinet/ExternalNode.h"

#include <cstdint>

// The faults of a node, in the interface's order: 21502, 21503, 21504, 21505.
enum class ExternalNodeFault : std::uint8_t { Missing, FaultyHubPosition, ConflictingHubPosition, HubPositionConflict };

class ExternalNodeEventIf {
public:
    virtual ~ExternalNodeEventIf() = default;
    virtual void nodeAdded(const ExternalNode& node) = 0;
    virtual void nodeRemoved(std::int32_t objectId, std::int32_t nin) = 0;
    virtual void nodeChanged(const ExternalNode& node) = 0;
    virtual void raiseFault(ExternalNodeFault fault, std::uint32_t funcInst) = 0;
    virtual void ceaseFault(ExternalNodeFault fault, std::uint32_t funcInst) = 0;
};
