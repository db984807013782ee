// The cabinet facade: the cabinet's identity reconciled with a real SCU's
// memory on the simulated bus and the virtual clock, the configured event,
// the door switch, and the faults it passes on.

#include "cabinet/CabinetFacade.h"

#include "frame/FaultIds.h"
#include "frame/testSupport/TraceCapture.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/testSupport/HwuNodeHarness.h"
#include "sim/SimScu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

constexpr FuncId_t kScu1{func_type::kScu, 1};
constexpr std::uint32_t kCabinet = 1;

const sim::ProductStrings kScuIdentity{"BFD 101 001/1", "R1A", "CABINET 6201", "20260101", "CAB00000001"};
const sim::ProductStrings kErased{"", "", "", "", ""};
const ProductData kSameIdentity("BFD 101 001/1", "R1A", "CABINET 6201", "20260101", "CAB00000001");
const ProductData kOtherIdentity("BFD 101 001/1", "R1A", "CABINET 6201", "20250707", "CAB00000009");

std::string serialOf(const ProductData& pid) { return pid.serialNumber.empty() ? "-" : pid.serialNumber; }

std::vector<std::string> starting(const std::vector<std::string>& lines, const std::string& prefix)
{
    std::vector<std::string> found;
    for (const std::string& line : lines)
        if (line.rfind(prefix, 0) == 0) found.push_back(line);
    return found;
}

class EventLog : public CabinetEventIf {
public:
    void cabinetPidUpdated(const ProductData& pid) override { log("pid " + serialOf(pid)); }
    void cabinetIdentifierUpdated(std::uint32_t inst) override { log("identifier " + std::to_string(inst)); }
    void productDataUpdated(const ProductData& pid, std::uint32_t inst) override
    {
        log("checked " + serialOf(pid) + " " + std::to_string(inst));
    }
    void smokeDetectorStatusUpdated(std::uint32_t inst) override { log("smoke " + std::to_string(inst)); }
    void raiseSmokeDetectorDisconnected(const FuncId_t& id) override { fault("raise 14003", id); }
    void ceaseSmokeDetectorDisconnected(const FuncId_t& id) override { fault("cease 14003", id); }
    void raiseDoorAlarm(const FuncId_t& id) override { fault("raise 14002", id); }
    void ceaseDoorAlarm(const FuncId_t& id) override { fault("cease 14002", id); }
    void raiseCabinetPidMismatch(const FuncId_t& id) override { fault("raise 21500", id); }
    void ceaseCabinetPidMismatch(const FuncId_t& id) override { fault("cease 21500", id); }
    void raiseSmokeDetectorAlarm(const FuncId_t& id) override { fault("raise 14004", id); }
    void ceaseSmokeDetectorAlarm(const FuncId_t& id) override { fault("cease 14004", id); }
    void raiseSmokeDetectorHwFailure(const FuncId_t& id) override { fault("raise 14005", id); }
    void ceaseSmokeDetectorHwFailure(const FuncId_t& id) override { fault("cease 14005", id); }
    void raiseNumberOfHwEntitiesMismatch(const FuncId_t& id, const std::string& hub) override
    {
        fault("raise 14006 " + hub, id);
    }
    void ceaseNumberOfHwEntitiesMismatch(const FuncId_t& id, const std::string& hub) override
    {
        fault("cease 14006 " + hub, id);
    }

    std::vector<std::string> m_events;

private:
    void log(const std::string& what) { m_events.push_back(at(what)); }
    void fault(const std::string& what, const FuncId_t& id) { log(what + " " + nameOf(id)); }
};

class UpdateLog : public Observer {
public:
    void update(std::uint32_t id) override { m_ids.push_back(id); }
    std::vector<std::uint32_t> m_ids;
};

// ---- on the bus ----

