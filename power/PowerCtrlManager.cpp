#include "power/PowerCtrlManager.h"

#include "cabinet/CabinetObserverIf.h"
#include "frame/FaultIds.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/HwuBrokerIf.h"
#include "ose/Format.h"
#include "power/BatteryBackupEventIf.h"
#include "power/BatteryCharger.h"
#include "power/BatteryChargerIf.h"
#include "power/BatteryLogIf.h"
#include "power/BatteryTestIf.h"
#include "power/PowerSupplyEventIf.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

using namespace ssc_trace;

namespace {

std::unique_ptr<PowerCtrlManager> s_pInstance;

constexpr float kBatteryModeCurrent = -2.0F;  // amperes: the battery is giving
constexpr float kReconnectCurrent = 2.0F;     // amperes: the battery is taking again
constexpr float kLowestBatteryModeThreshold = 50.0F;
constexpr float kOffsetGainDivisor = 1.5F;
constexpr float kOffsetMin = -0.5F;
constexpr float kOffsetMax = 1.0F;
constexpr float kNominalMin = -57.0F;
constexpr float kNominalMax = -48.0F;
constexpr std::uint32_t kFaultDelayMs = 3000;
constexpr std::uint32_t kMostFusesOpened = 2;
// The PDUs' limits when the configured ones cannot be used, hundredths of a volt.
constexpr std::int16_t kDefaultOvervoltageRaise = -5750;
constexpr std::int16_t kDefaultOvervoltageCease = -5700;
constexpr std::int16_t kDefaultUndervoltageRaise = -4400;
constexpr std::int16_t kDefaultUndervoltageCease = -4700;
// The hub positions whose PDUs give up e-fuses first when the power system
// is overloaded.
constexpr std::array<const char*, 20> kFusePositions{"A1", "A2", "A3", "A4", "A5", "A6", "A7", "A8", "B1", "B2",
                                                     "B3", "B4", "B5", "B6", "B7", "B8", "A",  "B",  "C",  "D"};

std::string text(float value, int decimals = 2) { return ose::floatToString(value, decimals); }

bool within(std::int32_t value, std::int32_t boundA, std::int32_t boundB)
{
    const std::int32_t size = std::abs(value);
    return size >= std::min(std::abs(boundA), std::abs(boundB)) && size <= std::max(std::abs(boundA), std::abs(boundB));
}

// The bound of the pair that `value` crossed, with the sign of `value`.
std::int32_t nearestBound(std::int32_t value, std::int32_t boundA, std::int32_t boundB)
{
    const std::int32_t low = std::min(std::abs(boundA), std::abs(boundB));
    const std::int32_t high = std::max(std::abs(boundA), std::abs(boundB));
    const std::int32_t size = std::clamp(std::abs(value), low, high);
    return value < 0 ? -size : size;
}

// Hundredths of a volt of the -48 V system: a limit configured without its
// sign still reaches the unit as the negative voltage it means; one beyond
// the 16 bits of the message is none at all.
std::optional<std::int16_t> hundredths(float volts)
{
    const long centivolts = std::lround(std::fabs(volts) * 100.0F);
    if (centivolts > 32767) return std::nullopt;
    return static_cast<std::int16_t>(-centivolts);
}

std::int32_t negative(std::int32_t value) { return -std::abs(value); }

} // namespace

PowerCtrlManager* PowerCtrlManager::create(HwuBrokerIf& broker, FaultsRegisterIf& faults, const Handlers& handlers)
{
    s_pInstance.reset();
    s_pInstance.reset(new PowerCtrlManager(broker, faults, handlers));
    return s_pInstance.get();
}

PowerCtrlManager* PowerCtrlManager::getInstance() { return s_pInstance.get(); }

void PowerCtrlManager::destroy() { s_pInstance.reset(); }

PowerCtrlManager::PowerCtrlManager(HwuBrokerIf& broker, FaultsRegisterIf& faults, const Handlers& handlers)
    : m_pBroker(&broker), m_pFaults(&faults), m_handlers(handlers), m_loadSharing(&broker, nullptr, &faults)
{
    // The charger reads the records in place; the broker may tell of units
    // as soon as this subscribes, so it comes first.
    m_pCharger = std::make_unique<BatteryCharger>(this, m_pFaults, &m_batteryCfg, &m_powerDistributionCfg,
                                                  &m_pBroker->getBfuStatus(), nullptr);
    m_loadSharing.setCharger(m_pCharger.get());
    if (m_handlers.cabinet != nullptr) m_handlers.cabinet->subscribe(CabinetObserverIf::kCabinetConfigured, this);
    m_pBroker->subscribeHWU(this);
}

PowerCtrlManager::~PowerCtrlManager()
{
    TimerService::stopAllTimers(this);
    m_pBroker->unSubscribeHWU(this);
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu))
        if (BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId())) bfu->unsubscribeStatus(kBfuStatusChanged, this);
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPdu))
        if (PduIf* pdu = m_pBroker->getPdu(unit->getFuncId())) pdu->unsubscribeStatus(kPduStatusChanged, this);
    if (m_handlers.cabinet != nullptr) m_handlers.cabinet->unsubscribe(CabinetObserverIf::kCabinetConfigured, this);
}

void PowerCtrlManager::setBatteryParts(std::unique_ptr<BatteryTestIf> test, std::unique_ptr<BatteryLogIf> log)
{
    m_pBatteryTest = std::move(test);
    m_pBatteryLog = std::move(log);
}

void PowerCtrlManager::setEnabled(bool enabled)
{
    m_enabled = enabled;
    if (enabled) return;
    TimerService::stopAllTimers(this);
    m_batteryBackupConfigured = false;
}

// ---- timers ----

void PowerCtrlManager::startTimer(std::uint32_t timeMs, TimerType type) { TimerService::startTimer(timeMs, type, this, 0); }

bool PowerCtrlManager::isTimerRunning(TimerType type) { return TimerService::isTimerRunning(type, this, 0) != 0; }

void PowerCtrlManager::stopTimer(TimerType type) { TimerService::stopTimer(type, this, 0); }

