#include "froBl/froMgmtSwU/export/dummy_fRO.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froTypes.h"
#include "froBl/froMgmtSwU/export/xmlTree.h"

#include <gtest/gtest.h>

namespace {

using namespace fro_types;

class Controller : public fRO {
public:
    explicit Controller(std::string name) : m_name(std::move(name)) {}
    std::string className() const override { return m_name; }

private:
    std::string m_name;
};

class fROFactoryTest : public ::testing::Test {
protected:
    fROFactoryTest() : m_factory(m_ids) {}
    froIdHandler m_ids;
    fROFactory m_factory;
};

TEST(froIdHandlerTest, IdsAreNumberedPerClassAndTheLowestFreeIsGiven)
{
    froIdHandler ids;
    EXPECT_EQ(ids.findLowestFreeFroId(kHwUnit), 0);
    for (int id : {0, 1, 3})
        EXPECT_TRUE(ids.reserveFroId(kHwUnit, id));
    EXPECT_FALSE(ids.reserveFroId(kHwUnit, 3));
    EXPECT_EQ(ids.getNewFroId(kHwUnit), 0x00020002);
    EXPECT_EQ(ids.getNewFroId(kCabinet), 0x00000000);
    EXPECT_TRUE(ids.freeFroId(kHwUnit, 0x00020001));
    EXPECT_FALSE(ids.freeFroId(kHwUnit, 1));
    EXPECT_EQ(ids.findLowestFreeFroId(kHwUnit), 1);
}

TEST(froIdHandlerTest, InternalIdCarriesTheClassInBits16To30)
{
    EXPECT_EQ(froIdHandler::toInternalId(kEFuse, 5), 0x000B0005);
    EXPECT_EQ(froIdHandler::toInternalId(0xFFFFFFFF, 0xFFFF), 0x7FFFFFFF);
    EXPECT_EQ(froIdHandler::toExternalId(0x000B0005), 5);
}

TEST(froIdHandlerTest, AFullClassGivesNoIdRatherThanADuplicate)
{
    froIdHandler ids;
    for (int id = 0; id <= froIdHandler::kMaxExternalId; ++id)
        ids.allocateFroId(kEcPort, id);
    EXPECT_EQ(ids.findLowestFreeFroId(kEcPort), froIdHandler::kNoFreeId);
    EXPECT_EQ(ids.getNewFroId(kEcPort), froIdHandler::kNoFreeId);
    fROFactory factory(ids);
    EXPECT_EQ(factory.createFro("EcPort=x", kEcPort, -1, false, true, true), nullptr);
}

TEST_F(fROFactoryTest, NamesWithoutAClassMakeNothing)
{
    EXPECT_EQ(m_factory.createFro("", kCabinet, -1, false, true, true), nullptr);
    EXPECT_EQ(m_factory.createFro("Cabinet", kCabinet, -1, false, true, true), nullptr);
    EXPECT_EQ(m_factory.createFro("Cabinet=1,", kCabinet, -1, false, true, true), nullptr);
}

TEST_F(fROFactoryTest, AClassWithoutCallbackGetsADummyWithItsDefaults)
{
    auto object = m_factory.createFro("Cabinet=1,DeviceGroup=7", kDeviceGroup, -1, false, true, true);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->className(), "DeviceGroup");
    EXPECT_EQ(object->getFroType(), kDeviceGroup);
    EXPECT_EQ(object->getAttributeNames(),
              (std::vector<std::string>{"huntPath", "typeOfUnit", "unitInstanceNumber", "groupOfPort",
                                        "parentObjectType", "parentObjectId"}));
    EXPECT_EQ(object->getAttributeType("huntPath"), "STRING");
}

