#pragma once
// One run of a target that fuzzes a server of the core: the real core, with
// the given units of a simulated cabinet on its bus when there are any, and
// a client process that hunts the server and sends it signals made of the
// input, a little time apart. The core must refuse or drop what makes no
// sense, read nothing beyond a signal, and go on serving.

#include "fuzz/FuzzSignals.h"
#include "platform/LoadModule.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/World.h"

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>

struct ServerFuzz {
    const char* serverName;
    const char* clientName;
    std::span<const ose::SIGSELECT> numbers;
    std::initializer_list<std::pair<sim::UnitType, std::uint8_t>> units;
    std::uint64_t runMs = 20'000;
};

inline void runServerFuzz(const ServerFuzz& fuzz, const std::uint8_t* data, std::size_t size)
{
    sim::SimCabinet cabinet;
    cabinet.logCapacity = 0;
    for (const auto& [type, address] : fuzz.units) cabinet.addUnit(type, 1, address);
    ose::World world;
    if (fuzz.units.size() != 0) sim::A4ciSimServer::start(world, world.defaultNode(), cabinet);
    createCoreProcess(world, world.defaultNode());
    ose::ProcessSpec client;
    client.name = fuzz.clientName;
    client.entry = [&fuzz, data, size] {
        ose::delay(10);
        ose::PROCESS server = 0;
        if (!ose::hunt(fuzz.serverName, 0, &server, nullptr)) return;
        FuzzInput input(data, size);
        while (!input.empty()) {
            ose::Signal* signal = nextSignal(input, fuzz.numbers);
            ose::send(&signal, server);
            ose::delay(input.byte() * 20U);
        }
        dropAnswersForever();
    };
    world.start(world.createProcess(world.defaultNode(), client));
    world.runFor(fuzz.runMs);
}