void PowerCtrlManager::timeout(TimerId timerId)
{
    switch (timerId.timerType) {
    case kRegulationTimer:
        performRegulation();
        startTimer(kRegulationPeriodMs, kRegulationTimer);
        break;
    case kBatteryModeTimer: confirmBatteryMode(); break;
    case kThreeMinutesTimer:
        SSC_TRACE(powerGroup(), kFlow, "TBN has been running on batteries for 3 minutes.");
        m_allowThreeMinuteCount = false;
        break;
    case kDayTimer:
        SSC_TRACE(powerGroup(), kFlow, "TBN has NOT been running on batteries for 24 hours.");
        m_allowThreeMinuteCount = true;
        break;
    case kBatteryLogStartTimer: startBatteryLog(false); break;
    case kReconnectEfuseTimer:
        if (batteryCharging()) closeAllFuses();
        break;
    case kBfuLoadTimer: checkBfuLoad(); break;
    default: SSC_TRACE(powerGroup(), kError, "subscriptionId %d not valid", static_cast<int>(timerId.timerType)); break;
    }
}

// ---- events of the cabinet and the units ----

void PowerCtrlManager::update(std::uint32_t event)
{
    switch (event) {
    case kBfuStatusChanged: {
        evaluateBfuFaults(nullptr);
        initiateCharger(false);
        m_pCharger->handleBfuStatus();
        if (m_pBatteryLog) {
            BfuStatusIf& bfus = m_pBroker->getBfuStatus();
            m_pBatteryLog->update(bfus.anyHwFault(), bfus.anyMainLoadDisconnected(), bfus.allBfusConnected(),
                                  !bfus.allTempSensorsOk(), bfus.anyBatteryOverTemperature());
        }
        if (m_pBatteryTest) m_pBatteryTest->evaluate();
        if (m_handlers.batteryBackup != nullptr) m_handlers.batteryBackup->statusChanged();
        break;
    }
    case kPduStatusChanged: evaluatePduFaults(nullptr); break;
    case kCabinetConfigured:
        if (m_enabled) cabinetConfigured();
        break;
    default: break;
    }
}

void PowerCtrlManager::cabinetConfigured()
{
    startTimer(kRegulationPeriodMs, kRegulationTimer);
    if (m_batteryBackupConfigured) return;
    m_cabinetNo = 0;
    SSC_TRACE(powerGroup(), kFlow, "cabinetNo is set to 0 by default.");
    m_batteryBackupConfigured = true;
    startTimer(kBatteryLogStartMs, kBatteryLogStartTimer);
    SSC_TRACE(powerGroup(), kFlow, "PowerCtrlManager: Configuration with battery backup.");
    configureBfus(false);
    configurePdus(false);
    initiateCharger(false);
    initiateBatteryTest(false);
}

void PowerCtrlManager::unitOperational(const FuncId_t& funcId)
{
    if (funcId.FuncType == func_type::kBfu) {
        BfuIf* bfu = m_pBroker->getBfu(funcId);
        if (bfu == nullptr) {
            SSC_TRACE(powerGroup(), kUnexpected, "Distributed configuration of BFU that was not operational");
            return;
        }
        if (!isTimerRunning(kBfuLoadTimer)) {
            SSC_TRACE(powerGroup(), kFlow, "Starting recurring timer to check BFU power load");
            TimerService::startCyclicTimer(kBfuLoadCheckMs, kBfuLoadTimer, this, 0);
        }
        if (m_batteryCfgReceived && m_powerDistributionCfgReceived && m_batteryBackupConfigured && !configureBfu(*bfu)) {
            m_bfuLimitsRefused = true;
            updateLimitsFault();
        }
        startBatteryLog(false);
        bfu->subscribeStatus(kBfuStatusChanged, this);
        BfuStatusIf& bfus = m_pBroker->getBfuStatus();
        if (m_batteryCfgReceived && bfus.anyBatteryPresent() && bfus.anyBfuOperational()) {
            m_pCharger->handleEvent(BatteryChargerIf::kBfuOperational);
            if (m_pBatteryLog) m_pBatteryLog->handleEvent(BatteryLogIf::kBfuOperational);
            if (m_pBatteryTest) m_pBatteryTest->evaluate();
        }
    } else if (funcId.FuncType == func_type::kPdu) {
        PduIf* pdu = m_pBroker->getPdu(funcId);
        if (pdu == nullptr) {
            SSC_TRACE(powerGroup(), kUnexpected, "Distributed configuration of PDU that was not operational");
            return;
        }
        if (m_powerSupplyCfgReceived && m_batteryBackupConfigured && !configurePdu(*pdu)) {
            m_pduLimitsRefused = true;
            updateLimitsFault();
        }
        pdu->subscribeStatus(kPduStatusChanged, this);
    }
}

void PowerCtrlManager::unitRemoved(const FuncId_t& funcId)
{
    if (funcId.FuncType == func_type::kBfu) {
        SSC_TRACE(powerGroup(), kFlow, "BFU removed");
        if (!anyOtherBfuAvailable(funcId)) {
            SSC_TRACE(powerGroup(), kFlow, "Stopping recurring timer to check BFU power load");
            stopTimer(kBfuLoadTimer);
            m_pCharger->handleEvent(BatteryChargerIf::kNoBfuOperational);
        }
        if (m_pBatteryLog) m_pBatteryLog->handleEvent(BatteryLogIf::kBfuRemoved);
        if (m_pBatteryTest) m_pBatteryTest->evaluate();
        evaluateBfuFaults(&funcId);
    } else if (funcId.FuncType == func_type::kPdu) {
        evaluatePduFaults(&funcId);
    }
}

// The broker tells of a removal while the unit is still in its list.
bool PowerCtrlManager::anyOtherBfuAvailable(const FuncId_t& removed)
{
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu))
        if (!unit->isSameFuncId(removed) && unit->isAvailable()) return true;
    return false;
}

void PowerCtrlManager::unitRestarted(const FuncId_t& funcId)
{
    if (funcId.FuncType == func_type::kBfu) m_pCharger->handleEvent(BatteryChargerIf::kBfuRestarted);
}

