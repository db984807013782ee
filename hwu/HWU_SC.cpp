#include "hwu/HWU_SC.h"

#include "climate/FanGroupBits.h"
#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace ssc_trace;

namespace {

constexpr std::uint8_t kFanGroupLedControl = 3;
constexpr std::uint8_t kFanSpeedControl = 1;
constexpr std::uint8_t kCabinetPidWriteRefused = 4;
constexpr std::size_t kMaxIdentifier = 38;
constexpr std::uint16_t kSmokeDetectorInputs = 0x0007;

bool bit(std::uint32_t word, unsigned index) { return ((word >> index) & 1U) != 0; }

template <std::size_t N>
std::string textOf(const std::array<char, N>& field)
{
    return std::string(field.data(), strnlen(field.data(), N));
}

// A string cut to its field, NUL-padded.
template <std::size_t N>
void putText(std::array<char, N>& field, const char* text)
{
    field.fill('\0');
    std::memcpy(field.data(), text, strnlen(text, N));
}

} // namespace

HWU_SC::HWU_SC(const HwuUnitArgs& args, const Collaborators& collaborators)
    : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults),
      m_cabinetFuncInst(args.cabinetFuncInst),
      m_sides(collaborators)
{
    SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_SC created for %s-%d, port %d", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
}

HWU_SC::~HWU_SC()
{
    m_pFaults->ceaseFaults(m_funcId);
    const FuncId_t cabinet = cabinetSubject();
    for (std::int32_t faultId : {fault_id::kSmokeDetectorDisconnected, fault_id::kSmokeDetectorAlarm,
                                 fault_id::kSmokeDetectorHwFailure, fault_id::kDoorAlarm})
        m_pFaults->ceaseFault(faultId, cabinet);
    if (m_sides.climate != nullptr) m_sides.climate->removeTempSensor(m_sensorId);
    if (!isSecondary() && m_sides.alarms != nullptr) m_sides.alarms->removeUnit(m_funcId);
    for (unsigned group = 1; group <= fan_group::kGroups; ++group) reportFanGroup(group, Led::kNotAvailable);
    TimerService::stopAllTimers(this);
    SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_SC::Destructor(), SCU-%d, port %d.", m_funcId.FuncInst,
              m_hdlcAddress.port);
}

bool HWU_SC::isPrimary() const { return m_pBroker->isDualBoxSupported() && m_hdlcAddress.port == 1; }
bool HWU_SC::isSecondary() const { return m_pBroker->isDualBoxSupported() && m_hdlcAddress.port == 2; }

// Control ids n in bit n - 1 of the first word, as every flag set of the bus.
bool HWU_SC::hasExtendedControl(unsigned id) const
{
    return m_addCapabilitiesRead && m_addCapabilities.extendedControl && id >= 1 && id <= 16 &&
           bit(m_addCapabilities.extendedControlIds1To16, id - 1);
}

pp::MessageNo HWU_SC::getStatusMsg() const
{
    return m_addCapabilitiesRead && m_addCapabilities.extendedStatus ? pp::SCU_GET_EXT_STATUS_REQ
                                                                     : pp::SCU_GET_STATUS_REQ;
}

// ---- status ----

void HWU_SC::parseStatus(const PpDeviceData& data)
{
    m_oldStatus = m_scuStatus;
    if (const auto* status = std::get_if<PpScuStatus>(&data))
        takeStatus(*status);
    else if (const auto* extended = std::get_if<PpScuExtStatus>(&data))
        takeExtendedStatus(*extended);
    if (m_scuStatus == m_oldStatus) return;
    const auto groupBits = [](const std::array<bool, 4>& groups) {
        unsigned word = 0;
        for (unsigned group = 0; group < groups.size(); ++group) word |= groups[group] ? 1U << group : 0U;
        return word;
    };
    SSC_TRACE(equipmentGroup(), kFlow, "SCU_GET_STATUS_CFM on %s-%d port %d is modified (the old value in parenthesis):",
              typeText(), m_funcId.FuncInst, m_hdlcAddress.port);
    SSC_TRACE(equipmentGroup(), kFlow,
              "\tConnectedFans = 0X%X (0X%X), fanGroupFailure = 0X%X (0X%X), externalInputAlarm =  0X%X (0X%X), "
              "status = 0X%X (0X%X)",
              groupBits(m_scuStatus.connectedFans), groupBits(m_oldStatus.connectedFans),
              groupBits(m_scuStatus.fanGroupFailure), groupBits(m_oldStatus.fanGroupFailure),
              m_scuStatus.externalInputAlarm, m_oldStatus.externalInputAlarm, m_scuStatus.scu, m_oldStatus.scu);
}

