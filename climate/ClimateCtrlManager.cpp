#include "climate/ClimateCtrlManager.h"

#include "cabinet/CabinetObserverIf.h"
#include "cabinet/ExternalNodeCtrlIf.h"
#include "climate/ClimateCtrlServer.h"
#include "climate/ExternalNodeControl.h"
#include "climate/FanGroupControl.h"
#include "climate/ScuConfigurator.h"
#include "climate/TemperatureRegulator.h"
#include "frame/FuncType.h"
#include "frame/SscHandleIf.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/HwuBrokerIf.h"
#include "hwu/ScuIf.h"
#include "ose/Format.h"

using namespace ssc_trace;

namespace {
std::unique_ptr<ClimateCtrlManager> s_pInstance;
} // namespace

ClimateCtrlManager* ClimateCtrlManager::create(SscHandleIf& ssc, HwuBrokerIf& broker, FaultsRegisterIf& faults)
{
    s_pInstance.reset(new ClimateCtrlManager(ssc, broker, faults));
    return s_pInstance.get();
}

ClimateCtrlManager* ClimateCtrlManager::getInstance() { return s_pInstance.get(); }

void ClimateCtrlManager::destroy() { s_pInstance.reset(); }

ClimateCtrlManager::ClimateCtrlManager(SscHandleIf& ssc, HwuBrokerIf& broker, FaultsRegisterIf& faults)
    : m_pSsc(&ssc), m_pBroker(&broker)
{
    // The parts first: the broker tells a new subscriber of its units at once.
    m_pRegulator = std::make_unique<TemperatureRegulator>(this, this);
    m_pFanGroupControl = std::make_unique<FanGroupControl>(&broker, &faults, this, ssc.getFanGroupEventHandler());
    m_pExternalNodeControl = std::make_unique<ExternalNodeControl>(this);
    m_pScuConfigurator = std::make_unique<ScuConfigurator>(this);
    m_pBroker->subscribeHWU(this);
    if (CabinetObserverIf* cabinet = ssc.getCabinetObserver()) cabinet->subscribe(CabinetObserverIf::kCabinetConfigured, this);
    TimerService::startCyclicTimer(kRegulationPeriodMs, kRegulationTimer, this, 0);
}

ClimateCtrlManager::~ClimateCtrlManager()
{
    TimerService::stopAllTimers(this);
    if (m_pExternalNodes != nullptr) m_pExternalNodes->removeObserver(m_pExternalNodeControl.get());
    if (CabinetObserverIf* cabinet = m_pSsc->getCabinetObserver())
        cabinet->unsubscribe(CabinetObserverIf::kCabinetConfigured, this);
    m_pBroker->unSubscribeHWU(this);
}

float ClimateCtrlManager::getFlowFactor() const { return m_pRegulator->flowFactor(); }

// ---- regulation ----

bool ClimateCtrlManager::isRegulationPossible()
{
    if (!m_cabinetUpdated || !m_climateCfg.valid || !m_tempSensorsDefined) return false;
    // Parameters that stopped at an unknown climate system have not reached
    // the regulator: its limits are still 0, which would stop the fans.
    if (m_pRegulator->flowFactor() == 0.0f) return false;
    if (!m_supportSystemControl) return true;
    for (HwuStatusIf* scu : m_pBroker->getUnits(func_type::kScu))
        if (scu->isCommunicating()) return true;
    return false;
}

void ClimateCtrlManager::timeout(TimerId timerId)
{
    if (timerId.timerType == kRegulationTimer) performRegulation();
    else if (timerId.timerType == kSensorStatusTimer) checkSensorStatus(timerId.argument);
}

void ClimateCtrlManager::performRegulation()
{
    if (getInstance() == nullptr) {
        SSC_TRACE(climateGroup(), kError, "ClimateCtrlManager::performRegulation when instance is NIL");
        return;
    }
    if (!isRegulationPossible()) return;
    if (m_supportSystemControl) m_pRegulator->regulate();
    else m_pRegulator->reportAirflowDemand();
}

