#pragma once
// What the system tests share when they talk to a node through its gateway:
// a signal layout as bytes and back, the next signal of a number, files
// the node writes.

#include "app/SignalLayout.h"
#include "ose/GatewayClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <unistd.h>

namespace systemtest {

using app::bytesOf;
using app::layoutOf; // a short signal leaves the rest of the layout zero

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// A path in the test's temporary folder, with nothing there yet.
// Tests of one fixture run side by side in their own processes; the process
// number keeps one test from truncating another's file.
inline std::string traceFile(const char* name)
{
    std::string path = ::testing::TempDir() + std::to_string(::getpid()) + "_" + name;
    std::remove(path.c_str());
    return path;
}

// The next signal of that number, skipping others; none when nothing comes
// within the wall time.
inline std::optional<ose::GatewayEvent> nextOf(ose::GatewayClient& client, std::uint32_t sigNo)
{
    using namespace std::chrono_literals;
    for (int i = 0; i < 50; ++i) {
        auto event = client.next(10s);
        if (!event) return std::nullopt;
        if (event->kind == ose::GatewayEvent::Kind::Signal && event->sigNo() == sigNo) return event;
    }
    return std::nullopt;
}

} // namespace systemtest