class CabinetOnTheBusTest : public HwuNodeHarness {
protected:
    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }
    void TearDown() override
    {
        // The controller leaves the broker, which ends with the world.
        m_pFacade.reset();
        HwuNodeHarness::TearDown();
    }

    // An SCU of cabinet 1 with `memory`, configured at 100 ms: its memory
    // can be read at once, and it is found on the bus at 4 s. The facade is
    // made in the core once the broker exists.
    sim::SimScu& plugInScu(const sim::ProductStrings& memory)
    {
        auto& scu = static_cast<sim::SimScu&>(addUnit(sim::UnitType::SCU, 1, 32));
        scu.cabinet() = memory;
        step(50, [this](HWU_Broker&) {
            m_pFacade = std::make_unique<CabinetFacade>(m_ssc, m_faults);
            m_pFacade->setEventHandler(&m_events);
            m_units.setSides({nullptr, nullptr, nullptr, nullptr, m_pFacade.get()});
        });
        step(100, [](HWU_Broker& broker) { broker.configureHwu(kScu1, "", 0, kCabinet); });
        return scu;
    }
    void configure(std::uint32_t timeMs, const ProductData& pid)
    {
        step(timeMs, [this, pid](HWU_Broker&) { m_pFacade->setProductData(pid, kCabinet); });
    }
    // What the register reported of 21500, in order.
    std::vector<std::string> mismatchFaults() const
    {
        std::vector<std::string> found;
        for (const std::string& line : m_recorder.m_faults)
            if (line.find(" 21500 ") != std::string::npos) found.push_back(line);
        return found;
    }

    EventLog m_events;
    HwuUnitFactory m_units;
    std::unique_ptr<CabinetFacade> m_pFacade;
};

TEST_F(CabinetOnTheBusTest, ANewCabinetTakesTheIdentityOfItsScuWhenItsOwnSerialHoldsAnO)
{
    sim::SimScu& scu = plugInScu(kScuIdentity);
    configure(200, ProductData("BFD 101 001/1", "R1A", "CABINET 6201", "20260101", "CAB0O001"));
    runNode(7000);
    EXPECT_EQ(m_pFacade->getProductData(kCabinet), kSameIdentity);
    EXPECT_EQ(scu.cabinet().serialNumber, "CAB00000001");
    EXPECT_THAT(starting(m_events.m_events, "pid"), AllOf(Not(IsEmpty()), Each(StartsWith("pid CAB00000001 @0s"))));
    // Checked at configuration, and again when the SCU is found.
    EXPECT_THAT(starting(m_events.m_events, "checked"),
                ElementsAre("checked CAB00000001 1 @0s", "checked CAB00000001 1 @4s"));
    EXPECT_THAT(mismatchFaults(), IsEmpty());
}

TEST_F(CabinetOnTheBusTest, AManagedElementOfAnotherNumberKeepsTheScusIdentityOutAndRaisesTheMismatchAfterTwoSeconds)
{
    TraceCapture trace("supSysCtrlEquipment:7");
    plugInScu(kScuIdentity);
    step(150, [this](HWU_Broker&) { m_pFacade->setProductNameME("RBS 6102"); });
    configure(200, ProductData());
    runNode(6000);
    EXPECT_EQ(m_pFacade->getProductData(kCabinet), ProductData());
    EXPECT_TRUE(trace.contains("isContradictedByProductNameME: number parts 6201, 6102"));
    // Configured at 200 ms; the check when the SCU is found finds it standing.
    EXPECT_THAT(mismatchFaults(), ElementsAre("raise 21500 Cabinet-1 @2s"));
    EXPECT_THAT(m_events.m_events, Contains("raise 21500 Cabinet-1 @2s"));
}

TEST_F(CabinetOnTheBusTest, AnOperatorIdentityWithinTheDelayIsWrittenToTheScuAndNoMismatchIsEverReported)
{
    sim::SimScu& scu = plugInScu(kErased);
    configure(200, ProductData());
    step(1500, [this](HWU_Broker&) { m_pFacade->updateProductData(kOtherIdentity, kCabinet); });
    runNode(6000);
    EXPECT_EQ(scu.cabinet().serialNumber, "CAB00000009");
    EXPECT_EQ(scu.cabinet().productionDate, "20250707");
    EXPECT_THAT(mismatchFaults(), IsEmpty());
    EXPECT_THAT(m_events.m_events, Contains("pid CAB00000009 @1s"));
}

TEST_F(CabinetOnTheBusTest, BothInvalidRaiseTheMismatchAndAnOperatorIdentityCeasesItAtOnceThoughTheScuRefusesIt)
{
    sim::SimScu& scu = plugInScu(kErased);
    configure(200, ProductData());
    std::string memoryAfterRefusal;
    step(3000, [this, &scu, &memoryAfterRefusal](HWU_Broker&) {
        scu.faults().ppReject.arm(1, 4);
        m_pFacade->updateProductData(kOtherIdentity, kCabinet);
        memoryAfterRefusal = scu.cabinet().serialNumber;
    });
    runNode(6000);
    EXPECT_THAT(mismatchFaults(), ElementsAre("raise 21500 Cabinet-1 @2s", "cease 21500 Cabinet-1 @3s"));
    EXPECT_EQ(memoryAfterRefusal, "");
    EXPECT_THAT(m_recorder.m_faults, Contains("raise 21501 SCU-0 @3s"));
    // When the SCU is found it counts as new, and takes the identity then.
    EXPECT_EQ(scu.cabinet().serialNumber, "CAB00000009");
    EXPECT_EQ(m_pFacade->getProductData(kCabinet), kOtherIdentity);
}

