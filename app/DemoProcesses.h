#pragma once
// The kernel demonstration: a few processes exchanging signals on the clock,
// traced. "echo" serves outside programs (see DemoSignals.h); "pinger" sends
// it a ping every second and traces the answers; "ticker" traces a line every
// ten seconds of world time.

#include "ose/World.h"

namespace demo {

void startDemoProcesses(ose::World& world, ose::Node& node);

} // namespace demo