TEST_F(fROFactoryTest, CallbacksAreFoundByClassAndInstanceFirst)
{
    EXPECT_TRUE(m_factory.registerType("HwUnit", [] { return std::make_unique<Controller>("generic"); }));
    EXPECT_TRUE(m_factory.registerType("HwUnitPSU", [] { return std::make_unique<Controller>("psu"); }));
    EXPECT_FALSE(m_factory.registerType("HwUnit", [] { return std::make_unique<Controller>("other"); }));

    EXPECT_EQ(m_factory.createFro("HwUnit=PSU", kHwUnit, -1, false, false, true)->className(), "psu");
    EXPECT_EQ(m_factory.createFro("HwUnit=SCU", kHwUnit, -1, false, false, true)->className(), "generic");
    auto forced = m_factory.createFro("HwUnit=SCU", kHwUnit, -1, true, false, true);
    EXPECT_EQ(forced->className(), "HwUnit");
    EXPECT_TRUE(forced->attributes().empty());
}

TEST_F(fROFactoryTest, AnExplicitIdIsKeptAndCannotBeTakenTwice)
{
    auto first = m_factory.createFro("Cabinet=1", kCabinet, 17, false, true, true);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->getExternalId(), 17);
    EXPECT_EQ(first->getInternalId(), 0x00000011);
    EXPECT_EQ(m_factory.createFro("Cabinet=2", kCabinet, 17, false, true, true), nullptr);
    EXPECT_EQ(m_factory.createFro("Cabinet=3", kCabinet, 65535, false, true, true), nullptr);
    m_factory.deleteFro(std::move(first));
    EXPECT_NE(m_factory.createFro("Cabinet=2", kCabinet, 17, false, true, true), nullptr);
}

TEST_F(fROFactoryTest, AnIdNotReservedByTheObjectIsNotFreedByIt)
{
    ASSERT_TRUE(m_ids.reserveFroId(kCabinet, 4));
    auto shadow = m_factory.createFro("Cabinet=1", kCabinet, 4, true, false, false);
    ASSERT_NE(shadow, nullptr);
    EXPECT_EQ(shadow->getExternalId(), 4);
    shadow.reset();
    EXPECT_FALSE(m_ids.reserveFroId(kCabinet, 4)) << "still held by its owner";
}

TEST_F(fROFactoryTest, EveryClassGetsItsDefaultsAndTheProductDataIsAStruct)
{
    auto unit = m_factory.createFro("Cabinet=1,HwUnit=1", kHwUnit, -1, false, true, true);
    ASSERT_EQ(unit->attributes().size(), 7u);
    EXPECT_EQ(unit->getAttribute("faultIndicator"), "1");
    xmlTree productData("productData", "struct", unit->getAttribute("productData"));
    ASSERT_FALSE(productData.failed());
    std::size_t members = 0;
    ASSERT_TRUE(productData.size(members));
    EXPECT_EQ(members, 5u);
    std::string value = "x";
    EXPECT_TRUE(productData.getValue(value, {"productRevision"}));
    EXPECT_EQ(value, "");
}