void HWU_SC::takeStatus(const PpScuStatus& status)
{
    ScuStatus received = m_scuStatus;
    for (unsigned group = 0; group < fan_group::kGroups; ++group) {
        received.connectedFans[group] = bit(status.connectedFans, group);
        received.fanGroupFailure[group] = bit(status.fanGroupFailure, group);
    }
    received.externalInputAlarm = status.externalInputAlarm;
    received.scu = status.status;
    applyDualBox(received);
}

void HWU_SC::takeExtendedStatus(const PpScuExtStatus& status)
{
    ScuStatus received = m_scuStatus;
    if (status.fansConnectedRead) received.fans = status.fanConnected;
    if (status.fanGroupFailureRead)
        for (unsigned group = 0; group < fan_group::kGroups; ++group)
            received.fanGroupFailure[group] = bit(status.fanGroupFailure, group);
    if (status.externalInputAlarmRead) received.externalInputAlarm = status.externalInputAlarm;
    if (status.statusRead) received.scu = status.status;
    // Fans seen at the first extended status are the ones this cabinet has:
    // only those can be missed.
    if (m_takeBaseline) {
        m_fanBaseline = received.fans;
        m_takeBaseline = false;
    }
    for (unsigned group = 0; group < fan_group::kGroups; ++group) {
        bool any = false;
        bool lost = false;
        for (unsigned fan = 4 * group; fan < 4 * group + 4; ++fan) {
            any = any || m_fanBaseline[fan];
            lost = lost || (m_fanBaseline[fan] && !received.fans[fan]);
        }
        received.connectedFans[group] = any && !lost;
    }
    applyDualBox(received);
}

void HWU_SC::applyDualBox(const ScuStatus& received)
{
    const ScuStatus before = m_scuStatus;
    m_scuStatus = received;
    if (isPrimary()) {
        for (unsigned group = 1; group < fan_group::kGroups; ++group) {
            m_scuStatus.connectedFans[group] = before.connectedFans[group];
            m_scuStatus.fanGroupFailure[group] = before.fanGroupFailure[group];
        }
    } else if (isSecondary()) {
        // The second box's one fan group is group 2 of the cabinet.
        m_scuStatus.connectedFans = before.connectedFans;
        m_scuStatus.fanGroupFailure = before.fanGroupFailure;
        m_scuStatus.connectedFans[1] = received.connectedFans[0];
        m_scuStatus.fanGroupFailure[1] = received.fanGroupFailure[0];
    }
}

void HWU_SC::handleStatus(bool)
{
    if (m_sides.alarms != nullptr) m_sides.alarms->updatePorts(m_funcId, m_scuStatus.externalInputAlarm, 0);
    if (changed(ScuStatus::kGeneralHwError)) setHwFault(m_scuStatus.flag(ScuStatus::kGeneralHwError));
    if (changed(ScuStatus::kDoorSwitch)) handleDoor();
    if (changed(ScuStatus::kTempSensorFault)) {
        const bool faulty = m_scuStatus.flag(ScuStatus::kTempSensorFault);
        SSC_TRACE(equipmentGroup(), kUnexpected, "SCU-%d %s Temp sensor fault", m_funcId.FuncInst,
                  faulty ? "raised" : "ceased");
        if (m_sides.climate != nullptr) {
            if (faulty)
                m_sides.climate->setSensorFault(m_sensorId);
            else
                m_sides.climate->clearSensorFault(m_sensorId);
        }
    }
    handleSmokeDetector();
    checkFans();
    if (m_sides.cabinet != nullptr)
        m_smokeDetectorConfigured = m_sides.cabinet->getSmokeDetectorConfigured(m_cabinetFuncInst);
}

void HWU_SC::clearStatus()
{
    m_scuStatus = {};
    m_smokeDetectorConfigured = false;
    m_fanBaseline = {};
    m_takeBaseline = true;
    HWU_ImplBase::clearStatus();
}

// ---- door ----

