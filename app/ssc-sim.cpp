// ssc-sim: the simulated cabinet as a program of its own. It joins a node
// through the node's gateway, publishes "A4ciServer" there and answers the
// bus signals of docs/gateway-protocol.md from the units of a site file, so
// that several nodes, or a node started without --site, share one bus.

#include "ose/GatewayClient.h"
#include "sim/A4ciSimServer.h"
#include "sim/SiteFile.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr const char* kUsage =
    "usage: ssc-sim --site FILE --socket PATH [--name NAME]\n"
    "  --site FILE     the cabinet to simulate (see docs/site-file.md)\n"
    "  --socket PATH   the gateway socket of the node to serve\n"
    "  --name NAME     the name to publish (default: A4ciServer)\n"
    "Runs until the node closes the connection.\n";

struct SimOptions {
    std::string site;
    std::string socket;
    std::string name = "A4ciServer";
};

bool parse(int argc, char** argv, SimOptions& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        std::string* target = arg == "--site" ? &options.site : arg == "--socket" ? &options.socket
                            : arg == "--name" ? &options.name : nullptr;
        if (target == nullptr || i + 1 >= argc) return false;
        *target = argv[++i];
    }
    return !options.site.empty() && !options.socket.empty();
}

using Clock = std::chrono::steady_clock;

// Late answers wait here in wall time: an outside program has no timers of
// the node's clock.
struct Later {
    Clock::time_point due;
    ose::PROCESS to;
    std::string bytes;
};

int serve(ose::GatewayClient& client, sim::SimCabinet& cabinet)
{
    sim::A4ciSimServer server(cabinet);
    std::multimap<Clock::time_point, Later> later;
    while (client.isConnected()) {
        auto wait = std::chrono::milliseconds(1000);
        if (!later.empty())
            wait = std::max(std::chrono::milliseconds(0), std::chrono::duration_cast<std::chrono::milliseconds>(
                                                              later.begin()->first - Clock::now()));
        const auto event = client.next(wait);
        while (!later.empty() && later.begin()->first <= Clock::now()) {
            client.send(later.begin()->second.to, later.begin()->second.bytes);
            later.erase(later.begin());
        }
        if (!event) {
            if (!client.lastError().empty() && !client.isConnected()) break;
            continue;
        }
        if (event->kind != ose::GatewayEvent::Kind::Signal) continue;
        const auto time = client.time();
        if (!time) break;
        for (auto& out : server.handle(event->bytes, event->sender, time->nowMs)) {
            if (out.delayMs == 0) {
                client.send(out.to, out.bytes);
            } else {
                const auto due = Clock::now() + std::chrono::milliseconds(out.delayMs);
                later.emplace(due, Later{due, out.to, std::move(out.bytes)});
            }
        }
    }
    std::fprintf(stderr, "ssc-sim: the node went away: %s\n", client.lastError().c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    SimOptions options;
    if (!parse(argc, argv, options)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    sim::SimCabinet cabinet;
    std::string error;
    if (!sim::SiteFile::load(options.site, cabinet, error)) {
        std::fprintf(stderr, "ssc-sim: site file refused: %s\n", error.c_str());
        return 2;
    }
    ose::GatewayClient client;
    if (!client.connect(options.socket, "ssc-sim") || !client.publish(options.name)) {
        std::fprintf(stderr, "ssc-sim: cannot serve at %s: %s\n", options.socket.c_str(), client.lastError().c_str());
        return 3;
    }
    return serve(client, cabinet);
}