// The classes with their numbers and default attributes as the management
// system knows them, written out rather than taken from the code's tables.
TEST_F(fROFactoryTest, EveryPersistentClassHasItsNumberAndDefaultsInTableOrder)
{
    struct Default {
        const char* name;
        const char* value;
        const char* type;
    };
    struct Expected {
        const char* className;
        std::uint32_t froType;
        std::vector<Default> defaults;
    };
    // As the XML writer prints a struct, so that a stored default reads back equal.
    const char* kProductData = "<struct name=\"productData\">\n"
                               "<attr name=\"productionDate\" type=\"STRING\" value=\"\"/>\n"
                               "<attr name=\"productName\" type=\"STRING\" value=\"\"/>\n"
                               "<attr name=\"productNumber\" type=\"STRING\" value=\"\"/>\n"
                               "<attr name=\"productRevision\" type=\"STRING\" value=\"\"/>\n"
                               "<attr name=\"serialNumber\" type=\"STRING\" value=\"\"/>\n"
                               "</struct>\n";
    const std::vector<Expected> classes{
        {"Cabinet", 0x7040000, {{"cabinetIdentifier", "", "STRING"}, {"smokeDetector", "0", "S32"}}},
        {"FanGroup", 0x7040001, {{"fanGroupFaultIndicator", "1", "S32"}}},
        {"HwUnit", 0x7040002, {{"productData", kProductData, "struct"}, {"availabilityStatus", "0", "S32"},
                               {"operationalState", "0", "S32"}, {"operationalIndicator", "1", "S32"},
                               {"faultIndicator", "1", "S32"}, {"batteryFaultIndicator", "0", "S32"},
                               {"powerDistrFaultIndicator", "1", "S32"}}},
        {"AlarmPort", 0x7040003, {{"operationalState", "0", "S32"}, {"activeExternalAlarm", "0", "S32"},
                                  {"availabilityStatus", "0", "S32"}}},
        {"ControlPort", 0x7040004, {{"operationalState", "0", "S32"}, {"availabilityStatus", "0", "S32"}}},
        {"BatteryBackup", 0x7040005, {{"batteryCurrent", "-9999", "S32"}, {"batteryTemperature", "999", "S32"},
                                      {"batteryTestIsRunning", "0", "S32"}, {"batteryVoltage", "-1", "S32"},
                                      {"referenceBatteryCapacity", "-1", "S32"},
                                      {"nextScheduledTestDate", "00000000", "STRING"}}},
        {"EcPort", 0x7040006, {}},
        {"ExternalNode", 0x7040007, {{"logicalName", "", "STRING"}, {"fullDistinguishedName", "", "STRING"},
                                     {"radioAccessTechnology", "0", "S32"}, {"supportSystemControl", "2", "S32"}}},
        {"PowerDistribution", 0x7040008, {}},
        {"PowerSupply", 0x7040009, {{"systemVoltage", "-1", "S32"}}},
        {"EquipmentSupportFunction", 0x704000A, {}},
        {"EFuse", 0x704000B, {{"parentObjectId", "", "S32"}, {"eFuseIndicator", "1", "S32"}}},
    };
    ASSERT_EQ(kPersistentCount, classes.size());
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const Expected& cls = classes[i];
        EXPECT_EQ(kClasses[i].froType, cls.froType) << cls.className;
        EXPECT_EQ(className(cls.froType), cls.className);
        auto object = m_factory.createFro(std::string(cls.className) + "=1", cls.froType, -1, false, true, true);
        ASSERT_NE(object, nullptr) << cls.className;
        EXPECT_EQ(object->className(), cls.className);
        const auto& attributes = object->attributes();
        ASSERT_EQ(attributes.size(), cls.defaults.size()) << cls.className;
        for (std::size_t a = 0; a < attributes.size(); ++a) {
            EXPECT_EQ(attributes[a].name(), cls.defaults[a].name) << cls.className;
            EXPECT_EQ(attributes[a].type(), cls.defaults[a].type) << cls.defaults[a].name;
            EXPECT_EQ(attributes[a].value(), cls.defaults[a].value) << cls.defaults[a].name;
        }
    }
    EXPECT_EQ(className(0x704000C), "DeviceGroup");
}

TEST(froIdHandlerTest, AnIdEnteredTwiceStaysTakenUntilItsLastEntryIsFreed)
{
    froIdHandler ids;
    ids.allocateFroId(kAlarmPort, 5);
    ids.allocateFroId(kAlarmPort, 5);
    EXPECT_TRUE(ids.freeFroId(kAlarmPort, 5));
    EXPECT_FALSE(ids.reserveFroId(kAlarmPort, 5));
    EXPECT_EQ(ids.findLowestFreeFroId(kAlarmPort), 0);
    EXPECT_TRUE(ids.freeFroId(kAlarmPort, froIdHandler::toInternalId(kAlarmPort, 5)));
    EXPECT_FALSE(ids.freeFroId(kAlarmPort, 5));
    EXPECT_TRUE(ids.reserveFroId(kAlarmPort, 5));
}


} // namespace
