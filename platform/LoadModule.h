#pragma once
// The load module's processes, created in a node of a world as the kernel
// creates them at load.

#include "ose/Node.h"
#include "ose/World.h"

#include <vector>

// Registers the core's trace groups, then creates and starts SSC_THREAD
// (priority 16, stack of at least 10240 bytes) running the core's entry.
ose::PROCESS createCoreProcess(ose::World& world, ose::Node& node);

// The whole load module: the object process, the platform's two support
// processes and the core, made in this order. A restart tears all four down
// and makes them anew, as a reload of the program would: the core and the
// object process rebuild their state from the units and the database.
class LoadModule {
public:
    LoadModule(ose::World& world, ose::Node& node) : m_world(world), m_node(node) {}
    LoadModule(const LoadModule&) = delete;
    LoadModule& operator=(const LoadModule&) = delete;

    // Registers the trace groups, then creates and starts the processes.
    void start();
    // Kills the processes and starts them again. The caller may be any
    // process but these.
    void restart();

    const std::vector<ose::PROCESS>& processes() const { return m_processes; }
    unsigned starts() const { return m_starts; }

private:
    ose::PROCESS create(const char* name, std::function<void()> entry, ose::OSBUFSIZE stack, ose::OSPRIORITY priority);

    ose::World& m_world;
    ose::Node& m_node;
    std::vector<ose::PROCESS> m_processes;
    unsigned m_starts = 0;
};
