#pragma once
// A node on the virtual clock: the simulated bus server, and a core process
// with the real OS, timer and PP handlers, the faults register and the unit
// broker making TestUnits. Steps run inside the core at given times; what the
// broker's observers, the equipment manager and the fault reporters hear is
// recorded with its virtual time.

#include "frame/ActiveFaultsRegister.h"
#include "frame/FuncType.h"
#include "frame/SscHandleIf.h"
#include "frame/TimerService.h"
#include "hwu/HWU_Broker.h"
#include "hwu/testSupport/PpBusHarness.h"
#include "hwu/testSupport/TestUnit.h"
#include "platform/WLTimerHandler.h"

#include "ose/Kernel.h"

#include <functional>
#include <string>
#include <vector>

inline std::string nameOf(const FuncId_t& funcId)
{
    return std::string(func_type::text(funcId.FuncType)) + "-" + std::to_string(funcId.FuncInst);
}

// Whole seconds of virtual time: a poll's exchanges each take a little bus
// time, and the period counts from the end of the poll.
inline std::string seconds(std::uint64_t ms) { return " @" + std::to_string(ms / 1000) + "s"; }
inline std::string at(const std::string& what) { return what + seconds(ose::get_time_ms()); }

class HwuRecorder : public BrokerObserverIf, public EquipmentManagerIf, public FaultsRegisterReportIf {
public:
    void unitOperational(const FuncId_t& funcId) override { m_broker.push_back(at("operational " + nameOf(funcId))); }
    void unitRemoved(const FuncId_t& funcId) override { m_broker.push_back(at("removed " + nameOf(funcId))); }
    void unitRestarted(const FuncId_t& funcId) override { m_broker.push_back(at("restarted " + nameOf(funcId))); }

    void setEventHandler(HwuEventIf*) override {}
    void start() override {}
    void statusChanged(const FuncId_t& funcId, const HwuStatusRecord& record) override
    {
        m_status.push_back(at(nameOf(funcId) + " avail " + std::to_string(record.available) + " comm " +
                              std::to_string(record.commOk) + " op " + std::to_string(record.operationalLed) +
                              " fault " + std::to_string(record.faultLed)));
    }
    void restartDone(const FuncId_t& funcId) override { m_broker.push_back(at("restartDone " + nameOf(funcId))); }
    void requestRestart(const FuncId_t&) override {}

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override
    {
        m_faults.push_back(at("raise " + std::to_string(faultId.id) + " " + nameOf(funcId) +
                              (faultId.text.empty() ? "" : " \"" + faultId.text + "\"")));
    }
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override
    {
        m_faults.push_back(at("cease " + std::to_string(faultId.id) + " " + nameOf(funcId)));
    }

    std::vector<std::string> m_broker;
    std::vector<std::string> m_status;
    std::vector<std::string> m_faults;
};

class FakeSsc : public SscHandleIf {
public:
    explicit FakeSsc(EquipmentManagerIf* equipment) : m_pEquipment(equipment) {}
    EquipmentManagerIf* getEquipmentManager() override { return m_pEquipment; }
    HWU_Broker* getHwuBroker() override { return m_pBroker; }
    EFuseCtrlIf* getEFuseCtrl() override { return nullptr; }
    PowerCtrlManager* getPowerCtrlManager() override { return nullptr; }
    ClimateCtrlServer* getClimateCtrlServer() override { return nullptr; }
    AlarmCtrlServer* getAlarmCtrlServer() override { return nullptr; }
    FanGroupEventIf* getFanGroupEventHandler() override { return nullptr; }
    CabinetCtrlIf* getCabinetCtrl() override { return nullptr; }
    CabinetObserverIf* getCabinetObserver() override { return nullptr; }
    CabinetFacade* getCabinetFacade() override { return nullptr; }

    EquipmentManagerIf* m_pEquipment;
    HWU_Broker* m_pBroker = nullptr;
};

class HwuNodeHarness : public PpBusHarness {
protected:
    using Step = std::function<void(HWU_Broker&)>;

    void SetUp() override
    {
        PpBusHarness::SetUp();
        m_faults.addReporter(&m_recorder);
    }

    // A step inside the core at `timeMs`.
    HwuNodeHarness& step(std::uint32_t timeMs, Step step)
    {
        m_steps.push_back({timeMs, std::move(step)});
        return *this;
    }

    // Starts the node and runs the world to `untilMs`; the node stays up
    // for more runs.
    void runNode(std::uint64_t untilMs)
    {
        startServer();
        spawn("SSC_THREAD", [this] {
            struct ServicesReset {
                ~ServicesReset()
                {
                    PpCommunicationService::setHandler(nullptr);
                    TimerService::setHandler(nullptr);
                    HuntService::setHandler(nullptr);
                    OsService::setHandler(nullptr);
                }
            } reset;
            WLOsHandler os;
            OsService::setHandler(&os);
            WLHuntHandler hunt;
            HuntService::setHandler(&hunt);
            SignalDispatcher dispatcher;
            WLTimerHandler timers(&dispatcher);
            TimerService::setHandler(&timers);
            WLPpCommunicationHandler pp(&dispatcher);
            PpCommunicationService::setHandler(&pp);
            HWU_Broker broker(m_faults, *m_pUnitFactory);
            m_ssc.m_pBroker = &broker;
            broker.start(m_ssc);
            broker.subscribeHWU(&m_recorder);
            m_pBroker = &broker;
            StepRunner runner(m_steps, broker);
            dispatcher.run();
        });
        world().runFor(untilMs);
    }

    // Request numbers sent to one address, with their virtual times.
    std::vector<std::string> requestsTo(std::uint8_t address, std::uint16_t port = 1) const
    {
        std::vector<std::string> found;
        for (const sim::BusLogEntry& entry : m_cabinet.busLog()) {
            if (entry.address != address || entry.port != port || entry.request.empty()) continue;
            found.push_back(std::to_string(static_cast<std::uint8_t>(entry.request[0])) + seconds(entry.timeMs));
        }
        return found;
    }

    TestUnit* unit(std::size_t index) { return index < m_factory.m_made.size() ? m_factory.m_made[index] : nullptr; }

    ActiveFaultsRegister m_faults;
    TestUnitFactory m_factory;
    HwuFactoryIf* m_pUnitFactory = &m_factory; // a test may make real units instead
    HwuRecorder m_recorder;
    // The root as the units and facades see it; a test may give it another
    // equipment manager before the node starts.
    FakeSsc m_ssc{&m_recorder};
    HWU_Broker* m_pBroker = nullptr;

private:
    class StepRunner : public TimerObserverIf {
    public:
        StepRunner(std::vector<std::pair<std::uint32_t, Step>>& steps, HWU_Broker& broker)
            : m_steps(steps), m_broker(broker)
        {
            for (std::uint32_t index = 0; index < m_steps.size(); ++index)
                TimerService::startTimer(m_steps[index].first, kStepTimer, this, index);
        }
        ~StepRunner() override { TimerService::stopAllTimers(this); }
        void timeout(TimerId timerId) override { m_steps.at(timerId.argument).second(m_broker); }

    private:
        static constexpr TimerType kStepTimer = 1;
        std::vector<std::pair<std::uint32_t, Step>>& m_steps;
        HWU_Broker& m_broker;
    };

    std::vector<std::pair<std::uint32_t, Step>> m_steps;
};
