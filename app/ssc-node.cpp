// ssc-node: one node of the support system control, with its gateway for
// outside programs.

#include "app/DemoProcesses.h"
#include "app/SiteConfigurator.h"
#include "app/NodeOptions.h"
#include "ose/Gateway.h"
#include "ose/Trace.h"
#include "ose/World.h"
#include "froBl/froMgmtSwU/export/databaseFacade.h"
#include "platform/LoadModule.h"
#include "platform/VantoDb.h"
#include "sim/A4ciSimServer.h"
#include "sim/SiteFile.h"
#include "vanto/VantoNameServer.h"
#include "vanto/VantoRpuServer.h"
#include "vanto/VantoTransactionServer.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <pthread.h>
#include <thread>

namespace {

constexpr const char* kVersion = "ssc-node 0.1";

// SIGINT and SIGTERM are taken by a thread of their own, which asks the world
// to stop; nothing runs in a signal handler.
class StopOnSignals {
public:
    // Called first in main, so that a signal that comes while the node starts
    // waits for the thread instead of killing the process.
    static void block()
    {
        sigset_t set = signals();
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
    }

    explicit StopOnSignals(ose::World& world) : m_world(world)
    {
        block();
        m_thread = std::thread([this] {
            sigset_t wanted = signals();
            int number = 0;
            sigwait(&wanted, &number);
            if (number != SIGUSR2) m_world.stop();
        });
    }
    ~StopOnSignals()
    {
        pthread_kill(m_thread.native_handle(), SIGUSR2);
        m_thread.join();
    }
    StopOnSignals(const StopOnSignals&) = delete;
    StopOnSignals& operator=(const StopOnSignals&) = delete;

private:
    static sigset_t signals()
    {
        sigset_t set;
        sigemptyset(&set);
        sigaddset(&set, SIGINT);
        sigaddset(&set, SIGTERM);
        sigaddset(&set, SIGUSR2); // wakes the thread when the node ends by itself
        return set;
    }

    ose::World& m_world;
    std::thread m_thread;
};

bool setUpTrace(const app::NodeOptions& options)
{
    std::string error;
    const char* fromEnvironment = std::getenv("SSC_TRACE");
    std::string config = !options.trace.empty() ? options.trace : (fromEnvironment ? fromEnvironment : "");
    if (!config.empty() && !ose::Trace::configure(config, &error)) {
        std::fprintf(stderr, "ssc-node: %s\n", error.c_str());
        return false;
    }
    if (!options.traceFile.empty() && !ose::Trace::setOutputFile(options.traceFile, &error)) {
        std::fprintf(stderr, "ssc-node: %s\n", error.c_str());
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    StopOnSignals::block();
    app::NodeOptions options;
    std::string error;
    if (!app::parseNodeOptions({argv + 1, argv + argc}, options, error)) {
        std::fprintf(stderr, "ssc-node: %s\n", error.c_str());
        return 2;
    }
    if (options.help) {
        std::fputs(app::nodeUsage(), stdout);
        return 0;
    }
    if (options.version) {
        std::puts(kVersion);
        return 0;
    }
    if (!setUpTrace(options)) return 2;
    std::error_code fsError;
    std::filesystem::create_directories(options.dataDir, fsError);
    if (fsError) {
        std::fprintf(stderr, "ssc-node: cannot make the data directory %s: %s\n", options.dataDir.c_str(),
                     fsError.message().c_str());
        return 3;
    }

    // The simulated cabinet is read before anything starts: a bad site
    // file stops the node with the file, line and reason.
    sim::SimCabinet cabinet;
    if (!options.site.empty() && !sim::SiteFile::load(options.site, cabinet, error)) {
        std::fprintf(stderr, "ssc-node: site file refused: %s\n", error.c_str());
        return 2;
    }
    if (!options.record.empty()) {
        if (!cabinet.plant) {
            std::fprintf(stderr, "ssc-node: --record needs a site with a <plant>; %s has none\n", options.site.c_str());
            return 2;
        }
        auto recorder = std::make_unique<sim::PlantRecorder>();
        if (!recorder->open(options.record, error)) {
            std::fprintf(stderr, "ssc-node: %s\n", error.c_str());
            return 3;
        }
        cabinet.plant->setRecorder(std::move(recorder));
    }

    ose::World world(options.clock);
    ose::Node& node = world.addNode(options.nodeName);
    ose::Gateway gateway(world, node, options.socketPath);
    if (!gateway.start(&error)) {
        std::fprintf(stderr, "ssc-node: %s\n", error.c_str());
        return 3;
    }
    if (options.holdClock) gateway.holdTimeForFirstHolder();
    // The node platform's servers first, then the load module's processes.
    VantoDbConfig database;
    database.connectionString =
        options.odbc.empty() ? VantoDb_defaultConnectionString(options.dataDir) : options.odbc;
    DatabaseFacade::configure(database);
    createTransactionServer(world, node, database);
    createNameServer(world, node);
    LoadModule loadModule(world, node);
    VantoRpuConfig rpu;
    rpu.role = options.rolePassive ? vanto_cli::RpuRole::Passive : vanto_cli::RpuRole::Active;
    rpu.rpuKnown = !options.rpuLater;
    rpu.restartLoadModule = [&loadModule] { loadModule.restart(); };
    createRpuServer(world, node, std::move(rpu));
    if (!options.site.empty()) sim::A4ciSimServer::start(world, node, cabinet);
    loadModule.start();
    if (options.demo) demo::startDemoProcesses(world, node);
    if (options.configureSite) site::startSiteConfigurator(world, node, cabinet, options.siteClimate);
    {
        StopOnSignals stopOnSignals(world);
        if (options.runForMs) world.runFor(*options.runForMs);
        else world.run();
    }
    return 0;
}