void PowerCtrlManager::statusChanged()
{
    // The figures are read where they are needed; the battery test looks at
    // each change of the battery's status.
    if (m_pBatteryTest) m_pBatteryTest->evaluate();
}

// ---- configuration ----

void PowerCtrlManager::updateBatteryParameters(const BatteryBackupCfg& cfg)
{
    SSC_TRACE(powerGroup(), kFlow, "Update Battery Parameters battery %s",
              anyBatteryPresent() ? "present" : "not present");
    BatteryBackupCfg::Date oldDate;
    BatteryBackupCfg::Date newDate;
    const bool hadDate = m_batteryCfg.installationDate(oldDate);
    const bool hasDate = cfg.installationDate(newDate);
    m_batteryCfg = cfg;
    m_batteryCfg.configured = true;
    if (hadDate != hasDate || oldDate.year != newDate.year || oldDate.month != newDate.month ||
        oldDate.day != newDate.day) {
        // A new battery: what was learnt of the old one's capacity is gone.
        m_pFaults->ceaseFault(fault_id::kConsumedCapacityNotCovered, {func_type::kBatteryBackup, 0});
        m_pFaults->ceaseFault(fault_id::kLowBatteryCapacityBatteryTest, {func_type::kBatteryBackup, 0});
    }
    const std::string dateText(m_batteryCfg.batteryInstallationDate,
                               strnlen(m_batteryCfg.batteryInstallationDate, BatteryBackupCfg::kDateSize));
    SSC_TRACE(powerGroup(), kFlow, " Installation Date: year = %d, month = %d, day = %d (retrieved from string %s)",
              newDate.year, newDate.month, newDate.day, dateText.c_str());
    m_batteryCfg.print();
    SSC_TRACE(powerGroup(), kFlow, " TimeOfMainLoadDisconnect = %d", static_cast<int>(m_batteryCfg.timeOfMainLoadDisconnect));
    if (m_pBatteryLog) m_pBatteryLog->setDisconnectInfo(m_batteryCfg.timeOfMainLoadDisconnect);
    m_batteryCfgReceived = true;
    startBatteryLog(true);
    configureBfus(true);
    initiateCharger(true);
    initiateBatteryTest(true);
}

void PowerCtrlManager::updatePowerDistribution(const PowerDistributionCfg& cfg)
{
    m_powerDistributionCfg = cfg;
    m_powerDistributionCfgReceived = true;
    configureBfus(true);
}

void PowerCtrlManager::updatePowerSupply(const std::int16_t values[kPowerSupplyValues])
{
    const float nominal = static_cast<float>(values[4]) / 10.0F;
    m_undervoltageRaise = static_cast<float>(values[8]) / 10.0F;
    m_undervoltageCease = m_undervoltageRaise - static_cast<float>(values[7]) / 10.0F;
    m_overvoltageRaise = static_cast<float>(values[6]) / 10.0F;
    m_overvoltageCease = m_overvoltageRaise + static_cast<float>(values[5]) / 10.0F;
    checkClass2Limits();
    m_powerSupplyCfgReceived = true;
    configurePdus(true);
    if (m_nominalVoltage != nominal) resetRegulation();
    m_nominalVoltage = nominal;
    m_nominalRefused = nominal < kNominalMin || nominal > kNominalMax;
    if (m_nominalRefused) {
        SSC_TRACE(powerGroup(), kError, "Using default voltage -54.5V, Faulty IDB NominalVoltage %s", text(nominal).c_str());
        m_nominalVoltage = kDefaultNominalVoltage;
    }
    updateLimitsFault();
    m_pCharger->setNominalVoltage(m_nominalVoltage);
}

// Limits that overlap would raise and cease a fault on every pass: the
// undervoltage must cease at or above where it is raised, the overvoltage at
// or below, and the two bands must not meet.
void PowerCtrlManager::checkClass2Limits()
{
    const float underRaise = std::fabs(m_undervoltageRaise);
    const float underCease = std::fabs(m_undervoltageCease);
    const float overCease = std::fabs(m_overvoltageCease);
    const float overRaise = std::fabs(m_overvoltageRaise);
    m_psuLimitsRefused = !(underRaise <= underCease && underCease < overCease && overCease <= overRaise);
    if (!m_psuLimitsRefused) return;
    SSC_TRACE(powerGroup(), kError, "Voltage limits %s/%s and %s/%s overlap, using the default limits",
              text(m_undervoltageRaise).c_str(), text(m_undervoltageCease).c_str(), text(m_overvoltageCease).c_str(),
              text(m_overvoltageRaise).c_str());
    useDefaultLimits();
}

void PowerCtrlManager::useDefaultLimits()
{
    m_overvoltageRaise = -57.5F;
    m_overvoltageCease = -57.0F;
    m_undervoltageRaise = -44.0F;
    m_undervoltageCease = -47.0F;
}

// One fault stands for every limit and voltage that could not be used; it
// goes when the last of them has been corrected.
void PowerCtrlManager::updateLimitsFault()
{
    const bool refused = m_bfuLimitsRefused || m_pduLimitsRefused || m_nominalRefused || m_psuLimitsRefused;
    raiseOrCease(refused, fault_id::kPowerLimitsOutsideCapabilities, func_type::kCabinet);
}

void PowerCtrlManager::getBatteryBackupStatus(BatteryBackupStatus* status)
{
    BfuStatusIf& bfus = m_pBroker->getBfuStatus();
    status->batteryCurrent = bfus.getBatteryCurrent();
    status->batteryTemperature = bfus.getAverageTemperature();
    status->batteryVoltage = bfus.getBatteryVoltage();
    status->referenceBatteryCapacity = m_batteryCfg.referenceBatteryCapacity;
    std::copy(std::begin(m_batteryCfg.nextScheduledBatteryTestDate), std::end(m_batteryCfg.nextScheduledBatteryTestDate),
              std::begin(status->nextScheduledBatteryTestDate));
    status->batteryTestRunning = m_pBatteryTest && m_pBatteryTest->isRunning();
}