void HWU_SC::handleDoor()
{
    if (m_scuStatus.flag(ScuStatus::kDoorSwitch)) {
        if (m_doorAlarmLevel == 0) TimerService::startTimer(kDoorPeriodMs, kDoorTimer, this, 0);
        if (m_doorAlarmLevel < kMaxDoorLevel) ++m_doorAlarmLevel;
    }
    evaluateDoorAlarm();
}

void HWU_SC::evaluateDoorAlarm()
{
    const bool open = m_scuStatus.flag(ScuStatus::kDoorSwitch);
    SSC_TRACE(equipmentGroup(), kFlow, "Door Alarm: Switch=%d, Alarm Level Counter=%d", open, m_doorAlarmLevel);
    const FuncId_t door{0, m_funcId.FuncInst};
    // A door opened often holds its alarm for a while after it closed.
    if (open)
        m_pFaults->raiseFault(fault_id::kDoorAlarm, door);
    else if (m_doorAlarmLevel <= 1)
        m_pFaults->ceaseFault(fault_id::kDoorAlarm, door);
}

void HWU_SC::timeout(TimerId timerId)
{
    if (timerId.timerType != kDoorTimer) {
        HWU_ImplBase::timeout(timerId);
        return;
    }
    if (m_doorAlarmLevel > 0) --m_doorAlarmLevel;
    if (m_doorAlarmLevel > 0) TimerService::startTimer(kDoorPeriodMs, kDoorTimer, this, 0);
    evaluateDoorAlarm();
}

// ---- smoke detector ----

void HWU_SC::handleSmokeDetector()
{
    CabinetCtrlIf* cabinet = m_sides.cabinet;
    const bool configured = cabinet != nullptr && cabinet->getSmokeDetectorConfigured(m_cabinetFuncInst);
    const FuncId_t subject = cabinetSubject();
    const bool connectedChanged = changed(ScuStatus::kSmokeDetectorConnected);
    if (!m_scuStatus.flag(ScuStatus::kSmokeDetectorConnected)) {
        if (connectedChanged && cabinet != nullptr) cabinet->notifySmokeDetectorStatusUpdated(m_cabinetFuncInst);
        if (configured) {
            SSC_TRACE(equipmentGroup(), kFlow, "SCU-%d indicate smoke detector disconnected.", m_funcId.FuncInst);
            m_pFaults->raiseFault(fault_id::kSmokeDetectorDisconnected, subject);
        } else if (m_smokeDetectorConfigured != configured) {
            SSC_TRACE(equipmentGroup(), kFlow, "SCU-%d ceased smoke detector disconnected", m_funcId.FuncInst);
            m_pFaults->ceaseFault(fault_id::kSmokeDetectorDisconnected, subject);
        }
        return;
    }
    // At a restart the detector is news only if the cabinet has one.
    if ((configured || !isStartFlagSet()) && connectedChanged && cabinet != nullptr)
        cabinet->notifySmokeDetectorStatusUpdated(m_cabinetFuncInst);
    SSC_TRACE(equipmentGroup(), kFlow, "SCU-%d ceased smoke detector disconnected", m_funcId.FuncInst);
    m_pFaults->ceaseFault(fault_id::kSmokeDetectorDisconnected, subject);
    if (changed(ScuStatus::kSmokeDetectorAlarm)) {
        const bool alarm = m_scuStatus.flag(ScuStatus::kSmokeDetectorAlarm);
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  alarm ? "SCU-%d smoke detector alarm raised" : "SCU-%d smoke detector alarm ceased",
                  m_funcId.FuncInst);
        if (alarm)
            m_pFaults->raiseFault(fault_id::kSmokeDetectorAlarm, subject);
        else
            m_pFaults->ceaseFault(fault_id::kSmokeDetectorAlarm, subject);
    }
    if (changed(ScuStatus::kSmokeDetectorHwFailure)) {
        const bool failure = m_scuStatus.flag(ScuStatus::kSmokeDetectorHwFailure);
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  failure ? "SCU-%d smoke detector HW failure raised" : "SCU-%d smoke detector HW failure ceased",
                  m_funcId.FuncInst);
        if (failure)
            m_pFaults->raiseFault(fault_id::kSmokeDetectorHwFailure, subject);
        else
            m_pFaults->ceaseFault(fault_id::kSmokeDetectorHwFailure, subject);
    }
}

// ---- fans and their LEDs ----

