#pragma once
// Plays the object layer's part for a simulated site until the object
// process exists: a process "site_configurator" configures every unit of the
// site over the equipment management interface, subscribes its status, and
// traces what comes back as one readable line each (trace group "site",
// level 4).

#include "sim/SimCabinet.h"

#include "ose/World.h"

namespace site {

void startSiteConfigurator(ose::World& world, ose::Node& node, const sim::SimCabinet& cabinet);

} // namespace site
