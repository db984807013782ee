#pragma once
// Told when another node of the site is added or removed (on a primary).

#include "cabinet/ExternalNode.h"

class ExternalNodeObserver {
public:
    virtual ~ExternalNodeObserver() = default;
    virtual void nodeAdded(const ExternalNode& node) = 0;
    virtual void nodeRemoved(const ExternalNode& node) = 0;
};