void HWU_SC::checkFans()
{
    SSC_TRACE(equipmentGroup(), kFlow, "checkFanStatus SCU-%d, port %d.", m_funcId.FuncInst, m_hdlcAddress.port);
    bool ledChanged = false;
    for (unsigned group = 1; group <= fan_group::kGroups; ++group) {
        if (m_sides.climate != nullptr && m_sides.climate->isFanGroupConfigured(m_cabinetFuncInst, group))
            ledChanged = updateGroupLed(group) || ledChanged;
        else
            ledChanged = storeGroupLed(group, Led::kOff) || ledChanged;
    }
    if (ledChanged && hasHw(kYellowFaultLeds) && hasExtendedControl(kFanGroupLedControl)) sendFanGroupLeds();
    if (m_sides.climate == nullptr) return;
    if (m_scuStatus.fanGroupFailure != m_oldStatus.fanGroupFailure)
        m_sides.climate->fanGroupsFailure(m_cabinetFuncInst, fan_group::toClimateByte(m_scuStatus.fanGroupFailure),
                                          isSecondary(), func_type::kScu);
    if (m_scuStatus.connectedFans != m_oldStatus.connectedFans)
        m_sides.climate->fanGroupsConnected(m_cabinetFuncInst, fan_group::toClimateByte(m_scuStatus.connectedFans),
                                            isSecondary(), func_type::kScu);
}

bool HWU_SC::updateGroupLed(unsigned group)
{
    if (isSecondary() && group == 1) return false;
    const bool failure = m_scuStatus.fanGroupFailure[group - 1];
    const bool connected = m_scuStatus.connectedFans[group - 1];
    std::uint32_t state = Led::kOff;
    if (hasHw(kYellowFaultLeds)) {
        SSC_TRACE(equipmentGroup(), kFlow, "Fan group %d: Connected: %d, Failure: %d", group, connected, failure);
        const bool onlyGroup = m_capabilities.availableFanGroups == (1U << (group - 1));
        const bool extended = getStatusMsg() == pp::SCU_GET_EXT_STATUS_REQ;
        if (failure)
            state = Led::kSteadyOn;
        else if (!connected && (onlyGroup || extended))
            state = Led::kSlowBlink;
    } else {
        if (m_fanGroupLeds[group - 1].getLedState() == Led::kNotApplicable) return false;
        state = Led::kNotApplicable;
    }
    reportFanGroup(group, state);
    return storeGroupLed(group, state);
}

bool HWU_SC::storeGroupLed(unsigned group, std::uint32_t state)
{
    Led& led = m_fanGroupLeds[group - 1];
    if (led.getLedState() == state) return false;
    led.setLedState(state);
    SSC_TRACE(equipmentGroup(), kFlow, "SCU-%d, port %d: Led state on fan group %d changed to %s", m_funcId.FuncInst,
              m_hdlcAddress.port, group, Led::text(state));
    return true;
}

void HWU_SC::sendFanGroupLeds()
{
    PpScuExtendedControl control;
    control.count = 1;
    control.items[0].id = kFanGroupLedControl;
    for (unsigned group = 0; group < fan_group::kGroups; ++group) {
        const std::uint32_t state = m_fanGroupLeds[group].getLedState();
        if (!Led::wireCode(state, control.items[0].data[group])) {
            SSC_TRACE(equipmentGroup(), kUnexpected, "Tried to update fan group fault led with wrong state: %d", state);
            return;
        }
    }
    sendSet(pp::SCU_EXTENDED_CONTROL_REQ, nextSequence(), control);
}

void HWU_SC::reportFanGroup(unsigned group, std::uint32_t state)
{
    if (m_sides.climate != nullptr)
        m_sides.climate->fanGroupState(m_cabinetFuncInst, group, state, func_type::kScu);
}

// ---- capabilities and measurements ----

