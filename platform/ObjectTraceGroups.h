#pragma once
// Registers the object process's trace groups, in their fixed order, with
// the trace service.

void registerObjectTraceGroups();
