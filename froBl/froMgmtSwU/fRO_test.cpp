#include "froBl/froMgmtSwU/export/dummy_fRO.h"
#include "froBl/froMgmtSwU/export/fROFactory.h"
#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/ldn.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

class RecordingObserver : public listener::Observer {
public:
    void observerEvent(listener::Subject* subject) override { events.push_back(subject); }
    std::vector<listener::Subject*> events;
};

// An object whose class knows one virtual attribute and records changes and
// state events.
class TestObject : public fRO {
public:
    std::string className() const override { return "TestObject"; }
    std::string getVirtualAttribute(const std::string& name) const override
    {
        return name == "computed" ? "42" : std::string();
    }
    void getVirtualAttributeNames(std::vector<std::string>& names) const override { names.push_back("computed"); }
    void attributeChanged(const std::string& name, const std::string& oldValue,
                          const std::string& newValue) override
    {
        changes.push_back(name + ":" + oldValue + "->" + newValue);
    }
    void propagate(const stateUserData& data) override { propagated.push_back(data.operationalState); }
    void aggregate(const stateUserData& data) override { aggregated.push_back(data.operationalState); }

    std::vector<std::string> changes;
    std::vector<std::string> propagated;
    std::vector<std::string> aggregated;
};

TEST(ListenerTest, NotifyReachesObserversOfTheKindAndKeepsChangedUnlessAllMatched)
{
    dummy_fRO subject("Cabinet");
    RecordingObserver one;
    RecordingObserver two;
    subject.attach(&one, 1);
    subject.attach(&one, 5); // already attached: its kind stays
    subject.attach(&two, 2);
    EXPECT_EQ(one.kind(), 1);

    subject.notify(1);
    EXPECT_TRUE(one.events.empty()) << "nothing changed, nothing told";

    subject.setChanged(listener::Subject::IsChanged);
    subject.notify(1);
    EXPECT_EQ(one.events.size(), 1u);
    EXPECT_TRUE(two.events.empty());
    EXPECT_EQ(subject.changed(), listener::Subject::IsChanged);

    subject.detach(&two);
    subject.notify(1);
    EXPECT_EQ(one.events.size(), 2u);
    EXPECT_EQ(subject.changed(), listener::Subject::Nothing);
}

TEST(ListenerTest, EitherSideMayGoFirstWithoutDanglingLinks)
{
    auto observer = std::make_unique<RecordingObserver>();
    {
        dummy_fRO subject("Cabinet");
        subject.attach(observer.get(), 1);
        EXPECT_EQ(observer->subjects().size(), 1u);
    }
    EXPECT_TRUE(observer->subjects().empty());

    dummy_fRO subject("Cabinet");
    subject.attach(observer.get(), 1);
    observer.reset();
    EXPECT_TRUE(subject.observers().empty());
    subject.setChanged(listener::Subject::IsChanged);
    subject.notify(1); // would touch freed memory if the link stayed
}

// Counts its events in a place that outlives it.
class CountingObserver : public listener::Observer {
public:
    explicit CountingObserver(int& calls) : m_calls(calls) {}
    void observerEvent(listener::Subject*) override { ++m_calls; }

private:
    int& m_calls;
};

// An observer whose event ends another observer of the same subject.
class EndingObserver : public listener::Observer {
public:
    void observerEvent(listener::Subject*) override
    {
        ++calls;
        victim.reset();
    }
    int calls = 0;
    std::unique_ptr<CountingObserver> victim;
};

TEST(ListenerTest, AnObserverEndedByAnotherInTheSameEventIsNotCalled)
{
    for (const bool deleting : {false, true}) {
        std::unique_ptr<fRO> object = std::make_unique<dummy_fRO>("Cabinet");
        int victimCalls = 0;
        EndingObserver first;
        first.victim = std::make_unique<CountingObserver>(victimCalls);
        object->attach(&first, 1);
        object->attach(first.victim.get(), 1);
        object->setChanged(listener::Subject::IsChanged);
        if (deleting)
            object->clearListeners(); // every observer hears that the object goes
        else
            object->notify(1);
        EXPECT_EQ(first.calls, 1) << (deleting ? "clearListeners" : "notify");
        EXPECT_EQ(first.victim, nullptr);
        EXPECT_EQ(victimCalls, 0) << (deleting ? "clearListeners" : "notify");
        EXPECT_EQ(object->observers(), (std::vector<listener::Observer*>{&first}));
    }
}

TEST(AttrNameValueTest, PrintsAndComparesAllThreeTexts)
{
    EXPECT_EQ(AttrNameValue("a", "1", "S32").toString(), "{ a, 1, S32  }");
    EXPECT_EQ(AttrNameValue().toString(), "{ noName, noValue, noType  }");
    EXPECT_EQ(AttrNameValue("a", "1", "S32"), AttrNameValue("a", "1", "S32"));
    EXPECT_FALSE(AttrNameValue("a", "1", "S32") == AttrNameValue("a", "1", "U32"));
}

