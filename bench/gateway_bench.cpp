// A round trip from an outside program through a node's gateway to a process
// inside and back, beside the floor: the same bytes bounced between two
// threads over a plain Unix domain socket.

#include "ose/Gateway.h"
#include "ose/GatewayClient.h"
#include "ose/Kernel.h"
#include "ose/World.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace {

std::string socketPath(const char* name)
{
    return "/tmp/ssc-bench-" + std::to_string(getpid()) + "-" + name + ".sock";
}

void BM_GatewayRoundTrip(benchmark::State& state)
{
    ose::World world;
    ose::Node& node = world.addNode("node0");
    std::string path = socketPath("gateway");
    ose::Gateway gateway(world, node, path);
    if (!gateway.start()) {
        state.SkipWithError("gateway did not start");
        return;
    }
    ose::ProcessSpec echo;
    echo.name = "echo";
    echo.entry = [] {
        for (;;) {
            ose::Signal* s = ose::receive(ose::kAnySignal);
            ose::PROCESS back = ose::sender(&s);
            ose::send(&s, back);
        }
    };
    world.start(world.createProcess(node, echo));
    std::thread runner([&] { world.run(); });

    ose::GatewayClient client;
    if (!client.connect(path, "bench")) {
        state.SkipWithError(client.lastError().c_str());
    } else {
        auto echoPid = client.hunt("echo");
        std::string signal(8, '\0');
        ose::storeBe32(signal.data(), 0x1234);
        for (auto _ : state) {
            client.send(*echoPid, signal);
            auto answer = client.next(std::chrono::seconds(5));
            if (!answer) state.SkipWithError("no answer");
        }
    }
    client.close();
    world.stop();
    runner.join();
}
BENCHMARK(BM_GatewayRoundTrip)->Repetitions(5)->ReportAggregatesOnly(true)->UseRealTime();

// The floor: one frame each way, the same sizes as a gateway round trip
// (28 bytes out, 36 back), between two threads over a Unix domain socket.
void BM_UnixSocketPingPongFloor(benchmark::State& state)
{
    std::string path = socketPath("floor");
    unlink(path.c_str());
    int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(listener, 1);
    std::thread server([&] {
        int fd = accept(listener, nullptr, nullptr);
        char buffer[64];
        while (recv(fd, buffer, 28, MSG_WAITALL) == 28)
            if (send(fd, buffer, 36, MSG_NOSIGNAL) != 36) break;
        close(fd);
    });
    int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
    char buffer[64] = {};
    for (auto _ : state) {
        send(fd, buffer, 28, MSG_NOSIGNAL);
        if (recv(fd, buffer, 36, MSG_WAITALL) != 36) state.SkipWithError("short answer");
    }
    close(fd);
    server.join();
    close(listener);
    unlink(path.c_str());
}
BENCHMARK(BM_UnixSocketPingPongFloor)->Repetitions(5)->ReportAggregatesOnly(true)->UseRealTime();

} // namespace
BENCHMARK_MAIN();