void PowerCtrlManager::startEqualizeCharging()
{
    m_pCharger->handleEvent(BatteryChargerIf::kStartEqualize);
}

void PowerCtrlManager::stopEqualizeCharging()
{
    m_pCharger->handleEvent(BatteryChargerIf::kStopEqualize);
}

// Without a battery test the answers are those of a test that is not
// running and cannot start: nothing is configured to run it.
bool PowerCtrlManager::startBatteryTest(std::uint32_t initiation, std::uint32_t* error)
{
    if (m_pBatteryTest) return m_pBatteryTest->start(initiation, error);
    if (error != nullptr) *error = kNoTestToStart;
    return false;
}

bool PowerCtrlManager::stopBatteryTest(std::uint32_t reason, std::uint32_t* error)
{
    if (m_pBatteryTest) return m_pBatteryTest->stop(reason, error);
    if (error != nullptr) *error = kNoTestRunning;
    return false;
}

bool PowerCtrlManager::getBatteryTestProgress(std::int32_t words[4])
{
    return m_pBatteryTest && m_pBatteryTest->getProgress(words);
}

std::uint32_t PowerCtrlManager::getBatteryTestInitiation()
{
    return m_pBatteryTest ? m_pBatteryTest->getInitiation() : 0;
}

void PowerCtrlManager::connectBattery(bool connect, bool extended)
{
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu))
        if (BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId())) bfu->setControl(connect, extended);
}

void PowerCtrlManager::batteryFullyCharged()
{
    if (m_pBatteryTest) m_pBatteryTest->evaluate();
}

// ---- the voltage control pass ----

void PowerCtrlManager::performRegulation()
{
    if (m_pBroker->getPsuCount() > 0) evaluatePsuOk();
    if (m_pBatteryTest && m_pBatteryTest->isRunning()) {
        BfuStatusIf& bfus = m_pBroker->getBfuStatus();
        m_pCharger->checkBatteryStatus(bfus.getLowestBatteryVoltage(), bfus.getBatteryCurrent());
        m_pCharger->updateCharging(m_systemVoltage, bfus.getLowestBatteryVoltage(), bfus.getBatteryCurrent());
        SSC_TRACE(powerGroup(), kFlow, "No Voltage Control performed since Battery Test is running");
        return;
    }
    readSystemVoltage();
    watchPsuAccessibility();
    updateWantedVoltage();
    updateRegulatorOffset();
    m_loadSharing.balanceLoads();
    sendVoltages();
}

bool PowerCtrlManager::anyPsuUsable()
{
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPsu)) {
        const PsuIf* psu = m_pBroker->getPsu(unit->getFuncId());
        if (psu != nullptr && psu->isAvailable() && psu->isInputVoltageOk()) return true;
    }
    return false;
}

void PowerCtrlManager::evaluatePsuOk()
{
    const bool usable = anyPsuUsable();
    if (usable == m_psuOk) return;
    m_psuOk = usable;
    const bool anyBfu = m_pBroker->getBfuCount() > 0;
    std::uint32_t error = 0;
    if (!usable) {
        if (anyBfu) m_pCharger->handleEvent(BatteryChargerIf::kAcMainsLost);
        if (anyBfu && m_pBatteryTest && !m_pBatteryTest->start(BatteryTestIf::kAcMains, &error) &&
            m_handlers.batteryBackup != nullptr)
            m_handlers.batteryBackup->batteryTestStarted(BatteryTestIf::kAcMains);
        m_pFaults->raiseFault(fault_id::kNoPsuUsable, {func_type::kPowerSupply, 0});
    } else {
        if (anyBfu) m_pCharger->handleEvent(BatteryChargerIf::kAcMainsBack);
        if (anyBfu && m_pBatteryTest) m_pBatteryTest->stop(BatteryTestIf::kAcMains, &error);
        m_pFaults->ceaseFault(fault_id::kNoPsuUsable, {func_type::kPowerSupply, 0});
    }
}

void PowerCtrlManager::watchPsuAccessibility()
{
    bool accessible = false;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPsu)) accessible = accessible || unit->isCommunicating();
    if (accessible == m_anyPsuAccessible) return;
    m_anyPsuAccessible = accessible;
    m_pCharger->handleEvent(accessible ? BatteryChargerIf::kPsuAccessible : BatteryChargerIf::kNoPsuAccessible);
    if (!accessible && m_pBatteryTest) m_pBatteryTest->evaluate();
}

// The mean of the readings of the units of a kind that answer; none when
// no unit gave one.
std::optional<float> PowerCtrlManager::averageReading(std::uint32_t funcType)
{
    float sum = 0.0F;
    std::uint32_t count = 0;
    for (HwuStatusIf* unit : m_pBroker->getUnits(funcType)) {
        if (!unit->isAvailable()) continue;
        float reading = kNoValue;
        if (funcType == func_type::kPdu) {
            const PduIf* pdu = m_pBroker->getPdu(unit->getFuncId());
            if (pdu != nullptr && unit->isCommunicating()) reading = pdu->getSystemVoltage();
        } else if (funcType == func_type::kBfu) {
            if (const BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId())) reading = bfu->getSystemVoltage();
        } else if (const PsuIf* psu = m_pBroker->getPsu(unit->getFuncId())) {
            reading = psu->getOutputVoltage();
        }
        if (reading == kNoValue) continue;
        sum += reading;
        ++count;
    }
    if (count == 0) return std::nullopt;
    return sum / static_cast<float>(count);
}