TEST(fROTest, AttributesAreAddedOnceAndOnlyStoredOnesCanBeSet)
{
    TestObject object;
    object.addAttribute("label", "first", "STRING");
    object.addAttribute("label", "second", "S32");
    EXPECT_EQ(object.getAttribute("label"), "first");
    EXPECT_EQ(object.getAttributeType("label"), "STRING");
    EXPECT_EQ(object.getAttribute("unknown"), "");
    EXPECT_EQ(object.getAttribute("computed"), "42");
    EXPECT_TRUE(object.hasAttribute("computed"));
    EXPECT_FALSE(object.setAttribute("computed", std::string("7")));
    EXPECT_FALSE(object.setAttribute("unknown", std::string("7")));
    EXPECT_EQ(object.getAttributeNames(), (std::vector<std::string>{"label", "computed"}));
}

TEST(fROTest, SettingTheSameValueChangesNoFlagButStillNotifies)
{
    TestObject object;
    object.addAttribute("label", "x", "STRING");
    RecordingObserver observer;
    object.findAttribute("label")->attach(&observer, 1);

    object.setChanged(listener::Subject::Nothing);
    ASSERT_TRUE(object.setAttribute("label", std::string("x")));
    EXPECT_EQ(object.changed(), listener::Subject::Nothing);
    EXPECT_TRUE(observer.events.empty()) << "notify runs but has nothing to tell";

    // A change not yet told is told by a set of the same value.
    object.findAttribute("label")->setChanged(listener::Subject::IsChanged);
    ASSERT_TRUE(object.setAttribute("label", std::string("x")));
    EXPECT_EQ(observer.events.size(), 1u);
    observer.events.clear();

    ASSERT_TRUE(object.setAttribute("label", std::string("y")));
    EXPECT_EQ(object.changed(), listener::Subject::Nothing) << "no observer of another kind: reset";
    EXPECT_EQ(observer.events.size(), 1u);
    EXPECT_EQ(object.getAttribute("label"), "y");
}

TEST(fROTest, TypedSettersAndTestsUseTheTextForms)
{
    TestObject object;
    object.addAttribute("v", "", "S32");
    object.setAttribute("v", true);
    EXPECT_EQ(object.getAttribute("v"), "1");
    object.setAttribute("v", static_cast<std::uint32_t>(4294967295u));
    EXPECT_EQ(object.getAttribute("v"), "4294967295");
    object.setAttribute("v", static_cast<std::int8_t>(-5));
    EXPECT_EQ(object.getAttribute("v"), "-5");
    object.setAttribute("v", static_cast<std::uint8_t>(200));
    EXPECT_EQ(object.getAttribute("v"), "200");
    object.setAttribute("v", static_cast<std::int16_t>(-32768));
    EXPECT_TRUE(object.isAttribute("v", static_cast<std::int16_t>(-32768)));
    EXPECT_TRUE(object.isAttribute("v", "-32768"));
    EXPECT_FALSE(object.isAttribute("v", false));
}

class froMgrTest : public ::testing::Test {
protected:
    froMgrTest() : m_factory(m_ids), m_table(m_factory)
    {
        m_factory.registerType("TestObject", [] { return std::make_unique<TestObject>(); });
    }
    TestObject* make(const std::string& ldn)
    {
        return dynamic_cast<TestObject*>(m_table.createMO(ldn, 0x7040099, -1));
    }

    froIdHandler m_ids;
    fROFactory m_factory;
    froMgr m_table;
};

TEST_F(froMgrTest, StateEventsTravelDownToChildrenAndUpToTheParent)
{
    TestObject* parent = make("TestObject=1");
    TestObject* child = make("TestObject=1,TestObject=2");
    TestObject* orphan = make("Missing=1,TestObject=3");
    ASSERT_TRUE(parent && child && orphan);

    stateUserData data;
    data.operationalState = "down";
    parent->propagateHnd().stateChanged(data);
    EXPECT_EQ(child->propagated, std::vector<std::string>{"down"});
    EXPECT_TRUE(orphan->propagated.empty());

    data.operationalState = "up";
    child->aggregateHnd().stateChanged(data);
    EXPECT_EQ(parent->aggregated, std::vector<std::string>{"up"});

    ASSERT_TRUE(m_table.deleteMO("TestObject=1,TestObject=2"));
    parent->propagateHnd().stateChanged(data);
    EXPECT_TRUE(parent->propagateHnd().observers().empty());
}

TEST_F(froMgrTest, DeletingAnObjectFreesItsIdAndTellsItsObservers)
{
    TestObject* object = make("TestObject=1");
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->getExternalId(), 0);
    RecordingObserver observer;
    object->attach(&observer, 7);
    ASSERT_TRUE(m_table.deleteMO("TestObject=1"));
    EXPECT_EQ(observer.events.size(), 1u) << "told regardless of its kind";
    EXPECT_FALSE(m_table.deleteMO("TestObject=1"));
    EXPECT_EQ(m_ids.findLowestFreeFroId(0x7040099), 0);
}