void HWU_SC::storeCapabilities(const PpDeviceData& data)
{
    if (const auto* capabilities = std::get_if<PpScuCapabilities>(&data)) m_capabilities = *capabilities;
    traceCapabilities();
    if (isSecondary()) {
        const std::uint8_t kept = (1U << kYellowFaultLeds) | (1U << kHeaterControlPorts);
        m_capabilities.availableHw = static_cast<std::uint8_t>(m_capabilities.availableHw & kept);
        const std::uint8_t groups = m_capabilities.availableFanGroups;
        m_capabilities.availableFanGroups =
            static_cast<std::uint8_t>((groups & 0xFC) | ((groups & 1U) << 1) | ((groups >> 1) & 1U));
    }
    const bool yellow = hasHw(kYellowFaultLeds);
    if (yellow) SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_SC::getSCUCapabilities yellowLed SCU-%d.", m_funcId.FuncInst);
    for (unsigned group = 1; group <= fan_group::kGroups; ++group)
        if (hasFanGroup(group)) reportFanGroup(group, yellow ? Led::kOff : Led::kNotApplicable);
}

void HWU_SC::traceCapabilities() const
{
    static constexpr const char* kHwNames[] = {"cabinetMemory",      "yellowFaultLeds", "smokeDetectorPort",
                                               "sharedSmokeDetectorPort", "heaterControlPorts", "doorSwitchPort",
                                               "tempSensor",         "additionalProcedures"};
    SSC_TRACE(equipmentGroup(), kFlow, "Capabilities on %s-%d port %d read:", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
    for (unsigned flag = 0; flag < std::size(kHwNames); ++flag)
        SSC_TRACE(equipmentGroup(), kFlow, "%s: %s", kHwNames[flag], hasHw(flag) ? "supported" : "NOT supported");
    for (unsigned group = 1; group <= fan_group::kGroups; ++group)
        SSC_TRACE(equipmentGroup(), kFlow, "fanGroup%d: %s", group, hasFanGroup(group) ? "supported" : "NOT supported");
    SSC_TRACE(equipmentGroup(), kFlow, "availableExternalInputs: %d", m_capabilities.availableExternalInputs);
    SSC_TRACE(equipmentGroup(), kFlow, "availableControlOutputs: %d", m_capabilities.availableControlOutputs);
}

void HWU_SC::readAdditionalCapabilities(std::uint8_t sequence)
{
    m_addCapabilitiesRead = false;
    if (!hasHw(kAdditionalProcedures)) {
        SSC_TRACE(equipmentGroup(), kFlow, "Additional capabilities not supported by this SCU");
    } else {
        PpDeviceData data;
        const auto* add = sendGet(pp::SCU_GET_ADD_CAPABILITIES_REQ, sequence, data)
                              ? std::get_if<PpScuAddCapabilities>(&data)
                              : nullptr;
        if (add != nullptr) {
            m_addCapabilities = *add;
            m_addCapabilitiesRead = true;
            SSC_TRACE(equipmentGroup(), kFlow, "Additional capabilities on %s-%d port %d read", typeText(),
                      m_funcId.FuncInst, m_hdlcAddress.port);
        } else {
            SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get additional capabilities from the SCU");
        }
    }
    if (!m_capabilitiesRead) return;
    if (m_scuStatus.flag(ScuStatus::kSmokeDetectorConnected)) {
        SSC_TRACE(equipmentGroup(), kFlow, "Smoke detector connected");
        if (hasHw(kSmokeDetectorPort)) {
            // Three of the inputs belong to the detector.
            SSC_TRACE(equipmentGroup(), kFlow, "Smoke Detector installed in SCU.");
            m_capabilities.availableExternalInputs =
                static_cast<std::uint16_t>(m_capabilities.availableExternalInputs & ~kSmokeDetectorInputs);
        }
    }
    SSC_TRACE(equipmentGroup(), kFlow, "Available external inputs: %d", m_capabilities.availableExternalInputs);
    if (m_sides.alarms != nullptr) m_sides.alarms->setAvailablePorts(m_funcId, m_capabilities.availableExternalInputs, 0);
}

bool HWU_SC::getAddCapabilities(PpScuAddCapabilities* out) const
{
    if (out != nullptr) *out = m_addCapabilities;
    return m_addCapabilitiesRead;
}

void HWU_SC::unitFound()
{
    if (m_capabilitiesRead && hasHw(kTempSensor) && m_sides.climate != nullptr)
        m_sides.climate->addTempSensor(func_type::kScu, -1, -1, -1, &m_sensorId);
    HWU_ImplBase::unitFound();
}

void HWU_SC::unitMissing()
{
    HWU_ImplBase::unitMissing();
    if (m_sides.climate != nullptr) m_sides.climate->removeTempSensor(m_sensorId);
    if (!isSecondary() && m_sides.alarms != nullptr) m_sides.alarms->removeUnit(m_funcId);
}

bool HWU_SC::fetchMeasurements()
{
    if (m_scuStatus.flag(ScuStatus::kGeneralHwError)) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "Failed to get Measurements from SCU%d, due to scuStatus.scu indicating General HW error",
                  m_funcId.FuncInst);
        return m_measuredOk = false;
    }
    m_measuredOk = true;
    // The second box has no sensor of its own.
    if (isSecondary()) return true;
    PpDeviceData data;
    const auto* values = sendGet(pp::SCU_GET_MEASUREMENTS_REQ, nextSequence(), data)
                             ? std::get_if<PpScuMeasurements>(&data)
                             : nullptr;
    if (values == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get Measurements from SCU%d", m_funcId.FuncInst);
        return m_measuredOk = false;
    }
    m_temperature = values->scuTemperature;
    SSC_TRACE(equipmentGroup(), kFlow, "Measurements from %s-%d port %d read:", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
    SSC_TRACE(equipmentGroup(), kFlow, "scuGetMeasurements.scuTemperature = %d", values->scuTemperature);
    if (m_sides.climate != nullptr) m_sides.climate->updateTemperature(m_sensorId, values->scuTemperature);
    return true;
}