void ClimateCtrlManager::checkSensorStatus(std::uint32_t id)
{
    if (getInstance() == nullptr) {
        SSC_TRACE(climateGroup(), kError, "ClimateCtrlManager::checkSensorStatus when instance is NIL");
        return;
    }
    // A removed sensor's supervision ends here.
    if (m_tempSensorList.checkSensorStatus(id)) TimerService::startTimer(kStatusCheckMs, kSensorStatusTimer, this, id);
}

void ClimateCtrlManager::getMaxAirflowDemand(float* demand) { m_pExternalNodeControl->getMaxAirflow(demand); }

void ClimateCtrlManager::airflowDemandFromSecondary(std::uint32_t id, float demand)
{
    m_pExternalNodeControl->airflowDemand(id, demand);
}

void ClimateCtrlManager::attachExternalNodes(ExternalNodeCtrlIf* nodes)
{
    if (m_pExternalNodes != nullptr) m_pExternalNodes->removeObserver(m_pExternalNodeControl.get());
    m_pExternalNodes = nodes;
    if (nodes != nullptr) nodes->addObserver(m_pExternalNodeControl.get());
}

void ClimateCtrlManager::sendAirflowDemand(float demand)
{
    SSC_TRACE(climateGroup(), kFlow, "No primary node to send the air flow demand %s to", ose::floatToString(demand).c_str());
}

void ClimateCtrlManager::setFanSpeeds(int internalSpeed, int externalSpeed)
{
    m_pFanGroupControl->setFanSpeeds(internalSpeed, externalSpeed);
}

// A secondary node that has not told its demand yet may be hot: the
// regulator keeps the missing-node speed as its floor until it has.
void ClimateCtrlManager::updateBasicFanSpeed()
{
    if (m_cabinetUpdated && m_supportSystemControl && m_pExternalNodeControl->hasNodeWithoutDemand())
        m_pRegulator->useMissingNodeFanSpeed();
    else
        m_pRegulator->useBasicFanSpeed();
    SSC_TRACE(climateGroup(), kFlow, "BasicFanSpeed is %d", static_cast<int>(m_pRegulator->basicFanSpeed()));
}

// ---- the cabinet's parameters ----

void ClimateCtrlManager::update(std::uint32_t event)
{
    if (event != CabinetObserverIf::kCabinetConfigured) return;
    m_cabinetUpdated = true;
    handleClimateControlUpdate();
}

void ClimateCtrlManager::handleClimateControlUpdate()
{
    if (m_climateCfg.climateSystem == ClimateCfg::kUnknownClimateSystem) {
        SSC_TRACE(climateGroup(), kUnexpected,
                  "ClimateCtrlManager::handleClimateControlUpdate: Unable to get CabinetParameter information");
        m_climateCfg.climateSystem = 0;
        return;
    }
    if (m_supportSystemControl && m_climateCfg.climateSystem != m_climateSystemSent) {
        if (ClimateCtrlServer* server = m_pSsc->getClimateCtrlServer())
            server->sendClimateSystem(m_climateCfg.climateSystem == 0);
        m_climateSystemSent = m_climateCfg.climateSystem;
    }
    updateBasicFanSpeed();
    m_pRegulator->updateFanParameters();
    m_tempSensorList.updatePlacementFactors(m_climateCfg.placementFactorCBU, m_climateCfg.placementFactorPSU,
                                            m_climateCfg.placementFactorRAX, m_climateCfg.placementFactorRU,
                                            m_climateCfg.placementFactorTX, m_climateCfg.placementFactorDU);
    m_pFanGroupControl->checkCapabilitiesAndBlowers();
}