TEST_F(froMgrTest, SetAttributeReportsTheChangeToTheObject)
{
    TestObject* object = make("TestObject=1");
    object->addAttribute("label", "a", "STRING");
    EXPECT_TRUE(m_table.setAttribute("TestObject=1", "label", "b"));
    EXPECT_EQ(object->changes, std::vector<std::string>{"label:a->b"});
    EXPECT_FALSE(m_table.setAttribute("TestObject=1", "nothing", "b"));
    EXPECT_FALSE(m_table.setAttribute("TestObject=9", "label", "b"));
    EXPECT_EQ(m_table.getAttribute("TestObject=1", "label"), "b");
    EXPECT_EQ(m_table.getAttribute("TestObject=9", "label"), "");
    EXPECT_EQ(m_table.createMO("TestObject=1", 0x7040099, -1), nullptr);
}

TEST_F(froMgrTest, FindsChildrenAndAncestorsOfAType)
{
    for (const char* ldn : {"Cabinet=1", "Cabinet=1,FanGroup=1", "Cabinet=1,FanGroup=1,HwUnit=1",
                            "Cabinet=1,HwUnit=2", "Cabinet=2", "Cabinet=10,HwUnit=1"})
        ASSERT_NE(m_table.createMO(ldn, 0x7040000 + static_cast<std::uint32_t>(Ldn::depth(ldn)), -1), nullptr);

    std::vector<std::string> list;
    EXPECT_TRUE(m_table.getChildren("Cabinet=1", list, 1, ""));
    EXPECT_EQ(list, (std::vector<std::string>{"Cabinet=1", "Cabinet=1,FanGroup=1", "Cabinet=1,HwUnit=2"}));
    list.clear();
    EXPECT_TRUE(m_table.getChildren("Cabinet=1", list, 5, "hwunit"));
    EXPECT_EQ(list, (std::vector<std::string>{"Cabinet=1,FanGroup=1,HwUnit=1", "Cabinet=1,HwUnit=2"}));

    list.clear();
    EXPECT_EQ(m_table.getLdnsOfType(list, "FanGroup"), 1);
    EXPECT_EQ(list, std::vector<std::string>{"Cabinet=1,FanGroup=1"});

    m_table.clear();
    EXPECT_EQ(m_table.getAllLdns(list), 0);
}

TEST_F(froMgrTest, AnObjectIsFoundByItsIdUntilItIsDeletedOrCleared)
{
    std::vector<std::pair<std::int32_t, std::string>> made;
    for (const char* ldn : {"Cabinet=1", "Cabinet=1,FanGroup=1", "Cabinet=2", "Cabinet=1,FanGroup=1,HwUnit=1"}) {
        const fRO* object = m_table.createMO(ldn, 0x7040000 + static_cast<std::uint32_t>(Ldn::depth(ldn)), -1);
        ASSERT_NE(object, nullptr);
        made.emplace_back(object->getInternalId(), ldn);
    }
    for (const auto& [id, ldn] : made)
        EXPECT_EQ(m_table.getLdn(id), ldn);

    ASSERT_TRUE(m_table.deleteMO("Cabinet=2"));
    EXPECT_EQ(m_table.getLdn(made[2].first), "");
    EXPECT_EQ(m_table.getLdn(made[1].first), "Cabinet=1,FanGroup=1");
    // A new object may be given the freed id and is found by it.
    const fRO* again = m_table.createMO("Cabinet=3", 0x7040001, -1);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(m_table.getLdn(again->getInternalId()), "Cabinet=3");

    m_table.clear();
    for (const auto& [id, ldn] : made)
        EXPECT_EQ(m_table.getLdn(id), "") << ldn;
}

TEST(LdnTest, DerivesEverythingFromTheText)
{
    const std::string ldn = "Cabinet=1,HwUnit=PSU 3";
    EXPECT_EQ(Ldn::moType(ldn), "HwUnit");
    EXPECT_EQ(Ldn::instance(ldn), "PSU 3");
    EXPECT_EQ(Ldn::parent(ldn), "Cabinet=1");
    EXPECT_EQ(Ldn::parent("Cabinet=1"), "");
    EXPECT_EQ(Ldn::depth(ldn), 2);
    EXPECT_TRUE(Ldn::isBelow(ldn, "Cabinet=1"));
    EXPECT_FALSE(Ldn::isBelow("Cabinet=10", "Cabinet=1"));
    EXPECT_EQ(Ldn::moType("Cabinet=1,noEquals"), "");
    EXPECT_EQ(Ldn::child("Cabinet=1", "FanGroup", "2"), "Cabinet=1,FanGroup=2");
    EXPECT_EQ(Ldn::child("", "Cabinet", "1"), "Cabinet=1");
}

} // namespace
