// The equipment management interface end to end inside one world: the real
// core process with its unit broker and facades, the simulated bus, and a
// client process that speaks EMI to "ssc_equipment_management_server".

#include "adapters/EmiSignals.h"
#include "platform/LoadModule.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"

#include "ose/Kernel.h"
#include "ose/TestWorld.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace emi;
using ose::testing::TestWorld;

// A copy of a received signal, with its number.
struct Received {
    ose::SIGSELECT sigNo = 0;
    std::vector<std::uint8_t> bytes;
    template <typename T>
    T as() const
    {
        T value{};
        std::memcpy(&value, bytes.data(), std::min(sizeof(T), bytes.size()));
        return value;
    }
};

class EmiClient {
public:
    void find()
    {
        ose::delay(10); // the core publishes its servers as it starts
        ASSERT_TRUE(ose::hunt(kServerName, 0, &m_server, nullptr));
    }
    ose::PROCESS server() const { return m_server; }

    template <typename T>
    void send(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId, T body,
              std::uint32_t clientRef = 77)
    {
        auto& header = reinterpret_cast<EMI_HEADER_S&>(body);
        header.sigNo = sigNo;
        header.clientRef = clientRef;
        header.objectType = objectType;
        header.objectId = objectId;
        ose::Signal* signal = ose::alloc(sizeof(T), sigNo);
        std::memcpy(static_cast<void*>(signal), &body, sizeof(T));
        ose::send(&signal, m_server);
    }
    void request(ose::SIGSELECT sigNo, std::uint16_t objectType, std::uint32_t objectId)
    {
        send(sigNo, objectType, objectId, EMI_REQ_S{});
    }
    void configure(std::uint16_t objectType, std::uint32_t objectId, const char* hubPosition)
    {
        EMI_SET_CONFIG_HWU_REQ_S body{};
        std::strncpy(body.hubPosition, hubPosition, sizeof body.hubPosition);
        send(EMI_SET_CONFIG_REQ, objectType, objectId, body);
    }
    // The next EMI signal, whatever it is; nothing after `timeoutMs`.
    std::optional<Received> next(std::uint32_t timeoutMs = 1000)
    {
        ose::Signal* signal = ose::receive_w_tmo(timeoutMs, ose::kAnySignal);
        if (signal == nullptr) return std::nullopt;
        Received received;
        received.sigNo = ose::signalNumber(signal);
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(signal);
        received.bytes.assign(bytes, bytes + ose::sigsize(&signal));
        ose::free_buf(&signal);
        return received;
    }
    // Signals up to and including the first of `sigNo`.
    std::optional<Received> nextOf(ose::SIGSELECT sigNo, std::uint32_t timeoutMs = 1000)
    {
        while (auto received = next(timeoutMs)) {
            m_seen.push_back(received->sigNo);
            if (received->sigNo == sigNo) return received;
        }
        return std::nullopt;
    }

    // The errorCode of the next REJ of that number; 99 when none came.
    std::uint16_t rejCode(ose::SIGSELECT sigNo)
    {
        auto rej = nextOf(sigNo);
        return rej ? static_cast<std::uint16_t>(rej->as<EMI_REJ_S>().errorCode) : 99;
    }

    std::vector<ose::SIGSELECT> m_seen;

private:
    ose::PROCESS m_server = 0;
};

class EmiAdapterTest : public TestWorld {
protected:
    void SetUp() override
    {
        TestWorld::SetUp();
        for (auto [type, address] : {std::pair{sim::UnitType::PSU, 48}, {sim::UnitType::SAU, 33}})
            m_cabinet.addUnit(type, 1, static_cast<std::uint8_t>(address));
        sim::A4ciSimServer::start(world(), node(), m_cabinet);
        createCoreProcess(world(), node());
    }

    void client(std::function<void(EmiClient&)> script, std::uint64_t untilMs)
    {
        spawn("emi_client", [script = std::move(script)] {
            EmiClient client;
            client.find();
            script(client);
        });
        world().runFor(untilMs);
    }

    sim::SimCabinet m_cabinet;
};