std::int32_t ClimateCtrlManager::placementFactorOf(std::uint32_t funcType) const
{
    switch (funcType) {
    case func_type::kCbu: return m_climateCfg.placementFactorCBU;
    case func_type::kPsu: return m_climateCfg.placementFactorPSU;
    case func_type::kRax: return m_climateCfg.placementFactorRAX;
    case func_type::kRu: return m_climateCfg.placementFactorRU;
    case func_type::kTx: return m_climateCfg.placementFactorTX;
    case func_type::kDu: return m_climateCfg.placementFactorDU;
    case func_type::kScu: return 0;
    default: SSC_TRACE(climateGroup(), kUnexpected, "Temperature sensor defined for unknown HW unit"); return 0;
    }
}

// ---- sensors ----

void ClimateCtrlManager::addTempSensor(std::uint32_t funcType, std::int32_t setPointTenths, std::int16_t coolingGain,
                                       std::int16_t timeConstant, std::uint32_t id, std::uint32_t hwId)
{
    SSC_TRACE(climateGroup(), kInfo, "TempSensor on %s with ID %d added.", func_type::text(funcType), static_cast<int>(id));
    TimerService::startTimer(kFirstStatusCheckMs, kSensorStatusTimer, this, id);
    m_tempSensorList.addTempSensor(funcType, placementFactorOf(funcType), setPointTenths, coolingGain, timeConstant, id,
                                   hwId);
    m_tempSensorsDefined = true;
}

// ---- fan groups ----

void ClimateCtrlManager::configureFanGroup(std::uint32_t funcInst, std::uint32_t fanGroupNumber, std::uint32_t cabinetId)
{
    const bool external = m_climateCfg.fanGroupControl(fanGroupNumber) == ClimateCfg::kExternalFanGroup;
    if (!m_pFanGroupControl->configureFanGroup(funcInst, fanGroupNumber, cabinetId, external)) return;
    if (CabinetFanGroups* cabinet = m_pFanGroupControl->findHolding(funcInst)) {
        cabinet->checkConsistency();
        cabinet->checkDisconnected();
        cabinet->checkHwError();
    }
}

void ClimateCtrlManager::deleteFanGroup(std::uint32_t funcInst)
{
    m_pFanGroupControl->deleteFanGroup(funcInst);
    m_pFanGroupControl->checkConsistencyOfAll();
}

bool ClimateCtrlManager::isFanGroupConfigured(std::uint32_t cabinetId, std::uint32_t group)
{
    return m_pFanGroupControl->isFanGroupConfigured(cabinetId, group);
}

void ClimateCtrlManager::fanGroupsConnected(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu,
                                            std::uint32_t funcType)
{
    m_pFanGroupControl->fanGroupsConnected(cabinetId, statusByte, secondScu, funcType);
}

void ClimateCtrlManager::fanGroupsFailure(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu,
                                          std::uint32_t funcType)
{
    m_pFanGroupControl->fanGroupsFailure(cabinetId, statusByte, secondScu, funcType);
}

void ClimateCtrlManager::cluPresent(bool present) { m_pFanGroupControl->cluPresent(present); }

void ClimateCtrlManager::fanGroupState(std::uint32_t cabinetId, std::uint32_t group, std::uint32_t state,
                                       std::uint32_t funcType)
{
    m_pFanGroupControl->fanGroupState(cabinetId, group, state, funcType);
}

// ---- units ----

void ClimateCtrlManager::unitOperational(const FuncId_t& unit)
{
    if (unit.FuncType != func_type::kScu && unit.FuncType != func_type::kClu) return;
    if (ScuIf* scu = m_pBroker->getScu(unit)) {
        const bool doorSwitch = m_doorSwitchOf ? m_doorSwitchOf(scu->getCabinetFuncInst()) : false;
        m_pScuConfigurator->configureScu(scu, doorSwitch);
        m_pFanGroupControl->checkFanGroupCapabilities();
    } else if (m_pBroker->getClu(unit) != nullptr) {
        m_pFanGroupControl->checkFanGroupCapabilities();
    }
}

void ClimateCtrlManager::unitRemoved(const FuncId_t& unit)
{
    if (unit.FuncType != func_type::kScu && unit.FuncType != func_type::kClu) return;
    m_pFanGroupControl->unitGone(unit);
}
