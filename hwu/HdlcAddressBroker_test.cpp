#include "hwu/HdlcAddressBroker.h"

#include "frame/FuncType.h"
#include "frame/testSupport/TraceCapture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace func_type;

std::optional<std::uint32_t> addressOf(std::string_view position, std::uint32_t funcType)
{
    HdlcAddress address;
    if (!Hdlc::getHdlcAddress(position, funcType, &address)) return std::nullopt;
    EXPECT_EQ(address.port, 0U) << "only the address is set";
    return address.address;
}

struct Expected {
    const char* position;
    std::uint32_t offset;
    std::uint32_t externalNode;
};

// Every socket of the hub with what a PSU and an external node get there.
constexpr Expected kHub[] = {
    {"A1", 0, 252},  {"A0", 0, 254},  {"B0", 0, 253},  {"B1", 1, 251},  {"A2", 2, 250},  {"B2", 3, 249},
    {"A3", 4, 248},  {"B3", 5, 247},  {"A4", 6, 246},  {"B4", 7, 245},  {"A5", 8, 244},  {"B5", 9, 243},
    {"A6", 10, 242}, {"B6", 11, 241}, {"A7", 12, 240}, {"B7", 13, 239}, {"A8", 14, 238}, {"B8", 15, 237},
    {"A", 0, 252},   {"B", 2, 250},   {"C", 13, 240},  {"D", 9, 244},   {"E", 4, 248},
};

TEST(HdlcAddressBroker, EverySocketGivesItsOffsetOnEachRangedUnitAndItsOwnAddressOnAnExternalNode)
{
    for (const Expected& row : kHub) {
        SCOPED_TRACE(row.position);
        EXPECT_EQ(addressOf(row.position, kPsu), 48 + row.offset);
        EXPECT_EQ(addressOf(row.position, kBfu), 64 + row.offset);
        EXPECT_EQ(addressOf(row.position, kPdu), 80 + row.offset);
        EXPECT_EQ(addressOf(row.position, kExternalNode), row.externalNode);
        HdlcAddress node;
        EXPECT_TRUE(Hdlc::getHdlcAddress(row.position, &node));
        EXPECT_EQ(node.address, row.externalNode);
    }
}

TEST(HdlcAddressBroker, SingleAddressUnitsTakeAnyKnownSocketOrNoneButNothingElse)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    for (const auto& [funcType, first] : {std::pair{kScu, 32U}, {kSau, 33U}, {kClu, 44U}}) {
        for (const char* position : {"", "NA", "A1", "B7", "B8", "E"}) {
            SCOPED_TRACE(std::string(text(funcType)) + " " + position);
            EXPECT_EQ(addressOf(position, funcType), first);
        }
        EXPECT_EQ(addressOf("Z", funcType), std::nullopt);
        EXPECT_EQ(addressOf("AUX A1", funcType), std::nullopt);
    }
    EXPECT_TRUE(trace.lines().empty()) << trace.text();
}

TEST(HdlcAddressBroker, UnknownAndMalformedPositionsGiveNoAddressAndSayWhy)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    EXPECT_EQ(addressOf("", kPsu), std::nullopt);
    EXPECT_TRUE(trace.lines().empty()) << "the empty text is no position, not a fault";

    const std::string tooLong(300, 'A');
    const char nonAscii[] = "A\xC3\xA4" "1";
    const std::string withNul("A1\0", 3);
    for (std::string_view bad : {std::string_view("NA"), std::string_view("a1"), std::string_view("A9"),
                                 std::string_view("C1"), std::string_view("AB"), std::string_view("1"),
                                 std::string_view(" A1"), std::string_view("A1 "), std::string_view("A 1"),
                                 std::string_view(tooLong), std::string_view(nonAscii), std::string_view(withNul)}) {
        SCOPED_TRACE(std::string(bad));
        EXPECT_EQ(addressOf(bad, kPsu), std::nullopt);
        EXPECT_EQ(addressOf(bad, kExternalNode), std::nullopt);
    }
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Hdlc::getHdlcAddress: Invalid hubposition: \"NA\", FuncType = 1 supplied"),
              1U);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5,
                          "Hdlc::getHdlcAddress: Invalid hubposition: \"A 1\", FuncType = 8 supplied"),
              1U);

    for (std::uint32_t funcType : {0U, 3U, 9U, 20U, 22U, 0xFFFFFFFFU}) EXPECT_EQ(addressOf("A1", funcType), std::nullopt);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Hdlc::getHdlcAddress: Invalid funcType 20 supplied."), 1U);
    EXPECT_EQ(trace.count("supSysCtrlEquipment", 5, "Hdlc::getHdlcAddress: Invalid funcType -1 supplied."), 1U);
}

TEST(HdlcAddressBroker, ThePortWordBeforeTheFirstBlankChoosesThePort)
{
    const auto split = [](std::string_view text) {
        const HubPositionText parts = Hdlc::splitHubPosition(text);
        return std::pair{parts.port, std::string(parts.position)};
    };
    EXPECT_EQ(split("AUX A3"), (std::pair{2U, std::string("A3")}));
    EXPECT_EQ(split("A3"), (std::pair{1U, std::string("A3")}));
    EXPECT_EQ(split("MAIN A3"), (std::pair{1U, std::string("A3")}));
    EXPECT_EQ(split("aux A3"), (std::pair{1U, std::string("A3")}));
    EXPECT_EQ(split("AUX"), (std::pair{1U, std::string("AUX")}));
    EXPECT_EQ(split(""), (std::pair{1U, std::string()}));
    // Only the first blank splits: the rest is the position and fails as one.
    EXPECT_EQ(split("AUX  A3"), (std::pair{2U, std::string(" A3")}));
    EXPECT_EQ(split(" A3"), (std::pair{1U, std::string("A3")}));
    EXPECT_EQ(addressOf(Hdlc::splitHubPosition("AUX A3").position, kPsu), 52U);
    EXPECT_EQ(addressOf(Hdlc::splitHubPosition("AUX  A3").position, kPsu), std::nullopt);
}