TEST_F(CabinetOnTheBusTest, AfterOneMatchAnotherValidIdentityInTheScuIsANewScuAndIsOverwritten)
{
    sim::SimScu& scu = plugInScu(kScuIdentity);
    configure(200, kSameIdentity);
    step(10000, [&scu](HWU_Broker&) {
        scu.cabinet().serialNumber = "CAB00000002";
        scu.replace("SIM00000099", ose::get_time_ms());
    });
    runNode(20000);
    EXPECT_EQ(scu.cabinet().serialNumber, "CAB00000001");
    EXPECT_THAT(mismatchFaults(), IsEmpty());
    EXPECT_EQ(starting(m_events.m_events, "checked").size(), 3u);
}

TEST_F(CabinetOnTheBusTest, WithoutAnEarlierMatchAnotherValidIdentityInTheScuIsAMismatch)
{
    sim::SimScu& scu = plugInScu(kScuIdentity);
    configure(200, kOtherIdentity);
    runNode(6000);
    EXPECT_EQ(scu.cabinet().serialNumber, "CAB00000001");
    EXPECT_EQ(m_pFacade->getProductData(kCabinet), kOtherIdentity);
    EXPECT_THAT(mismatchFaults(), ElementsAre("raise 21500 Cabinet-1 @2s"));
}

TEST_F(CabinetOnTheBusTest, DeletingTheCabinetDropsAPendingMismatchWithoutAWord)
{
    plugInScu(kErased);
    configure(200, ProductData());
    step(1500, [this](HWU_Broker&) { m_pFacade->deleteCabinet(kCabinet); });
    runNode(6000);
    EXPECT_THAT(mismatchFaults(), IsEmpty());
    EXPECT_THAT(m_events.m_events, Not(Contains(::testing::HasSubstr("21500"))));
}

TEST_F(CabinetOnTheBusTest, TheScuTellsItsCabinetTheIdentifierAndTheSmokeDetectorWithItsFault)
{
    sim::SimScu& scu = plugInScu(kScuIdentity);
    configure(200, kSameIdentity);
    step(300, [this](HWU_Broker&) { m_pFacade->setSmokeDetectorConfigured(kCabinet, true); });
    std::vector<bool> connected;
    step(5000, [&](HWU_Broker&) { connected.push_back(m_pFacade->getSmokeDetectorStatus(kCabinet)); });
    step(5500, [&scu](HWU_Broker&) { scu.set("smokeDetectorConnected", 0); });
    step(7000, [&](HWU_Broker&) { connected.push_back(m_pFacade->getSmokeDetectorStatus(kCabinet)); });
    runNode(7500);
    EXPECT_EQ(connected, (std::vector<bool>{true, false}));
    EXPECT_EQ(m_pFacade->getCabinetIdentifier(kCabinet), "KDU 137 000/1_SIM00000001");
    EXPECT_THAT(m_events.m_events,
                IsSupersetOf({"identifier 1 @4s", "smoke 1 @6s", "raise 14003 Cabinet-1 @6s"}));
}

// ---- without a bus ----

class CabinetFacadeTest : public ::testing::Test {
protected:
    ActiveFaultsRegister m_faults;
    FakeSsc m_ssc{nullptr};
    EventLog m_events;
};

