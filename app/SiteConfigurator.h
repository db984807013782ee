#pragma once
// Plays the object layer's part for a simulated site until the object
// process exists: a process "site_configurator" makes the node the site's
// primary and configures its cabinet (an outdoor cabinet's climate, fan
// groups 1 and 2) over the cabinet management interface, configures every
// unit of the site over the equipment management interface, subscribes
// their status, and traces what comes back as one readable line each (trace
// group "site", level 4). Without the climate only the units are configured.

#include "sim/SimCabinet.h"

#include "ose/World.h"

namespace site {

void startSiteConfigurator(ose::World& world, ose::Node& node, const sim::SimCabinet& cabinet, bool climate = true);

} // namespace site
