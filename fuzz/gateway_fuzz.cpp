// Frames from an outside client: a hello, then whatever the fuzzer wrote,
// read by a node's gateway on a virtual clock with one process to talk to.

#include "fuzz/FuzzTrace.h"
#include "ose/Gateway.h"
#include "ose/GatewayProtocol.h"
#include "ose/Kernel.h"
#include "ose/World.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

int connectTo(const std::string& path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

void writeAll(int fd, const std::string& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (n <= 0) return;
        done += static_cast<std::size_t>(n);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzzTraceSetUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = "/tmp/ssc_gateway_fuzz_" + std::to_string(::getpid()) + ".sock";
    ose::World world;
    ose::Node& node = world.defaultNode();
    ose::ProcessSpec sink;
    sink.name = "echo";
    sink.entry = [] {
        for (;;) {
            ose::Signal* signal = ose::receive(ose::kAnySignal);
            ose::PROCESS from = ose::sender(&signal);
            ose::send(&signal, from);
        }
    };
    world.start(world.createProcess(node, sink));
    ose::Gateway gateway(world, node, path);
    if (!gateway.start()) return 0;
    const int fd = connectTo(path);
    if (fd < 0) return 0;

    const std::string hello = ose::gateway::FrameWriter(ose::gateway::FrameType::Hello, 1)
                                  .u32(ose::gateway::kVersion)
                                  .u32(size > 0 && (data[0] & 1u) ? ose::gateway::kHelloHoldsTime : 0u)
                                  .text("fuzzer")
                                  .finish();
    if (size > 0) writeAll(fd, hello);
    writeAll(fd, std::string(reinterpret_cast<const char*>(data), size));
    ::shutdown(fd, SHUT_WR);
    for (int step = 0; step < 20; ++step) world.runFor(10);
    ::close(fd);
    for (int step = 0; step < 5; ++step) world.runFor(10);
    return 0;
}