TEST_F(CabinetFacadeTest, TheCabinetIsConfiguredOnceProductDataAndTheNodeAreBothConfiguredInEitherOrder)
{
    CabinetFacade nodeFirst(m_ssc, m_faults);
    CabinetFacade pidFirst(m_ssc, m_faults);
    UpdateLog broker;
    UpdateLog other;
    nodeFirst.subscribe(CabinetObserverIf::kCabinetConfigured, &broker);
    pidFirst.subscribe(CabinetObserverIf::kCabinetConfigured, &other);

    nodeFirst.setNodeConfigured();
    pidFirst.setProductData(kSameIdentity, kCabinet);
    EXPECT_THAT(broker.m_ids, IsEmpty());
    EXPECT_THAT(other.m_ids, IsEmpty());
    nodeFirst.setProductData(kSameIdentity, kCabinet);
    pidFirst.setNodeConfigured();
    EXPECT_THAT(broker.m_ids, ElementsAre(0u));
    EXPECT_THAT(other.m_ids, ElementsAre(0u));

    // Configuration again tells again; a later subscriber is told at once.
    nodeFirst.setProductData(kOtherIdentity, kCabinet);
    UpdateLog late;
    nodeFirst.subscribe(7, &late);
    nodeFirst.subscribe(7, &late);
    EXPECT_THAT(broker.m_ids, ElementsAre(0u, 0u));
    EXPECT_THAT(late.m_ids, ElementsAre(7u));

    nodeFirst.unsubscribe(CabinetObserverIf::kCabinetConfigured, &broker);
    nodeFirst.setNodeConfigured();
    EXPECT_THAT(broker.m_ids, ElementsAre(0u, 0u));
    EXPECT_THAT(late.m_ids, ElementsAre(7u, 7u));
}

TEST_F(CabinetFacadeTest, OnlyTheCabinetsFaultsReachTheEventHandlerAndTheMismatchOfUnitsCarriesItsHubPosition)
{
    CabinetFacade facade(m_ssc, m_faults);
    facade.setEventHandler(&m_events);
    const FuncId_t cabinet{func_type::kCabinet, 1};
    const FuncId_t psu{func_type::kPsu, 3};
    FaultsRegisterReportIf& reports = facade;
    for (std::int32_t id : {14003, 14002, 21500, 14004, 14005}) reports.raiseFault(FaultId_t(id), cabinet);
    reports.raiseFault(FaultId_t(fault_id::kHwEntitiesMismatch, "A3"), psu);
    reports.raiseFault(FaultId_t(fault_id::kHwuFaulty), cabinet);
    reports.ceaseFault(FaultId_t(fault_id::kDoorAlarm), cabinet);
    reports.ceaseFault(FaultId_t(fault_id::kHwEntitiesMismatch, "A3"), psu);
    reports.ceaseFault(FaultId_t(fault_id::kHwuMissing), FuncId_t{func_type::kScu, 1});
    EXPECT_THAT(m_events.m_events,
                ElementsAre("raise 14003 Cabinet-1 @0s", "raise 14002 Cabinet-1 @0s", "raise 21500 Cabinet-1 @0s",
                            "raise 14004 Cabinet-1 @0s", "raise 14005 Cabinet-1 @0s", "raise 14006 A3 PSU-3 @0s",
                            "cease 14002 Cabinet-1 @0s", "cease 14006 A3 PSU-3 @0s"));
}

TEST_F(CabinetFacadeTest, TheDoorSwitchIsKeptPerConfiguredCabinetAndGoesWithIt)
{
    TraceCapture trace("supSysCtrlEquipment:5");
    CabinetFacade facade(m_ssc, m_faults);
    facade.addCabinet(1);
    facade.setDoorSwitch(1, 1);
    facade.addCabinet(1);
    facade.setDoorSwitch(2, 1);
    EXPECT_EQ(facade.getDoorSwitch(1), 1);
    EXPECT_EQ(facade.getDoorSwitch(2), 0);
    facade.deleteCabinet(1);
    EXPECT_EQ(facade.getDoorSwitch(1), 0);
    EXPECT_THAT(trace.texts("supSysCtrlEquipment", 5),
                IsSupersetOf({"setDoorSwitch, unable to update status, cabinetInst: 2",
                              "getDoorSwitch, no status available, cabinetInst: 1"}));
}

TEST_F(CabinetFacadeTest, OnlyAnotherNumberInTheManagedElementsNameContradictsTheScu)
{
    CabinetController controller(m_faults, nullptr);
    const ProductData scu("", "", "RBS 6201", "", "CAB1");
    EXPECT_FALSE(controller.isContradictedByProductNameME(scu));
    controller.setProductNameME("RBS 6102");
    EXPECT_TRUE(controller.isContradictedByProductNameME(scu));
    controller.setProductNameME("Site cabinet 06201 B2");
    EXPECT_FALSE(controller.isContradictedByProductNameME(scu));
    controller.setProductNameME("RBS");
    EXPECT_TRUE(controller.isContradictedByProductNameME(scu));
    EXPECT_FALSE(controller.isContradictedByProductNameME(ProductData("", "", "CABINET", "", "CAB1")));
    controller.setProductNameME("RBS 6201" + std::string(40, '9'));
    EXPECT_TRUE(controller.isContradictedByProductNameME(scu));
}

} // namespace
