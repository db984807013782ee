#pragma once
// The inter-node server as the equipment and cabinet interfaces reach it: on
// the primary node it serves the secondaries and hands out their numbers.

#include "cabinet/ExternalNode.h"
#include "cabinet/NodeRecord.h"
#include "hwu/HwuStatusRecord.h"

#include <cstdint>
#include <string>

class ApcInciServerIf {
public:
    virtual ~ApcInciServerIf() = default;
    virtual void distributeCabinetIdentifierUpdated(const std::string& identifier) = 0;
    virtual void distributeCabinetPidUpdated(const HwuProductRecord& productData) = 0;
    virtual void addExternalNode(const ExternalNode& node) = 0;
    virtual void removeClient(std::int32_t id, std::int32_t nin) = 0;
    virtual void nodeInfoUpdated(const NodeRecord& record) = 0;
    virtual void publish() = 0;
    virtual void unpublish() = 0;
};
