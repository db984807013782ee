#include "platform/LoadModule.h"

#include "frame/SscThread.h"
#include "froBl/froMgmtSwU/export/SupSysCtrlEngine.h"
#include "platform/CoreTraceGroups.h"
#include "platform/ObjectTraceGroups.h"
#include "platform/WLSscPlatform.h"

#include "ose/Kernel.h"
#include "ose/Trace.h"

namespace {

void coreEntry()
{
    WLSscPlatform platform;
    sscThreadMain(platform);
}

// The platform's interface support and database name watcher serve the
// target's own platform libraries; here they only take their place in the
// table, with their priorities, and drop what is sent to them.
void platformSupportEntry()
{
    for (;;) {
        ose::Signal* signal = ose::receive(ose::kAnySignal);
        if (signal == nullptr) continue;
        SSC_TRACE(ose::traceGroup<"vanto">(), 5, "Signal 0x%x to a platform support process dropped",
                  ose::signalNumber(signal));
        ose::free_buf(&signal);
    }
}

} // namespace

ose::PROCESS createCoreProcess(ose::World& world, ose::Node& node)
{
    registerCoreTraceGroups();
    ose::ProcessSpec definition;
    definition.name = kSscThreadName;
    definition.entry = coreEntry;
    definition.stackSize = kSscThreadStackSize;
    definition.priority = kSscThreadPriority;
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}

ose::PROCESS LoadModule::create(const char* name, std::function<void()> entry, const ose::OSBUFSIZE stack,
                                const ose::OSPRIORITY priority)
{
    ose::ProcessSpec definition;
    definition.name = name;
    definition.entry = std::move(entry);
    definition.stackSize = stack;
    definition.priority = priority;
    return m_world.createProcess(m_node, definition);
}

void LoadModule::start()
{
    // The target also registers its platform interfaces and points the
    // database client's standard streams at its console; here the node's
    // own streams and ODBC stand in, and only the trace groups remain.
    registerCoreTraceGroups();
    registerObjectTraceGroups();
    m_processes = {
        create("support_system_control_thread", supSysMain, 45000, 16),
        create("Vs_IfSupport_proc", platformSupportEntry, 2000, 10),
        create("VsDb_name_proc", platformSupportEntry, 768, 14),
        create(kSscThreadName, coreEntry, kSscThreadStackSize, kSscThreadPriority),
    };
    for (ose::PROCESS pid : m_processes) m_world.start(pid);
    ++m_starts;
}

void LoadModule::restart()
{
    SSC_TRACE(ose::traceGroup<"vanto">(), 4, "Load module restart %u", m_starts);
    for (ose::PROCESS pid : m_processes) m_world.kill(pid);
    m_processes.clear();
    start();
}
