#pragma once
// What the targets that run the object process share: a database of their
// own in a temporary folder, processes started from a function, and servers
// that stand for the core's four and take whatever they are sent.

#include "fuzz/FuzzSignals.h"
#include "platform/VantoDb.h"

#include "ose/World.h"

#include <filesystem>
#include <functional>
#include <string>
#include <unistd.h>

// The target's database, made once per fuzzing run in a folder named by
// the target and the run's process.
inline VantoDbConfig& fuzzDatabase(const char* target = nullptr)
{
    static VantoDbConfig config;
    if (target != nullptr && config.connectionString.empty()) {
        const std::string dir =
            std::filesystem::temp_directory_path() / (std::string("ssc_") + target + "_fuzz_" + std::to_string(getpid()));
        std::filesystem::create_directories(dir);
        config.connectionString = VantoDb_defaultConnectionString(dir);
        config.wait = [](std::chrono::milliseconds) {};
        config.maxConnectAttempts = 3;
    }
    return config;
}

// Empties the target's database, so that an input runs on what it makes
// itself: the object process restores what is stored at its start, and
// objects of earlier inputs would make a finding depend on them.
inline void emptyFuzzDatabase()
{
    VantoDbHandles handles;
    handles.config = fuzzDatabase();
    std::filesystem::remove(VantoDb_databaseName(handles));
}

inline ose::PROCESS startFuzzProcess(ose::World& world, ose::Node& node, const char* name, std::function<void()> entry)
{
    ose::ProcessSpec definition;
    definition.name = name;
    definition.entry = std::move(entry);
    const ose::PROCESS pid = world.createProcess(node, definition);
    world.start(pid);
    return pid;
}

inline void startCoreStandIns(ose::World& world, ose::Node& node)
{
    for (const char* name : {"ssc_cabinet_management_server", "ssc_equipment_management_server",
                             "ssc_power_management_server", "ssc_alarm_control_server"})
        startFuzzProcess(world, node, name, dropAnswersForever);
}
