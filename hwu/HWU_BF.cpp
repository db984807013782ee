#include "hwu/HWU_BF.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"

#include <cstdlib>

using namespace ssc_trace;

HWU_BF::HWU_BF(const HwuUnitArgs& args, PowerCtrlManagerIf* power)
    : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults),
      m_pPower(power)
{
    SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_BF created for %s-%d, port %d", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
}

HWU_BF::~HWU_BF()
{
    m_pFaults->ceaseFaults(m_funcId);
    TimerService::stopAllTimers(this);
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_BF::Destructor(), BFU-%d.", m_funcId.FuncInst);
}

pp::MessageNo HWU_BF::getStatusMsg() const
{
    return hasAddCapability(kExtendedStatus) ? pp::BFU_GET_EXT_STATUS_REQ : pp::BFU_GET_STATUS_REQ;
}

float HWU_BF::getCurrentLimit() const
{
    return hasAddCapability(kCurrentLimit) ? m_addCapabilities.batteryCurrentLimit / 10.0F : kDefaultCurrentLimit;
}

std::int16_t HWU_BF::getVoltageLimit() const
{
    return hasAddCapability(kVoltageLimit) ? m_addCapabilities.batteryVoltageLimit : 0;
}

// The id words hold id n in bit n - 1, as every flag set of the bus does.
bool HWU_BF::hasExtendedControl(std::uint8_t id) const
{
    return hasAddCapability(kExtendedIds) && id >= 1 && id <= 16 &&
           ((m_addCapabilities.extendedControlIds >> (id - 1)) & 1U) != 0;
}

void HWU_BF::storeCapabilities(const PpDeviceData& data)
{
    if (const auto* capabilities = std::get_if<PpBfuCapabilities>(&data)) m_capabilities = *capabilities;
    PpDeviceData answer;
    const auto* add = sendGet(pp::BFU_GET_ADD_CAPABILITIES_REQ, nextSequence(), answer)
                          ? std::get_if<PpBfuAddCapabilities>(&answer)
                          : nullptr;
    if (add == nullptr) {
        m_addCapabilitiesRead = false;
        m_addCapabilities = {};
        SSC_TRACE(equipmentGroup(), kFlow, "BFU-%d hasn't added capabilities", m_funcId.FuncInst);
        return;
    }
    m_addCapabilitiesRead = true;
    m_addCapabilities = *add;
    SSC_TRACE(equipmentGroup(), kFlow, "BFU-%d has added capabilities", m_funcId.FuncInst);
}

void HWU_BF::parseStatus(const PpDeviceData& data)
{
    m_oldStatus = m_bfuStatus;
    if (const auto* status = std::get_if<PpBfuStatus>(&data))
        m_bfuStatus = status->flags;
    else if (const auto* extended = std::get_if<PpBfuExtStatus>(&data))
        m_bfuStatus = extended->flags;
}

bool HWU_BF::fetchMeasurements()
{
    if (flag(kFault)) {
        m_measuredOk = false;
        return false;
    }
    PpDeviceData data;
    const auto* values = sendGet(pp::BFU_GET_MEASUREMENTS_REQ, nextSequence(), data)
                             ? std::get_if<PpBfuMeasurements>(&data)
                             : nullptr;
    if (values == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get Measurements from BFU2");
        m_measuredOk = false;
        return false;
    }
    // The same figures again are no news to the power control.
    const bool same = values->systemVoltage == m_systemVoltageRaw && values->batteryVoltage == m_batteryVoltageRaw &&
                      values->batteryCurrent == m_batteryCurrentRaw &&
                      values->batteryTemperature == m_batteryTemperature;
    if (m_measuredOk && same) return false;
    m_systemVoltageRaw = values->systemVoltage;
    m_batteryVoltageRaw = values->batteryVoltage;
    m_batteryCurrentRaw = values->batteryCurrent;
    m_batteryTemperature = values->batteryTemperature;
    m_measuredOk = true;
    return true;
}

void HWU_BF::traceAndNotify(unsigned bit, const char* onText, const char* offText)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "%s", flag(bit) ? onText : offText);
    notifySubscribers(kBfuStatusChange);
}

void HWU_BF::raiseOrCease(unsigned bit, std::int32_t faultId, const char* raiseText, const char* ceaseText)
{
    const bool raise = flag(bit);
    SSC_TRACE(equipmentGroup(), kUnexpected, "%s", raise ? raiseText : ceaseText);
    if (raise)
        m_pFaults->raiseFault(faultId, m_funcId);
    else
        m_pFaults->ceaseFault(faultId, m_funcId);
}

