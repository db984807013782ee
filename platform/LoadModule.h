#pragma once
// The load module's processes, created in a node of a world as the kernel
// creates them at load.

#include "ose/Node.h"
#include "ose/World.h"

// Registers the core's trace groups, then creates and starts SSC_THREAD
// (priority 16, stack of at least 10240 bytes) running the core's entry.
ose::PROCESS createCoreProcess(ose::World& world, ose::Node& node);