TEST_F(EmiAdapterTest, AConfiguredAndSubscribedPsuBecomesOperationalAndAnswersReads)
{
    std::vector<std::uint16_t> firstUpdate;
    std::vector<std::uint16_t> laterUpdate;
    std::uint16_t secondConfigError = 99;
    std::string productNumber;
    std::int32_t voltage = 0;
    std::uint16_t unknownReadError = 99;
    client(
        [&](EmiClient& emi) {
            emi.configure(kPsu, 1, "A1");
            auto cfm = emi.nextOf(EMI_SET_CONFIG_CFM);
            ASSERT_TRUE(cfm);
            EXPECT_EQ(cfm->as<EMI_HEADER_S>().clientRef, 77u);
            emi.configure(kPsu, 1, "A1");
            secondConfigError = emi.rejCode(EMI_SET_CONFIG_REJ);
            emi.request(EMI_SUBSCRIBE_RESOURCE_DATA_REQ, kPsu, 1);
            ASSERT_TRUE(emi.nextOf(EMI_SUBSCRIBE_RESOURCE_DATA_CFM));
            auto first = emi.nextOf(EMI_RESOURCE_DATA_UPDATE_IND);
            ASSERT_TRUE(first);
            const auto data = first->as<EMI_RESOURCE_DATA_S>();
            firstUpdate = {data.words[0], data.words[1], data.words[2], data.words[3]};
            // Found at its fifth poll: operational within five seconds.
            while (auto update = emi.nextOf(EMI_RESOURCE_DATA_UPDATE_IND, 6000)) {
                const auto later = update->as<EMI_RESOURCE_DATA_S>();
                laterUpdate = {later.words[0], later.words[1], later.words[2], later.words[3]};
                if (later.words[0] == 1) break;
            }
            emi.request(EMI_GET_UNIT_PRODUCT_DATA_REQ, kPsu, 1);
            auto product = emi.nextOf(EMI_GET_UNIT_PRODUCT_DATA_CFM);
            ASSERT_TRUE(product);
            const auto productData = product->as<EMI_GET_UNIT_PRODUCT_DATA_CFM_S>();
            productNumber.assign(productData.productNumber, strnlen(productData.productNumber, 25));
            emi.request(EMI_GET_UNIT_MEASUREMENT_DATA_REQ, kPsu, 1);
            auto measured = emi.nextOf(EMI_GET_UNIT_MEASUREMENT_DATA_CFM);
            ASSERT_TRUE(measured);
            voltage = measured->as<EMI_GET_UNIT_MEASUREMENT_DATA_CFM_S>().words[0];
            emi.request(EMI_GET_RESOURCE_DATA_REQ, kPsu, 2);
            unknownReadError = emi.rejCode(EMI_GET_RESOURCE_DATA_REJ);
        },
        20000);
    EXPECT_EQ(secondConfigError, 0);
    // Not operational yet: the unit answers, its LEDs are not known yet.
    EXPECT_EQ(firstUpdate, (std::vector<std::uint16_t>{0, 1, 1, 1}));
    EXPECT_EQ(laterUpdate, (std::vector<std::uint16_t>{1, 3, 2, 1}));
    EXPECT_EQ(productNumber, "KDU 137 000/1");
    EXPECT_EQ(voltage, -5450);
    EXPECT_EQ(unknownReadError, 1);
}

TEST_F(EmiAdapterTest, ASilencedUnitsFaultReachesTheClientThatConfiguredItAndAResetIsRefused)
{
    std::vector<std::uint16_t> faults;
    std::uint16_t resetError = 99;
    client(
        [&](EmiClient& emi) {
            emi.configure(kPsu, 1, "A1");
            ASSERT_TRUE(emi.nextOf(EMI_SET_CONFIG_CFM));
            ose::delay(6000);
            m_cabinet.unit(1, 48)->faults().silent.arm(0);
            auto fault = emi.nextOf(EMI_FAULT_IND, 40000);
            ASSERT_TRUE(fault);
            faults.push_back(fault->as<EMI_FAULT_IND_S>().faultType);
            EMI_ACTION_REQ_S reset{};
            reset.actionType = kReset;
            emi.send(EMI_ACTION_REQ, kPsu, 1, reset);
            auto refused = emi.nextOf(EMI_ACTION_REJ);
            ASSERT_TRUE(refused);
            resetError = refused->as<EMI_ACTION_REJ_S>().errorCode;
            m_cabinet.unit(1, 48)->faults().clear();
            auto cease = emi.nextOf(EMI_FAULT_CEASE_IND, 10000);
            ASSERT_TRUE(cease);
            faults.push_back(cease->as<EMI_FAULT_IND_S>().faultType);
        },
        80000);
    // Missing, and missing no more.
    EXPECT_EQ(faults, (std::vector<std::uint16_t>{0, 0}));
    EXPECT_EQ(resetError, 2);
}