void HWU_BF::handleStatus(bool measured)
{
    if (changed(kFault)) {
        setHwFault(flag(kFault));
        notifySubscribers(kBfuStatusChange);
    }
    if (changed(kMainLoadDisconnected))
        traceAndNotify(kMainLoadDisconnected, "BFU2 indicates Main Load disconnected",
                       "BFU2 indicates Main Load connected");
    if (changed(kPriorityLoadDisconnected))
        traceAndNotify(kPriorityLoadDisconnected, "BFU2 indicates Priority Load disconnected",
                       "BFU2 indicates Priority Load connected");
    if (changed(kBatteryOverTemperature))
        traceAndNotify(kBatteryOverTemperature, "BFU2 indicates Battery overtemp", "BFU2 ceased Battery overtemp");
    if (changed(kBatteryTempSensorFault))
        traceAndNotify(kBatteryTempSensorFault, "BFU2 indicates Battery tempsensor fault",
                       "BFU2 ceased Battery tempsensor fault");
    if (changed(kBatteryNotPresent)) traceAndNotify(kBatteryNotPresent, "Battery is not present.", "Battery is present.");
    if (changed(kCircuitBreakerFault))
        raiseOrCease(kCircuitBreakerFault, fault_id::kBfuCircuitBreaker, "BFU2 indicates Circuit Breaker fault",
                     "BFU2 ceased Circuit Breaker fault");
    if (changed(kBatteryConnected)) notifySubscribers(kBfuStatusChange);
    if (changed(kSlowCharging)) notifySubscribers(kBfuStatusChange);
    if (changed(kTemperatureFault))
        raiseOrCease(kTemperatureFault, fault_id::kBfuTemperature, "BFU2 indicates Temperature fault",
                     "BFU2 ceased Temperature fault");
    updateBatteryFaultLed();
    if (measured && m_pPower != nullptr) m_pPower->statusChanged();
}

std::uint32_t HWU_BF::wantedBatteryFaultLed() const
{
    if (!isAvailable()) return Led::kNotAvailable;
    if (!flag(kBatteryNotPresent) && hasAddCapability(kVoltageLimit) &&
        std::abs(m_batteryVoltageRaw) < std::abs(m_addCapabilities.batteryVoltageLimit))
        return Led::kSteadyOn;
    if (flag(kBatteryOverTemperature) || flag(kBatteryNotPresent) || flag(kCircuitBreakerFault))
        return Led::kSlowBlink;
    if (flag(kFlag12) && !flag(kTemperatureFault)) return Led::kOff;
    return Led::kSlowBlink;
}

void HWU_BF::updateBatteryFaultLed()
{
    if (!hasExtendedControl(kBatteryFaultLedControl)) {
        m_batteryFaultLed.setLedState(Led::kNotApplicable);
        return;
    }
    const std::uint32_t wanted = wantedBatteryFaultLed();
    if (wanted == m_batteryFaultLed.getLedState()) return;
    if (wanted != Led::kNotAvailable) {
        std::uint8_t code = 0;
        if (!Led::wireCode(wanted, code)) {
            SSC_TRACE(equipmentGroup(), kUnexpected, "Tried to update battery fault led with wrong state: %d", wanted);
            return;
        }
        PpBfuExtendedControl control;
        control.count = 1;
        control.items[0].id = kBatteryFaultLedControl;
        control.items[0].data[0] = code;
        sendSet(pp::BFU_EXTENDED_CONTROL_REQ, nextSequence(), control);
    }
    m_batteryFaultLed.setLedState(wanted);
    publishStatus();
}

bool HWU_BF::setControl(bool main, bool priority)
{
    if (hasAddCapability(kLoadControl)) {
        PpBfuExtendedControl control;
        control.count = 1;
        control.items[0].id = 1;
        control.items[0].data[0] = main ? 1 : 0;
        control.items[0].data[1] = priority ? 1 : 0;
        return sendSet(pp::BFU_EXTENDED_CONTROL_REQ, nextSequence(), control);
    }
    return sendSet(pp::BFU_SET_CONTROL_REQ, 0, PpBfuControl{static_cast<std::uint8_t>(main ? 1 : 0)});
}

bool HWU_BF::setConfig(std::int16_t mainLoadUv, std::int16_t prioLoadUv, std::int16_t uvCease,
                       std::int8_t disconnectTemp, std::int8_t ceaseTemp)
{
    return sendSet(pp::BFU_SET_CONFIG_REQ, 0, PpBfuConfig{mainLoadUv, prioLoadUv, uvCease, disconnectTemp, ceaseTemp});
}

void HWU_BF::unitFound()
{
    HWU_ImplBase::unitFound();
    notifySubscribers(kBfuStatusChange);
}

void HWU_BF::unitMissing()
{
    HWU_ImplBase::unitMissing();
    notifySubscribers(kBfuStatusChange);
}

void HWU_BF::clearStatus()
{
    m_bfuStatus = 0;
    HWU_ImplBase::clearStatus();
}