void PowerCtrlManager::readSystemVoltage()
{
    // A PDU reports over- and undervoltage itself: its reading needs no
    // class 2 evaluation here.
    if (const auto pdus = averageReading(func_type::kPdu)) {
        m_systemVoltage = *pdus;
        m_systemVoltageValid = true;
        SSC_TRACE(powerGroup(), kFlow, " System Voltage read from PDU's: %sV", text(m_systemVoltage).c_str());
        testBatteryMode();
    } else if (const auto bfus = averageReading(func_type::kBfu)) {
        m_systemVoltage = *bfus;
        m_systemVoltageValid = true;
        SSC_TRACE(powerGroup(), kFlow, " System Voltage read from BFU's: %sV", text(m_systemVoltage).c_str());
        testBatteryMode();
        evaluateClass2Faults();
    } else if (const auto psus = averageReading(func_type::kPsu)) {
        m_systemVoltage = *psus;
        m_systemVoltageValid = true;
        SSC_TRACE(powerGroup(), kFlow, " System Voltage read from PSU's: %sV", text(m_systemVoltage).c_str());
        testBatteryMode();
        evaluateClass2Faults();
    } else {
        SSC_TRACE(powerGroup(), kFlow, "Unable to update sysvolt value, using previous value");
        m_systemVoltageValid = false;
        return;
    }
    if (m_handlers.powerSupply != nullptr) m_handlers.powerSupply->systemVoltageUpdated(m_systemVoltage);
}

void PowerCtrlManager::evaluateClass2Faults()
{
    const FuncId_t subject{func_type::kPowerSupply, 0};
    const float size = std::fabs(m_systemVoltage);
    if (size < std::fabs(m_undervoltageRaise)) {
        m_pFaults->raiseFault(fault_id::kSystemUndervoltage, subject);
        SSC_TRACE(powerGroup(), kFlow, "SYSTEM_UNDERVOLTAGE Class2 raised.");
    } else if (size >= std::fabs(m_undervoltageCease)) {
        m_pFaults->ceaseFault(fault_id::kSystemUndervoltage, subject);
        SSC_TRACE(powerGroup(), kFlow, "SYSTEM_UNDERVOLTAGE Class2 ceased.");
    }
    if (size > std::fabs(m_overvoltageRaise)) {
        m_pFaults->raiseFault(fault_id::kSystemOvervoltage, subject);
        SSC_TRACE(powerGroup(), kFlow, "SYSTEM_OVERVOLTAGE Class2 raised.");
    } else if (size <= std::fabs(m_overvoltageCease)) {
        m_pFaults->ceaseFault(fault_id::kSystemOvervoltage, subject);
        SSC_TRACE(powerGroup(), kFlow, "SYSTEM_OVERVOLTAGE Class2 ceased.");
    }
}

void PowerCtrlManager::updateWantedVoltage()
{
    if (anyBatteryPresent() && m_batteryCfgReceived && m_batteryBackupConfigured) {
        BfuStatusIf& bfus = m_pBroker->getBfuStatus();
        m_pCharger->updateCharging(m_systemVoltage, bfus.getLowestBatteryVoltage(), bfus.getBatteryCurrent());
        m_wantedVoltage = limitedToClass2Band(m_pCharger->getWantedVoltage());
        SSC_TRACE(powerGroup(), kFlow, "Wanted systemvoltage is set from chargingHandler: %s",
                  text(m_wantedVoltage).c_str());
        return;
    }
    m_wantedVoltage = m_nominalVoltage;
    SSC_TRACE(powerGroup(), kFlow, "Wanted systemvoltage is set to nominalVoltage: %s", text(m_wantedVoltage).c_str());
}

// The charger steps its voltage by the battery's current; whatever it asks,
// the system is not driven past its own class 2 alarm limits.
float PowerCtrlManager::limitedToClass2Band(float volts) const
{
    const float size = std::clamp(std::fabs(volts), std::fabs(m_undervoltageRaise), std::fabs(m_overvoltageRaise));
    return -size;
}

void PowerCtrlManager::updateRegulatorOffset()
{
    // Before the first reading there is nothing to regulate against; while
    // no PSU is usable the offset could only wind up, to hit the battery
    // with a surge when mains returns.
    if (m_systemVoltage == kNoValue || !m_psuOk) return;
    const float deviation = std::fabs(m_wantedVoltage) - std::fabs(m_systemVoltage);
    if (m_loadSharing.checkRegulationMode(deviation)) return;
    m_regOff = std::clamp(m_regOff + deviation / kOffsetGainDivisor, kOffsetMin, kOffsetMax);
}

void PowerCtrlManager::sendVoltages()
{
    SSC_TRACE(powerGroup(), kFlow, "==>Performing regulation");
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPsu)) {
        PsuIf* psu = m_pBroker->getPsu(unit->getFuncId());
        if (psu == nullptr || !psu->isAvailable()) continue;
        const float sharing = psu->getSharingOff();
        const float voltage = -(std::fabs(m_wantedVoltage) + m_regOff + sharing);
        SSC_TRACE(powerGroup(), kFlow, "System Voltage Control: PSU-%d: Wanted: %s, RegOff: %s SharingOff: %s New voltage: %s",
                  static_cast<int>(unit->getFuncId().FuncInst), text(m_wantedVoltage).c_str(), text(m_regOff).c_str(),
                  text(sharing).c_str(), text(voltage).c_str());
        psu->setOutputVoltage(voltage);
    }
}

void PowerCtrlManager::setOutputVoltage(float volts)
{
    SSC_TRACE(powerGroup(), kFlow, "==>Set Output Voltage: %s", text(volts).c_str());
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPsu)) {
        PsuIf* psu = m_pBroker->getPsu(unit->getFuncId());
        if (psu != nullptr && psu->isAvailable()) psu->setOutputVoltage(volts);
    }
}

void PowerCtrlManager::resetRegulation()
{
    SSC_TRACE(powerGroup(), kFlow, "Reset System Voltage Control regulation values");
    m_loadSharing.reset();
    m_regOff = 0.0F;
}

// ---- battery mode ----

float PowerCtrlManager::batteryModeThreshold() const
{
    const float threshold = std::fabs(m_nominalVoltage) - 1.0F;
    return threshold <= kLowestBatteryModeThreshold ? kLowestBatteryModeThreshold : threshold;
}

float PowerCtrlManager::batteryVoltage() const { return m_pCharger->getBatteryVoltage(); }

float PowerCtrlManager::batteryCurrent() const { return m_pBroker->getBfuStatus().getBatteryCurrent(); }