std::int8_t HWU_SC::getTemperature() const
{
    // Cut to a byte as the interfaces carry it: 999 arrives as -25.
    const auto degrees = static_cast<std::int32_t>(m_measuredOk ? m_temperature : 999.0F);
    return static_cast<std::int8_t>(degrees);
}

bool HWU_SC::readProductData(bool* replaced)
{
    bool isReplaced = false;
    const bool read = HWU_ImplBase::readProductData(&isReplaced);
    if (replaced != nullptr) *replaced = isReplaced;
    if (read && isReplaced && m_sides.cabinet != nullptr) {
        std::string identifier = std::string(productNumber()) + "_" + serialNumber();
        if (identifier.size() > kMaxIdentifier) identifier.resize(kMaxIdentifier);
        m_sides.cabinet->notifyCabinetIdentifierUpdated(m_cabinetFuncInst, identifier);
    }
    return read;
}

// ---- settings ----

bool HWU_SC::setConfig(const PpScuConfig& config)
{
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuConfigFanGroup                   = %d",
              config.scuConfigFanGroup);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuConfigFanControl                 = %d",
              config.scuConfigFanControl);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuConfigOtherPorts                 = %d",
              config.scuConfigOtherPorts);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuHeater1OnTemp                   = %d",
              config.scuHeater1OnTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuHeater1OffTemp                  = %d",
              config.scuHeater1OffTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuHeater2OnTemp                   = %d",
              config.scuHeater2OnTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuHeater2OffTemp                  = %d",
              config.scuHeater2OffTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuIntFanLoTemp                    = %d",
              config.scuIntFanLoTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuIntFanHiTemp                    = %d",
              config.scuIntFanHiTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuExtFanLoUpTemp                  = %d",
              config.scuExtFanLoUpTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuExtFanHiUpTemp                  = %d",
              config.scuExtFanHiUpTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuExtFanLoDownTemp                = %d",
              config.scuExtFanLoDownTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuExtFanHiDownTemp                = %d",
              config.scuExtFanHiDownTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "setData.scuSetConfig.scuExtFanSpeedFault                = %d",
              config.scuExtFanSpeedFault);
    return sendSet(pp::SCU_SET_CONFIG_REQ, nextSequence(), config);
}

bool HWU_SC::setAddConfig(PpScuAddConfig config)
{
    SSC_TRACE(equipmentGroup(), kFlow, "setAddConfig");
    if (!hasHw(kAdditionalProcedures)) {
        SSC_TRACE(equipmentGroup(), kFlow, "Scu does not support additionalProcedures");
        return true;
    }
    if (!m_addCapabilitiesRead) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "SCU_SET_ADD_CONFIG_REQ not sent to %s-%d port %d. Additional capabilities are not updated.",
                  typeText(), m_funcId.FuncInst, m_hdlcAddress.port);
        return false;
    }
    // Only the items that the unit said it has go out.
    config.hasIntFanLoTempSpeed = m_addCapabilities.intFanSpeedAtLowTemp;
    config.hasColdOperation = m_addCapabilities.coldOperation;
    SSC_TRACE(equipmentGroup(), kFlow, "scuIntFanLoTempSpeed = %d", config.scuIntFanLoTempSpeed);
    SSC_TRACE(equipmentGroup(), kFlow, "scuColdopOnTemp = %d, scuColdopOffTemp = %d", config.scuColdopOnTemp,
              config.scuColdopOffTemp);
    return sendSet(pp::SCU_SET_ADD_CONFIG_REQ, nextSequence(), config);
}

