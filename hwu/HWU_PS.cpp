#include "hwu/HWU_PS.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"

#include <algorithm>
#include <array>
#include <cstdlib>

using namespace ssc_trace;

HWU_PS::HWU_PS(const HwuUnitArgs& args, ClimateCtrlIf* climate)
    : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults),
      m_pClimate(climate)
{
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_PS created for %s-%d port: %d", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
}

HWU_PS::~HWU_PS()
{
    m_pFaults->ceaseFaults(m_funcId);
    if (m_pClimate != nullptr) m_pClimate->removeTempSensor(m_sensorId);
    TimerService::stopAllTimers(this);
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_PS::Destructor(), PSU-%d.", m_funcId.FuncInst);
}

void HWU_PS::unitFound()
{
    HWU_ImplBase::unitFound();
    if (!m_capabilitiesRead) return;
    m_setPoint = m_capabilities.setPoint * 10;
    m_coolingGain = m_capabilities.coolingGain;
    m_timeConstant = m_capabilities.timeConstant;
    if (m_capabilities.hotSpot && m_capabilities.tempSens) {
        if (m_pClimate != nullptr)
            m_pClimate->addTempSensor(m_funcId.FuncType, m_setPoint, m_coolingGain, m_timeConstant, &m_sensorId);
    } else {
        SSC_TRACE(equipmentGroup(), kFlow, "PS CAP - tempSens: %d, hotSpot: %d", m_capabilities.tempSens,
                  m_capabilities.hotSpot);
    }
}

void HWU_PS::firstPollMissed()
{
    // Back only with the next unitFound.
    if (m_pClimate != nullptr) m_pClimate->removeTempSensor(m_sensorId);
}

bool HWU_PS::isInputVoltageOk() const
{
    return !flag(m_psuStatus, kInputVoltageLow) && !flag(m_psuStatus, kInputVoltageHigh) &&
           m_okPolls > kSettlingPolls;
}

void HWU_PS::parseStatus(const PpDeviceData& data)
{
    m_oldStatus = m_psuStatus;
    if (const auto* status = std::get_if<PpPsuStatus>(&data)) m_psuStatus = status->flags;
}

bool HWU_PS::fetchMeasurements()
{
    if (flag(m_psuStatus, kFault)) return m_measuredOk = false;
    PpDeviceData data;
    const auto* measurements = sendGet(pp::PSU_GET_MEASUREMENTS_REQ, nextSequence(), data)
                                   ? std::get_if<PpPsuMeasurements>(&data)
                                   : nullptr;
    if (measurements == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get Measurements from PSU%d", m_funcId.FuncInst);
        return m_measuredOk = false;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "PSU_GET_MEASUREMENTS from %s-%d", typeText(), m_funcId.FuncInst);
    m_outputVoltage = static_cast<float>(measurements->outputVoltage) / 100.0F;
    m_outputCurrent = static_cast<float>(measurements->outputCurrent) / 10.0F;
    m_load = static_cast<float>(measurements->load);
    m_temperature = static_cast<float>(measurements->temperature);
    if (m_pClimate != nullptr) m_pClimate->updateTemperature(m_sensorId, measurements->temperature);
    return m_measuredOk = true;
}

void HWU_PS::storeCapabilities(const PpDeviceData& data)
{
    if (const auto* capabilities = std::get_if<PpPsuCapabilities>(&data)) m_capabilities = *capabilities;
}

void HWU_PS::readAdditionalCapabilities(std::uint8_t sequence)
{
    m_addCapabilitiesRead = false;
    if (!m_capabilities.additionalCapabilities) {
        SSC_TRACE(equipmentGroup(), kFlow, "Additional capabilities not supported by this PSU");
        return;
    }
    PpDeviceData data;
    const auto* add = sendGet(pp::PSU_GET_ADD_CAPABILITIES_REQ, sequence, data)
                          ? std::get_if<PpPsuAddCapabilities>(&data)
                          : nullptr;
    if (add == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get additional capabilities from the PSU");
        return;
    }
    m_addCapabilities = *add;
    m_addCapabilitiesRead = true;
    SSC_TRACE(equipmentGroup(), kFlow, "Additional capabilities on %s-%d port %d read", typeText(),
              m_funcId.FuncInst, m_hdlcAddress.port);
    // A unit without the LED shows "not applicable" for good.
    if (add->operationalLedNotAvailable) {
        m_operationalLedAvailable = false;
        setLed(Led::kOperational, Led::kNotApplicable);
    }
    if (add->faultLedNotAvailable) {
        m_faultLedAvailable = false;
        setLed(Led::kFault, Led::kNotApplicable);
    }
}