// A current that was not measured (999) is no sign of charging.
bool PowerCtrlManager::batteryCharging() const
{
    const float current = batteryCurrent();
    return current != kNoValue && current > kReconnectCurrent;
}

bool PowerCtrlManager::batteryModeCondition() const
{
    return std::fabs(m_systemVoltage) < batteryModeThreshold() && batteryCurrent() < kBatteryModeCurrent;
}

bool PowerCtrlManager::anyBatteryPresent() { return m_pBroker->getBfuStatus().anyBatteryPresent(); }

// A change of mode must last 30 seconds before it counts: a dip that ends
// sooner cancels the timer again.
void PowerCtrlManager::testBatteryMode()
{
    m_batteryVoltage = batteryVoltage();
    if (m_pBroker->getBfuCount() == 0) return;
    const bool running = isTimerRunning(kBatteryModeTimer);
    if (batteryModeCondition()) {
        if (!running && !m_runningOnBatteries) {
            startTimer(kBatteryModeConfirmMs, kBatteryModeTimer);
            m_batteryModeTimerSet = true;
            SSC_TRACE(powerGroup(), kFlow, "Battery Mode timer set.");
        } else if (m_ceaseBatteryModeTimerSet) {
            stopTimer(kBatteryModeTimer);
            m_ceaseBatteryModeTimerSet = false;
            SSC_TRACE(powerGroup(), kFlow, "Cease Battery Mode timer canceled.");
        }
    } else {
        if (!running && m_runningOnBatteries) {
            startTimer(kBatteryModeConfirmMs, kBatteryModeTimer);
            m_ceaseBatteryModeTimerSet = true;
            SSC_TRACE(powerGroup(), kFlow, "Cease Battery Mode timer set.");
        } else if (m_batteryModeTimerSet) {
            stopTimer(kBatteryModeTimer);
            m_batteryModeTimerSet = false;
            SSC_TRACE(powerGroup(), kFlow, "Battery Mode timer canceled.");
        }
    }
}

void PowerCtrlManager::confirmBatteryMode()
{
    m_batteryVoltage = batteryVoltage();
    SSC_TRACE(powerGroup(), kFlow, "Actual System voltage %sV", text(m_systemVoltage).c_str());
    if (batteryModeCondition()) {
        SSC_TRACE(powerGroup(), kInfo, "TBN is running on batteries");
        m_batteryModeTimerSet = false;
        setBatteryMode(true);
        if (!m_acLostSignalled) {
            if (m_handlers.batteryBackup != nullptr) m_handlers.batteryBackup->batteryModeChanged(true);
            if (m_pBatteryLog) m_pBatteryLog->handleEvent(BatteryLogIf::kBatteryModeOn);
            m_acLostSignalled = true;
        }
    } else {
        SSC_TRACE(powerGroup(), kInfo, "TBN is not running on batteries");
        m_ceaseBatteryModeTimerSet = false;
        setBatteryMode(false);
        if (m_acLostSignalled) {
            if (m_handlers.batteryBackup != nullptr) m_handlers.batteryBackup->batteryModeChanged(false);
            if (m_pBatteryLog) m_pBatteryLog->handleEvent(BatteryLogIf::kBatteryModeOff);
            m_acLostSignalled = false;
        }
    }
    SSC_TRACE(powerGroup(), kFlow, "System voltage %sV", text(m_systemVoltage).c_str());
    if (m_batteryVoltage == kNoValue) SSC_TRACE(powerGroup(), kFlow, "No Battery voltage measured");
    else SSC_TRACE(powerGroup(), kFlow, "Battery voltage %sV", text(m_batteryVoltage).c_str());
    raiseOrCease(m_runningOnBatteries, fault_id::kRunningOnBatteries, func_type::kBatteryBackup, kFaultDelayMs);
}

void PowerCtrlManager::setBatteryMode(bool on)
{
    m_runningOnBatteries = on;
    if (on) {
        if (m_allowThreeMinuteCount && !isTimerRunning(kThreeMinutesTimer)) {
            startTimer(kThreeMinutesMs, kThreeMinutesTimer);
            SSC_TRACE(powerGroup(), kFlow, "Battery mode ON. Three minutes count STARTED.");
        }
        if (isTimerRunning(kDayTimer)) {
            stopTimer(kDayTimer);
            SSC_TRACE(powerGroup(), kFlow, "Battery mode ON. 24 hours count CANCELLED.");
        }
        return;
    }
    if (isTimerRunning(kThreeMinutesTimer)) {
        stopTimer(kThreeMinutesTimer);
        SSC_TRACE(powerGroup(), kFlow, "Battery mode OFF. Three minutes count CANCELLED.");
    }
    if (!m_allowThreeMinuteCount && !isTimerRunning(kDayTimer)) {
        startTimer(kDayMs, kDayTimer);
        SSC_TRACE(powerGroup(), kFlow, "Battery mode OFF. 24 hours count STARTED.");
    }
}

// ---- initiations ----

void PowerCtrlManager::initiateCharger(bool force)
{
    if (m_chargerInitiated && !force) return;
    BfuStatusIf& bfus = m_pBroker->getBfuStatus();
    if (!m_batteryBackupConfigured || !m_batteryCfgReceived || !bfus.anyBatteryPresent() || !bfus.anyBfuOperational())
        return;
    SSC_TRACE(powerGroup(), kFlow, "==>update(): initiating BatteryCharger");
    m_pCharger->handleEvent(BatteryChargerIf::kBeginCharging);
    m_chargerInitiated = true;
}

void PowerCtrlManager::startBatteryLog(bool force)
{
    if (m_batteryLogInitiated && !force) return;
    if (!m_batteryBackupConfigured || !m_batteryCfgReceived || !m_pBroker->getBfuStatus().anyBfuOperational()) return;
    if (m_pBatteryLog) m_pBatteryLog->handleEvent(BatteryLogIf::kStart);
    m_batteryLogInitiated = true;
}

