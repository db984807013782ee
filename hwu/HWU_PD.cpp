#include "hwu/HWU_PD.h"

#include "frame/FaultIds.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"

using namespace ssc_trace;

HWU_PD::HWU_PD(const HwuUnitArgs& args, EFuseCtrlIf* efuses)
    : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults),
      m_pEfuses(efuses)
{
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_PD created for %s-%d on port: %d", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
}

HWU_PD::~HWU_PD()
{
    m_pFaults->ceaseFaults(m_funcId);
    TimerService::stopAllTimers(this);
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_PD::Destructor(), PDU-%d.", m_funcId.FuncInst);
}

void HWU_PD::storeCapabilities(const PpDeviceData& data)
{
    const auto* capabilities = std::get_if<PpPduCapabilities>(&data);
    if (capabilities == nullptr) return;
    m_capabilities = *capabilities;
    if (m_capabilities.numberOfEfuses < 1 || m_capabilities.numberOfEfuses > kMaxEfuses) {
        SSC_TRACE(equipmentGroup(), kError,
                  "Invalid number of E-fuses received from PDU: %d, setting number of E-fuses to 0",
                  m_capabilities.numberOfEfuses);
        m_capabilities.numberOfEfuses = 0;
    }
}

void HWU_PD::capabilitiesDone()
{
    // After a restart the unit still knows what the core had opened.
    closeEfuses();
    for (std::uint32_t number = 1; number <= kMaxEfuses; ++number) reportEfuse(number, getEfuseIndicator(number));
    publishStatus();
}

void HWU_PD::parseStatus(const PpDeviceData& data)
{
    m_oldStatus = m_pduStatus;
    if (const auto* status = std::get_if<PpPduStatus>(&data)) m_pduStatus = *status;
}

bool HWU_PD::fetchMeasurements()
{
    if (flag(kFault)) return m_measuredOk = false;
    PpDeviceData data;
    const auto* measurements = sendGet(pp::PDU_GET_MEASUREMENTS_REQ, nextSequence(), data)
                                   ? std::get_if<PpPduMeasurements>(&data)
                                   : nullptr;
    if (measurements == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get Measurements from PDU%d", m_funcId.FuncInst);
        return m_measuredOk = false;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "PDU_GET_MEASUREMENTS from %s-%d", typeText(), m_funcId.FuncInst);
    m_systemVoltage = static_cast<float>(measurements->systemVoltage) / 100.0F;
    return m_measuredOk = true;
}

void HWU_PD::traceAndNotify(unsigned bit, const char* onText, const char* offText)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, flag(bit) ? onText : offText, m_funcId.FuncInst);
    notifySubscribers(kPduStatusChange);
}

void HWU_PD::handleStatus(bool)
{
    if (changed(kFault)) {
        setHwFault(flag(kFault));
        notifySubscribers(kPduStatusChange);
    }
    if (changed(kMainTemperatureHigh)) {
        const bool high = flag(kMainTemperatureHigh);
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  high ? "PDU-%d indicates main temperature too high" : "PDU-%d ceased main temperature too high",
                  m_funcId.FuncInst);
        if (high)
            m_pFaults->raiseFault(fault_id::kPduMainTemperatureHigh, m_funcId);
        else
            m_pFaults->ceaseFault(fault_id::kPduMainTemperatureHigh, m_funcId);
    }
    if (changed(kPriorityTemperatureHigh))
        traceAndNotify(kPriorityTemperatureHigh, "PDU Prio load temperature too high",
                       "PDU Prio load temperature back to normal");
    if (changed(kVoltageHigh))
        traceAndNotify(kVoltageHigh, "PDU-%d indicates main system voltage too high",
                       "PDU-%d ceased main system voltage too high");
    if (changed(kVoltageLow))
        traceAndNotify(kVoltageLow, "PDU-%d indicates main system voltage too low",
                       "PDU-%d ceased main system voltage too low");
    if (!m_capabilitiesRead) return;
    bool anyChanged = false;
    for (std::uint32_t index = 0; index < kMaxEfuses; ++index) {
        if (m_pduStatus.efuseOn[index] == m_oldStatus.efuseOn[index] &&
            m_pduStatus.efuseFault[index] == m_oldStatus.efuseFault[index])
            continue;
        reportEfuse(index + 1, getEfuseIndicator(index + 1));
        anyChanged = true;
    }
    if (anyChanged) publishStatus();
}