void HWU_PS::raiseOrCease(bool raise, std::int32_t faultId, const char* raiseText, const char* ceaseText)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, raise ? raiseText : ceaseText, m_funcId.FuncInst);
    if (raise)
        m_pFaults->raiseFault(faultId, m_funcId);
    else
        m_pFaults->ceaseFault(faultId, m_funcId);
}

void HWU_PS::handleStatus(bool)
{
    if (changed(kFault)) setHwFault(flag(m_psuStatus, kFault));
    const bool sensorFault = flag(m_psuStatus, kTempSensorFault);
    if (changed(kTempSensorFault)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "PSU on hub position [%s] %s Tempsensor fault",
                  m_hubPosition.c_str(), sensorFault ? "raised" : "ceased");
        if (m_pClimate != nullptr) {
            if (sensorFault)
                m_pClimate->setSensorFault(m_sensorId);
            else
                m_pClimate->clearSensorFault(m_sensorId);
        }
    }
    if (changed(kInputVoltageHigh))
        raiseOrCease(flag(m_psuStatus, kInputVoltageHigh), fault_id::kPsuInputVoltageHigh,
                     "PSU-%d indicates Input voltage high", "PSU-%d ceased Input voltage high");
    if (changed(kInputVoltageLow))
        raiseOrCease(flag(m_psuStatus, kInputVoltageLow), fault_id::kPsuInputVoltageLow,
                     "PSU-%d Input voltage low raised", "PSU-%d Input voltage low ceased");
    handleTemperatureFaults();
}

void HWU_PS::handleTemperatureFaults()
{
    struct TemperatureFault {
        unsigned flag;
        std::int32_t faultId;
        const char* raiseText;
        const char* ceaseText;
    };
    static constexpr std::array<TemperatureFault, 4> kTemperatureFaults{{
        {kHighTempClass1, fault_id::kPsuHighTemperatureClass1, "PSU-%d indicates High temp class 1",
         "PSU-%d ceased High temp"},
        {kHighTempClass2, fault_id::kPsuHighTemperatureClass2, "PSU-%d indicates High temp class 2",
         "PSU-%d ceased High temp"},
        {kLowTempClass1, fault_id::kPsuLowTemperatureClass1, "PSU-%d indicates Low temp class 1",
         "PSU-%d ceased Low temp"},
        {kLowTempClass2, fault_id::kPsuLowTemperatureClass2, "PSU-%d indicates Low temp class 2",
         "PSU-%d ceased Low temp"},
    }};
    // A faulty sensor makes every temperature flag meaningless.
    const bool sensorFault = flag(m_psuStatus, kTempSensorFault);
    const bool sensorChanged = changed(kTempSensorFault);
    for (const TemperatureFault& fault : kTemperatureFaults) {
        if (!changed(fault.flag) && !sensorChanged) continue;
        raiseOrCease(flag(m_psuStatus, fault.flag) && !sensorFault, fault.faultId, fault.raiseText, fault.ceaseText);
    }
}

void HWU_PS::clearStatus()
{
    m_psuStatus = 0;
    HWU_ImplBase::clearStatus();
}

bool HWU_PS::setOutputVoltage(float volts)
{
    // Hundredths of a volt in an i16; a value from outside that does not
    // fit is held at the end of the range before the limits apply.
    float scaled = volts * 100.0F;
    if (scaled != scaled) scaled = 0.0F;
    auto wanted = static_cast<std::int16_t>(std::clamp(scaled, -32768.0F, 32767.0F));
    const std::int16_t first = m_capabilities.controlVoltageLimit1;
    const std::int16_t second = m_capabilities.controlVoltageLimit2;
    // The limits are compared by magnitude: the system voltage is negative.
    const bool firstIsMin = std::abs(first) < std::abs(second);
    const std::int16_t minimum = firstIsMin ? first : second;
    const std::int16_t maximum = firstIsMin ? second : first;
    if (std::abs(wanted) < std::abs(minimum)) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "Requested output voltage '%d' is limited to min control voltage '%d' for '%s-%d'", wanted,
                  minimum, typeText(), m_funcId.FuncInst);
        wanted = minimum;
    } else if (std::abs(wanted) > std::abs(maximum)) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "Requested output voltage '%d' is limited to max control voltage '%d' for '%s-%d'", wanted,
                  maximum, typeText(), m_funcId.FuncInst);
        wanted = maximum;
    }
    if (!m_capabilities.outputVoltageControl) return true;
    if (!sendSet(pp::PSU_SET_OUTPUT_VOLTAGE_REQ, nextSequence(), PpPsuOutputVoltage{wanted})) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to set output voltage for %s-%d", typeText(),
                  m_funcId.FuncInst);
        return false;
    }
    return true;
}