TEST(HdlcAddressBroker, AnAddressLeadsBackToTheFirstSocketWithItsOffset)
{
    for (std::uint32_t funcType : {kPsu, kBfu, kPdu}) {
        const std::uint32_t base = Hdlc::getBaseAddress(funcType, 0);
        for (std::uint32_t address = base; address < base + 16; ++address) {
            const std::string_view position = Hdlc::getHubPosition(funcType, address);
            SCOPED_TRACE(std::string(text(funcType)) + " " + std::to_string(address));
            ASSERT_FALSE(position.empty());
            EXPECT_EQ(addressOf(position, funcType), address);
        }
        EXPECT_EQ(Hdlc::getHubPosition(funcType, base + 16), "");
        EXPECT_EQ(Hdlc::getHubPosition(funcType, base - 1), "");
    }
    EXPECT_EQ(Hdlc::getHubPosition(kPsu, 48), "A1");
    EXPECT_EQ(Hdlc::getHubPosition(kPsu, 52), "A3");
    EXPECT_EQ(Hdlc::getHubPosition(kPdu, 93), "B7");
    EXPECT_EQ(Hdlc::getHubPosition(16), "");

    // The SCU: its own address and the cascade behind it.
    EXPECT_EQ(Hdlc::getBaseAddress(kScu, 32), 32U);
    EXPECT_EQ(Hdlc::getBaseAddress(kScu, 95), 32U);
    EXPECT_EQ(Hdlc::getBaseAddress(kScu, 96), 96U);
    EXPECT_EQ(Hdlc::getHubPosition(kScu, 32), "A1");
    for (std::uint32_t order = 1; order <= 7; ++order) {
        HdlcAddress cascade;
        ASSERT_TRUE(Hdlc::getCascadingAddress(order, &cascade));
        EXPECT_EQ(cascade.address, 95 + order);
        EXPECT_EQ(Hdlc::getHubPosition(kScu, cascade.address), Hdlc::getHubPosition(order - 1));
    }
    EXPECT_FALSE(Hdlc::getCascadingAddress(0, nullptr));
    EXPECT_FALSE(Hdlc::getCascadingAddress(8, nullptr));

    EXPECT_EQ(Hdlc::getBaseAddress(kSau, 0), 33U);
    EXPECT_EQ(Hdlc::getBaseAddress(kClu, 0), 44U);
    EXPECT_EQ(Hdlc::getBaseAddress(kExternalNode, 0), 237U);
    EXPECT_EQ(Hdlc::getBaseAddress(kFan, 0), 237U);
    EXPECT_EQ(Hdlc::getAlreadyInUse(), "ALREADY_IN_USE");
    EXPECT_EQ(addressOf(Hdlc::getAlreadyInUse(), kPsu), std::nullopt);
}

HubPositionList listOf(std::uint16_t count, std::initializer_list<const char*> texts)
{
    HubPositionList list;
    list.count = count;
    std::size_t index = 0;
    for (const char* position : texts) {
        std::memcpy(list.positions[index].data(), position, std::min(std::strlen(position), HubPositionList::kFieldSize));
        ++index;
    }
    return list;
}

TEST(HdlcAddressBroker, AListOfNodePositionsGivesEachFoundOneAtItsOwnIndexAndNeverReadsPastItsFields)
{
    std::array<HdlcAddress, 6> addresses;
    EXPECT_TRUE(Hdlc::getHdlcAddresses(listOf(3, {"Q", "A0", "E"}), addresses));
    EXPECT_FALSE(addresses[0].isValid());
    EXPECT_EQ(addresses[1].address, 254U);
    EXPECT_EQ(addresses[2].address, 248U);
    EXPECT_FALSE(addresses[3].isValid());

    std::array<HdlcAddress, 2> few;
    EXPECT_FALSE(Hdlc::getHdlcAddresses(listOf(2, {"Q", "R", "A0"}), few));

    // A count from outside larger than the fields, or than the room given.
    std::array<HdlcAddress, 6> all;
    EXPECT_TRUE(Hdlc::getHdlcAddresses(listOf(0xFFFF, {"", "", "", "", "", "B8"}), all));
    EXPECT_EQ(all[5].address, 237U);
    std::array<HdlcAddress, 1> one;
    EXPECT_FALSE(Hdlc::getHdlcAddresses(listOf(6, {"", "A0"}), one));

    // A field filled to its end without a NUL is a 12-character text.
    HubPositionList full = listOf(1, {"A0AAAAAAAAAAAAA"});
    EXPECT_EQ(full.text(0).size(), HubPositionList::kFieldSize);
    EXPECT_EQ(full.text(6), "");
    EXPECT_FALSE(Hdlc::getHdlcAddresses(full, all));
}

} // namespace