void HWU_PD::clearStatus()
{
    m_pduStatus = {};
    HWU_ImplBase::clearStatus();
}

void HWU_PD::unitFound()
{
    HWU_ImplBase::unitFound();
    notifySubscribers(kPduStatusChange);
}

void HWU_PD::unitMissing()
{
    HWU_ImplBase::unitMissing();
    for (std::uint32_t number = 1; number <= m_capabilities.numberOfEfuses; ++number)
        reportEfuse(number, Led::kNotAvailable);
    notifySubscribers(kPduStatusChange);
}

std::uint32_t HWU_PD::getEfuseIndicator(std::uint32_t number) const
{
    if (!m_capabilitiesRead) return Led::kNotAvailable;
    if (number < 1 || number > m_capabilities.numberOfEfuses) return Led::kNotApplicable;
    const std::size_t index = number - 1;
    // A tripped e-fuse blinks whatever it is asked to be.
    if (m_pduStatus.efuseFault[index] != 0) return Led::kSlowBlink;
    if (m_pduStatus.efuseOn[index] != 0) return Led::kSteadyOn;
    return Led::kOff;
}

std::uint32_t HWU_PD::getPowerDistrFaultIndicator()
{
    if (m_capabilities.numberOfEfuses == 0) return Led::kNotAvailable;
    for (std::uint16_t tripped : m_pduStatus.efuseFault)
        if (tripped != 0) return Led::kSlowBlink;
    return Led::kOff;
}

void HWU_PD::reportEfuse(std::uint32_t number, std::uint32_t state)
{
    if (m_pEfuses != nullptr) m_pEfuses->efuseStatusChanged(m_funcId, number, state);
}

bool HWU_PD::sendEfuses(const PpPduEfuses& request)
{
    return sendSet(pp::PDU_SET_EFUSES_REQ, 0, request);
}

bool HWU_PD::openEfuse()
{
    for (std::uint32_t number = kMaxEfuses; number >= 1; --number) {
        const std::size_t index = number - 1;
        if (m_capabilities.controllable[index] == 0 || m_pduStatus.efuseOn[index] == 0) continue;
        PpPduEfuses request{m_pduStatus.efuseOn, m_pduStatus.secondSet, m_pduStatus.thirdSet};
        request.efuseOn[index] = 0;
        if (!sendEfuses(request)) continue;
        m_pduStatus.efuseOn[index] = 0;
        reportEfuse(number, getEfuseIndicator(number));
        return true;
    }
    return false;
}

void HWU_PD::closeEfuses()
{
    PpPduEfuses request{m_pduStatus.efuseOn, m_pduStatus.secondSet, m_pduStatus.thirdSet};
    bool any = false;
    for (std::size_t index = 0; index < kMaxEfuses; ++index) {
        if (m_capabilities.controllable[index] == 0 || m_pduStatus.efuseOn[index] != 0 ||
            m_pduStatus.efuseOpenedByRequest[index] == 0)
            continue;
        request.efuseOn[index] = 1;
        any = true;
    }
    if (!any) return;
    SSC_TRACE(equipmentGroup(), kUnexpected, "Closing previously opened E-Fuses.");
    sendEfuses(request);
}

bool HWU_PD::setLimits(std::int16_t overvoltageRaise, std::int16_t overvoltageCease, std::int16_t undervoltageRaise,
                       std::int16_t undervoltageCease)
{
    return sendSet(pp::PDU_SET_LIMITS_REQ, 0,
                   PpPduLimits{overvoltageRaise, overvoltageCease, undervoltageRaise, undervoltageCease});
}