bool HWU_SC::setFanSpeed(std::uint8_t speed1, std::uint8_t speed2, std::uint8_t speed3, std::uint8_t speed4)
{
    bool sent = false;
    if (hasExtendedControl(kFanSpeedControl)) {
        PpScuExtendedControl control;
        control.count = 1;
        control.items[0].id = kFanSpeedControl;
        control.items[0].data = isSecondary() ? std::array<std::uint8_t, 4>{speed1, 0, 0, 0}
                                              : std::array<std::uint8_t, 4>{speed1, speed2, speed3, speed4};
        sent = sendSet(pp::SCU_EXTENDED_CONTROL_REQ, nextSequence(), control);
    } else {
        // The plain message carries the second box's group in the second place.
        const PpScuFanSpeed speeds{isSecondary() ? std::array<std::uint8_t, 4>{speed2, 0, 0, 0}
                                                 : std::array<std::uint8_t, 4>{speed1, speed2, speed3, speed4}};
        sent = sendSet(pp::SCU_SET_FAN_SPEED_REQ, nextSequence(), speeds);
    }
    if (!sent) SSC_TRACE(equipmentGroup(), kUnexpected, "Unable to set changed fan speed on EC bus");
    return sent;
}

bool HWU_SC::readCabinetPid(HwuProductRecord* pid)
{
    PpDeviceData data;
    const auto* identity = sendGet(pp::SCU_GET_CABINET_PID_REQ, nextSequence(), data)
                               ? std::get_if<PpProductIdentity>(&data)
                               : nullptr;
    if (identity == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get cabinet Pid from SCU");
        if (pid != nullptr) *pid = {};
        return false;
    }
    if (pid != nullptr) {
        pid->productNumber = identity->productNumber;
        pid->revState = identity->revState;
        pid->productName = identity->productName;
        pid->productionDate = identity->productionDate;
        pid->serialNumber = identity->serialNumber;
    }
    return true;
}

bool HWU_SC::writeCabinetPid(const HwuProductRecord& pid)
{
    PpProductIdentity identity;
    putText(identity.productNumber, textOf(pid.productNumber).c_str());
    putText(identity.revState, textOf(pid.revState).c_str());
    putText(identity.productName, textOf(pid.productName).c_str());
    putText(identity.productionDate, textOf(pid.productionDate).c_str());
    putText(identity.serialNumber, textOf(pid.serialNumber).c_str());
    std::uint8_t cause = 0;
    const bool written = sendSet(pp::SCU_SET_CABINET_PID_REQ, nextSequence(), identity, &cause);
    const FuncId_t memory{func_type::kScu, 0};
    if (written) {
        SSC_TRACE(equipmentGroup(), kFlow, "Cabinet PID written to SCU");
        SSC_TRACE(equipmentGroup(), kFlow, "productNumber: %s", textOf(pid.productNumber).c_str());
        SSC_TRACE(equipmentGroup(), kFlow, "revState: %s", textOf(pid.revState).c_str());
        SSC_TRACE(equipmentGroup(), kFlow, "productName: %s", textOf(pid.productName).c_str());
        SSC_TRACE(equipmentGroup(), kFlow, "productionDate: %s", textOf(pid.productionDate).c_str());
        SSC_TRACE(equipmentGroup(), kFlow, "serialNumber: %s", textOf(pid.serialNumber).c_str());
        setLed(Led::kOperational, Led::kSteadyOn);
        if (m_pFaults->isFaultActive(fault_id::kHwuFaulty, memory)) m_pFaults->ceaseFault(fault_id::kHwuFaulty, memory);
    } else if (cause == kCabinetPidWriteRefused) {
        // The cabinet memory refused the data: the SCU is faulty for it.
        m_pFaults->raiseFault(fault_id::kHwuFaulty, memory);
    }
    const bool available = isAvailable();
    if (available != m_available) {
        m_available = available;
        publishStatus();
    }
    return written;
}