TEST_F(EmiAdapterTest, BadRequestsAreRefusedOrDroppedAndTheServerGoesOnServing)
{
    std::vector<std::uint16_t> errors;
    bool answeredAfterwards = false;
    client(
        [&](EmiClient& emi) {
            // Shorter than its header: dropped with a trace.
            ose::Signal* shortSignal = ose::alloc(8, EMI_SET_CONFIG_REQ);
            ose::send(&shortSignal, emi.server());
            // A header without its configuration: refused.
            emi.request(EMI_SET_CONFIG_REQ, kPsu, 5);
            errors.push_back(emi.rejCode(EMI_SET_CONFIG_REJ));
            emi.configure(42, 1, "A1");
            errors.push_back(emi.rejCode(EMI_SET_CONFIG_REJ));
            emi.request(EMI_SUBSCRIBE_RESOURCE_DATA_REQ, kAlarmPortGroup, 1);
            errors.push_back(emi.rejCode(EMI_SUBSCRIBE_RESOURCE_DATA_REJ));
            emi.configure(kSau, 1, "");
            ASSERT_TRUE(emi.nextOf(EMI_SET_CONFIG_CFM));
            ose::delay(6000);
            emi.request(EMI_GET_UNIT_MEASUREMENT_DATA_REQ, kSau, 1);
            errors.push_back(emi.rejCode(EMI_GET_UNIT_MEASUREMENT_DATA_REJ));
            emi.request(EMI_DELETE_CONFIG_REQ, kPsu, 9);
            answeredAfterwards = emi.nextOf(EMI_DELETE_CONFIG_CFM).has_value();
        },
        10000);
    EXPECT_EQ(errors, (std::vector<std::uint16_t>{0, 0, 0, 2}));
    EXPECT_TRUE(answeredAfterwards);
}

TEST_F(EmiAdapterTest, AnExternalNodeIsConfiguredWithAtMostSixPositionsAndReadAsANodeRecord)
{
    std::vector<ose::SIGSELECT> answers;
    std::uint16_t productError = 99;
    client(
        [&](EmiClient& emi) {
            EMI_SET_CONFIG_NODE_REQ_S node{};
            node.numberOfHubPositions = 7; // more than the signal holds
            for (std::size_t index = 0; index < kMaxHubPositions; ++index)
                std::snprintf(node.hubPositions[index], kHubPositionSize, "A%zu", index);
            emi.send(EMI_SET_CONFIG_REQ, kExternalNode, 3, node);
            emi.request(EMI_SUBSCRIBE_RESOURCE_DATA_REQ, kExternalNode, 3);
            emi.request(EMI_GET_RESOURCE_DATA_REQ, kExternalNode, 3);
            emi.request(EMI_GET_UNIT_PRODUCT_DATA_REQ, kExternalNode, 3);
            for (ose::SIGSELECT sigNo : {EMI_SET_CONFIG_CFM, EMI_SUBSCRIBE_RESOURCE_DATA_CFM,
                                         EMI_RESOURCE_DATA_UPDATE_IND, EMI_GET_RESOURCE_DATA_CFM})
                if (auto answer = emi.nextOf(sigNo)) answers.push_back(answer->sigNo);
            productError = emi.rejCode(EMI_GET_UNIT_PRODUCT_DATA_REJ);
            emi.request(EMI_DELETE_CONFIG_REQ, kExternalNode, 3);
            if (emi.nextOf(EMI_DELETE_CONFIG_CFM)) answers.push_back(EMI_DELETE_CONFIG_CFM);
        },
        2000);
    EXPECT_EQ(answers, (std::vector<ose::SIGSELECT>{EMI_SET_CONFIG_CFM, EMI_SUBSCRIBE_RESOURCE_DATA_CFM,
                                                    EMI_RESOURCE_DATA_UPDATE_IND, EMI_GET_RESOURCE_DATA_CFM,
                                                    EMI_DELETE_CONFIG_CFM}));
    EXPECT_EQ(productError, 0);
}

TEST_F(EmiAdapterTest, AnAlarmPortGroupIsConfirmedEachTimeAndCannotBeSubscribed)
{
    std::vector<ose::SIGSELECT> answers;
    std::uint16_t subscribeError = 99;
    client(
        [&](EmiClient& emi) {
            EMI_SET_CONFIG_ALARM_PORT_GROUP_REQ_S group{};
            group.typeOfUnit = 1;
            group.unitInstance = 1;
            group.groupOfPort = 2;
            group.parentObjectType = kSau;
            group.parentObjectId = 1;
            emi.send(EMI_SET_CONFIG_REQ, kAlarmPortGroup, 9, group);
            emi.send(EMI_SET_CONFIG_REQ, kAlarmPortGroup, 9, group);
            for (int i = 0; i < 2; ++i)
                if (auto cfm = emi.nextOf(EMI_SET_CONFIG_CFM)) answers.push_back(cfm->sigNo);
            emi.request(EMI_SUBSCRIBE_RESOURCE_DATA_REQ, kAlarmPortGroup, 9);
            subscribeError = emi.rejCode(EMI_SUBSCRIBE_RESOURCE_DATA_REJ);
            emi.request(EMI_DELETE_CONFIG_REQ, kAlarmPortGroup, 9);
            if (emi.nextOf(EMI_DELETE_CONFIG_CFM)) answers.push_back(EMI_DELETE_CONFIG_CFM);
        },
        2000);
    EXPECT_EQ(answers, (std::vector<ose::SIGSELECT>{EMI_SET_CONFIG_CFM, EMI_SET_CONFIG_CFM, EMI_DELETE_CONFIG_CFM}));
    EXPECT_EQ(subscribeError, 0);
}

} // namespace
