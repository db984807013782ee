// The default cabinet's physics seen through the node: a mains loss injected
// at the simulated bus reaches the management interface as the PSUs' fault
// and the battery's discharge, comes back with mains, and lands in the
// recording. Only the gateway and the virtual clock are used.

#include "adapters/EmiSignals.h"
#include "ose/GatewayClient.h"
#include "sim/SimControlSignals.h"
#include "tests/system/EmiRequest.h"
#include "tests/system/NodeProcess.h"
#include "tests/system/SignalBytes.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace systemtest {
namespace {

using namespace emi;

std::string plantEvent(simctl::FaultKind kind)
{
    simctl::SIM_FAULT_REQ_S request{};
    request.sigNo = simctl::SIM_FAULT_REQ;
    request.kind = static_cast<std::uint16_t>(kind);
    return bytesOf(request);
}

// The BFU's measurement words: current (tenths of an ampere, positive
// charging), temperature, voltage (tenths of a volt, negative).
EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S bfuMeasurements(ose::GatewayClient& client, ose::PROCESS server)
{
    EXPECT_TRUE(client.send(server, emiSignal(EMI_REQ_S{}, EMI_GET_UNIT_MEASUREMENT_DATA_REQ, kBfu, 1)));
    EXPECT_TRUE(client.advanceBy(100));
    auto answer = nextOf(client, EMI_GET_UNIT_MEASUREMENT_DATA_CFM);
    EXPECT_TRUE(answer);
    return answer ? layoutOf<EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S>(answer->bytes) : EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S{};
}

TEST(PlantSystemTest, AMainsLossReachesTheInterfaceAsTheBatteryCarriesTheLoadAndIsRecorded)
{
    const std::string recording = traceFile("plant_system_test.csv");
    NodeProcess node({"--clock", "virtual", "--hold-clock", "--site", SSC_SOURCE_DIR "/sim/sites/default.xml",
                      "--record", recording});
    ose::GatewayClient client;
    ASSERT_TRUE(client.connect(node.socketPath(), "plant_client", true)) << client.lastError();
    ASSERT_TRUE(client.advanceBy(10));
    auto server = client.hunt(kServerName, 0);
    auto bus = client.hunt("A4ciServer", 0);
    ASSERT_TRUE(server && *server != 0 && bus && *bus != 0);
    for (const auto& [objectType, hubPosition] : {std::pair{kPsu, "A1"}, std::pair{kBfu, "A1"}}) {
        ASSERT_TRUE(client.send(*server, configure(objectType, 1, hubPosition)));
        // The core polls a new unit at once and waits for the bus.
        ASSERT_TRUE(client.advanceBy(100));
        ASSERT_TRUE(nextOf(client, EMI_SET_CONFIG_CFM));
    }
    ASSERT_TRUE(client.advanceBy(10'000));
    const auto floating = bfuMeasurements(client, *server);
    EXPECT_GE(floating.words[0], 0) << "a full battery floats";
    EXPECT_LT(floating.words[2], -530);

    ASSERT_TRUE(client.send(*bus, plantEvent(simctl::FaultKind::MainsLoss)));
    ASSERT_TRUE(nextOf(client, simctl::SIM_FAULT_CFM));
    ASSERT_TRUE(client.advanceBy(3000));
    auto lost = nextOf(client, EMI_FAULT_IND);
    ASSERT_TRUE(lost);
    const auto fault = layoutOf<EMI_FAULT_IND_S>(lost->bytes);
    EXPECT_EQ(fault.header.objectType, kPsu);
    EXPECT_EQ(fault.faultType, 2) << "input voltage low";
    ASSERT_TRUE(client.advanceBy(600'000));
    // Ten minutes on the battery: some 23 A out, the bus down to the
    // battery's voltage less its resistance.
    const auto discharging = bfuMeasurements(client, *server);
    EXPECT_LT(discharging.words[0], -200);
    EXPECT_GT(discharging.words[0], -260);
    EXPECT_GT(discharging.words[2], -520);
    EXPECT_LT(discharging.words[2], -480);

    ASSERT_TRUE(client.send(*bus, plantEvent(simctl::FaultKind::MainsReturn)));
    ASSERT_TRUE(nextOf(client, simctl::SIM_FAULT_CFM));
    ASSERT_TRUE(client.advanceBy(3000));
    auto back = nextOf(client, EMI_FAULT_CEASE_IND);
    ASSERT_TRUE(back);
    EXPECT_EQ(layoutOf<EMI_FAULT_IND_S>(back->bytes).faultType, 2);
    EXPECT_GT(bfuMeasurements(client, *server).words[0], 0) << "the battery takes charge again";
    EXPECT_EQ(node.stop(), 0);

    // The recording saw mains go and come back.
    std::ifstream in(recording);
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line.rfind("time_s,ambient_C,air_C,bus_V,battery_charge_pct,battery_A,mains,", 0), 0u);
    std::string mains;
    std::size_t changes = 0;
    while (std::getline(in, line)) {
        std::istringstream cells(line);
        std::string cell;
        for (int column = 0; column <= 6; ++column) std::getline(cells, cell, ',');
        if (!mains.empty() && cell != mains) ++changes;
        mains = cell;
    }
    EXPECT_EQ(changes, 2u);
    EXPECT_EQ(mains, "1");
    std::remove(recording.c_str());
}

} // namespace
} // namespace systemtest