void PowerCtrlManager::configureBfus(bool force)
{
    if (m_bfusInitiated && !force) return;
    if (!m_batteryBackupConfigured || !m_batteryCfgReceived || !m_powerDistributionCfgReceived) return;
    bool failed = false;
    // A BFU that is not operational yet has not told its capabilities; it is
    // configured when it becomes operational.
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu)) {
        BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId());
        if (bfu != nullptr && unit->isAvailable()) failed = !configureBfu(*bfu) || failed;
    }
    m_bfuLimitsRefused = failed;
    updateLimitsFault();
    m_bfusInitiated = true;
}

void PowerCtrlManager::configurePdus(bool force)
{
    if (m_pdusInitiated && !force) return;
    if (!m_batteryBackupConfigured || !m_powerSupplyCfgReceived) return;
    bool failed = false;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPdu)) {
        PduIf* pdu = m_pBroker->getPdu(unit->getFuncId());
        if (pdu != nullptr && unit->isAvailable()) failed = !configurePdu(*pdu) || failed;
    }
    m_pduLimitsRefused = failed;
    updateLimitsFault();
    m_pdusInitiated = true;
}

void PowerCtrlManager::initiateBatteryTest(bool force)
{
    if (m_batteryTestInitiated && !force) return;
    if (!m_batteryBackupConfigured || !m_batteryCfgReceived) return;
    if (m_pBatteryTest) m_pBatteryTest->configure();
    m_batteryTestInitiated = true;
}

bool PowerCtrlManager::configurePdu(PduIf& pdu)
{
    const std::array<std::optional<std::int16_t>, 4> wanted{hundredths(m_overvoltageRaise), hundredths(m_overvoltageCease),
                                                           hundredths(m_undervoltageRaise), hundredths(m_undervoltageCease)};
    std::array<std::int16_t, 4> limits{};
    bool failed = false;
    for (std::size_t index = 0; index < limits.size(); ++index) {
        if (!wanted[index]) SSC_TRACE(powerGroup(), kError, "A voltage limit beyond 327.67 V cannot go to a PDU");
        failed = failed || !wanted[index];
        limits[index] = wanted[index].value_or(0);
    }
    if (pdu.hasCapabilities() && !failed) {
        struct Check {
            std::int16_t min;
            std::int16_t max;
            const char* trace;
        };
        const std::array<Check, 4> checks{{
            {pdu.getOvervoltageRaiseMin(), pdu.getOvervoltageRaiseMax(), "Over voltage raise limit (%d) is outside PDU capabilities"},
            {pdu.getOvervoltageCeaseMin(), pdu.getOvervoltageCeaseMax(), "Over voltage cease limit (%d) is outside PDU capabilities"},
            {pdu.getUndervoltageRaiseMin(), pdu.getUndervoltageRaiseMax(), "Under voltage raise limit (%d) is outside PDU capabilities"},
            {pdu.getUndervoltageCeaseMin(), pdu.getUndervoltageCeaseMax(), "Under voltage cease limit (%d) is outside PDU capabilities"},
        }};
        for (std::size_t index = 0; index < checks.size(); ++index) {
            if (within(limits[index], checks[index].min, checks[index].max)) continue;
            SSC_TRACE(powerGroup(), kError, checks[index].trace, static_cast<int>(limits[index]));
            failed = true;
        }
    }
    if (failed) {
        limits = {kDefaultOvervoltageRaise, kDefaultOvervoltageCease, kDefaultUndervoltageRaise, kDefaultUndervoltageCease};
        useDefaultLimits();
    }
    if (!pdu.setLimits(limits[0], limits[1], limits[2], limits[3])) {
        SSC_TRACE(powerGroup(), kError, "Failed to configure PDU");
        failed = true;
    }
    return !failed;
}

bool PowerCtrlManager::configureBfu(BfuIf& bfu)
{
    const std::int32_t main = negative(m_powerDistributionCfg.mainLoadUndervoltageDisconnect * 10);
    const std::int32_t ceaseOffset = m_powerDistributionCfg.undervoltageDisconnectCeaseOffset;
    std::array<std::int32_t, 5> values{main, negative(m_powerDistributionCfg.priorityLoadUndervoltageDisconnect * 10),
                                       main - 10 * ceaseOffset, m_batteryCfg.batteryDisconnectTemp,
                                       m_batteryCfg.batteryDisconnectTemp - m_batteryCfg.batteryDisconnectTempCeaseOffset};
    struct Check {
        std::int32_t min;
        std::int32_t max;
        const char* trace;
    };
    const std::array<Check, 5> checks{{
        {bfu.getMainLoadUvMin(), bfu.getMainLoadUvMax(), "Main load UV disconnect limit (%d) is outside BFU capabilities"},
        {bfu.getPrioLoadUvMin(), bfu.getPrioLoadUvMax(), "Prio load UV disconnect limit (%d) is outside BFU capabilities"},
        {bfu.getUvCeaseMin(), bfu.getUvCeaseMax(), "UV disconnect cease limit (%d) is outside BFU capabilities"},
        {bfu.getDisconnectTempMin(), bfu.getDisconnectTempMax(), "Battery disconnect temp (%d) is outside BFU capabilities"},
        {bfu.getCeaseTempMin(), bfu.getCeaseTempMax(), "Battery disconnect cease temp (%d) is outside BFU capabilities"},
    }};
    bool failed = false;
    for (std::size_t index = 0; index < checks.size(); ++index) {
        if (within(values[index], checks[index].min, checks[index].max)) continue;
        SSC_TRACE(powerGroup(), kError, checks[index].trace, static_cast<int>(values[index]));
        values[index] = nearestBound(values[index], checks[index].min, checks[index].max);
        failed = true;
    }
    if (!bfu.setConfig(static_cast<std::int16_t>(values[0]), static_cast<std::int16_t>(values[1]),
                       static_cast<std::int16_t>(values[2]), static_cast<std::int8_t>(values[3]),
                       static_cast<std::int8_t>(values[4]))) {
        SSC_TRACE(powerGroup(), kError, "Failed to configure BFU!");
        failed = true;
    }
    return !failed;
}

// ---- faults from the units' status ----

