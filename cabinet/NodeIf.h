#pragma once
// The own node's record as others read it.

#include "cabinet/NodeRecord.h"

class NodeIf {
public:
    virtual ~NodeIf() = default;
    virtual const NodeRecord& getNodeRecord() const = 0;
};
