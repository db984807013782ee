#include "platform/LoadModule.h"

#include "frame/SscThread.h"
#include "platform/CoreTraceGroups.h"
#include "platform/WLSscPlatform.h"

ose::PROCESS createCoreProcess(ose::World& world, ose::Node& node)
{
    registerCoreTraceGroups();
    ose::ProcessSpec definition;
    definition.name = kSscThreadName;
    definition.entry = [] {
        WLSscPlatform platform;
        sscThreadMain(platform);
    };
    definition.stackSize = kSscThreadStackSize;
    definition.priority = kSscThreadPriority;
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}
