#pragma once
// Registers the core's trace groups in their fixed order, once at load and
// before any process runs. Registering again changes nothing.

void registerCoreTraceGroups();