void PowerCtrlManager::raiseOrCease(bool raise, std::int32_t faultId, std::uint32_t funcType, std::uint32_t delayMs)
{
    const FuncId_t subject{funcType, 0};
    if (raise) m_pFaults->raiseFault(faultId, subject, delayMs);
    else m_pFaults->ceaseFault(faultId, subject, delayMs);
}

void PowerCtrlManager::evaluateBfuFaults(const FuncId_t* removed)
{
    bool counted = false;
    bool mainLoad = false;
    bool priorityLoad = false;
    bool sensorFault = false;
    bool overTemperature = false;
    bool noBattery = false;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu)) {
        if (removed != nullptr && unit->isSameFuncId(*removed)) continue;
        const BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId());
        if (bfu == nullptr || bfu->isFaulty() || !unit->isCommunicating()) continue;
        counted = true;
        mainLoad = mainLoad || bfu->isMainLoadDisconnected();
        priorityLoad = priorityLoad || bfu->isPriorityLoadDisconnected();
        sensorFault = sensorFault || bfu->isTempSensorFaulty();
        overTemperature = overTemperature || bfu->isBatteryOverTemperature();
        noBattery = noBattery || !bfu->isBatteryPresent();
    }
    raiseOrCease(mainLoad, fault_id::kMainLoadDisconnected, func_type::kPowerDistribution);
    raiseOrCease(priorityLoad, fault_id::kPriorityLoadDisconnected, func_type::kPowerDistribution);
    // Over temperature means something only where every BFU has a battery.
    raiseOrCease(overTemperature && !noBattery, fault_id::kBatteryOverTemperature, func_type::kBatteryBackup);
    raiseOrCease(noBattery, fault_id::kNoBatteryPresent, func_type::kBatteryBackup, kFaultDelayMs);
    if (!noBattery) initiateCharger(false);
    raiseOrCease(sensorFault, fault_id::kBatteryTempSensorFaulty, func_type::kBatteryBackup);
    if (!counted) closeAllFuses();
}

void PowerCtrlManager::evaluatePduFaults(const FuncId_t* removed)
{
    bool counted = false;
    bool high = false;
    bool low = false;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPdu)) {
        if (removed != nullptr && unit->isSameFuncId(*removed)) continue;
        const PduIf* pdu = m_pBroker->getPdu(unit->getFuncId());
        if (pdu == nullptr || pdu->isFaulty() || !unit->isCommunicating()) continue;
        counted = true;
        high = high || pdu->isVoltageHigh();
        low = low || pdu->isVoltageLow();
    }
    if (!counted) {
        m_pFaults->ceaseFault(fault_id::kMainLoadDisconnected, {func_type::kPowerDistribution, 0});
    } else {
        bool mainLoad = false;
        for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu)) {
            const BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId());
            if (bfu != nullptr && !bfu->isFaulty() && unit->isCommunicating())
                mainLoad = mainLoad || bfu->isMainLoadDisconnected();
        }
        if (mainLoad) m_pFaults->raiseFault(fault_id::kMainLoadDisconnected, {func_type::kPowerDistribution, 0});
    }
    raiseOrCease(high, fault_id::kSystemOvervoltage, func_type::kPowerSupply);
    raiseOrCease(low, fault_id::kSystemUndervoltage, func_type::kPowerSupply);
}

// ---- overload of the power system ----

void PowerCtrlManager::checkBfuLoad()
{
    BfuStatusIf& bfus = m_pBroker->getBfuStatus();
    if (!bfus.isDischargeOverload()) {
        if (m_fusesOpened > 0 && batteryCharging() && !isTimerRunning(kReconnectEfuseTimer)) {
            SSC_TRACE(powerGroup(), kFlow, "Battery current above +2A, start RECONNECT_EFUSE timer");
            startTimer(kReconnectEfuseMs, kReconnectEfuseTimer);
        }
        return;
    }
    bool opened = m_fusesOpened <= kMostFusesOpened && openFuse(false);
    if (m_pBroker->getBfuCount() > 1) opened = openFuse(true) || opened;
    if (opened || m_overloadHandled) return;
    connectBattery(true, false);
    bool disconnected = false;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kBfu)) {
        const BfuIf* bfu = m_pBroker->getBfu(unit->getFuncId());
        disconnected = disconnected || (bfu != nullptr && !bfu->isBatteryConnected());
    }
    SSC_TRACE(powerGroup(), kInfo, "BFU overloaded power system%s%s", disconnected ? ", battery disconnected" : "",
              m_fusesOpened == 0 ? ", no fuse opened" : "");
    m_overloadHandled = true;
}

// The first PDU, by hub position, that gives up an e-fuse; the second
// power subrack is walked from the other end.
bool PowerCtrlManager::openFuse(bool backwards)
{
    for (std::size_t step = 0; step < kFusePositions.size(); ++step) {
        const char* position = kFusePositions[backwards ? kFusePositions.size() - 1 - step : step];
        HdlcAddress address;
        if (!Hdlc::getHdlcAddress(position, func_type::kPdu, &address)) continue;
        for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPdu)) {
            if (unit->getHdlcAddress() != address.address) continue;
            PduIf* pdu = m_pBroker->getPdu(unit->getFuncId());
            if (pdu == nullptr || !pdu->openEfuse()) continue;
            ++m_fusesOpened;
            if (backwards)
                SSC_TRACE(powerGroup(), kInfo, "BFU overloaded power system: fuse number %d opened on second power subrack",
                          static_cast<int>(m_fusesOpened));
            else
                SSC_TRACE(powerGroup(), kInfo, "BFU overloaded power system: fuse number %d opened",
                          static_cast<int>(m_fusesOpened));
            return true;
        }
    }
    return false;
}

void PowerCtrlManager::closeAllFuses()
{
    m_overloadHandled = false;
    m_fusesOpened = 0;
    for (HwuStatusIf* unit : m_pBroker->getUnits(func_type::kPdu))
        if (PduIf* pdu = m_pBroker->getPdu(unit->getFuncId())) pdu->closeEfuses();
    connectBattery(true, true);
    SSC_TRACE(powerGroup(), kInfo, "BFU overloaded power system, all fuses have been closed");
}
