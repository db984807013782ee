#include "hwu/HWU_CL.h"

#include "climate/FanGroupBits.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/PpCommunicationService.h"

#include <array>

using namespace ssc_trace;

namespace {
// The CLU's fan groups are those of cabinet 0.
constexpr std::uint32_t kCabinet = 0;
constexpr std::array<const char*, 9> kCapabilityNames{
    "internalFan",
    "externalFan",
    "heater",
    "compressor",
    "supplyAirTemperatureSensor",
    "returnAirTemperatureSensor",
    "condenserAirTemperatureSensor",
    "ambientAirTemperatureSensor",
    "doorSensor"};
} // namespace

HWU_CL::HWU_CL(const HwuUnitArgs& args, ClimateCtrlIf* climate)
    : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults),
      m_pClimate(climate)
{
    SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_CL created for %s-%d", typeText(), m_funcId.FuncInst);
}

HWU_CL::~HWU_CL()
{
    m_pFaults->ceaseFaults(m_funcId);
    if (m_pClimate != nullptr) m_pClimate->cluPresent(false);
    TimerService::stopAllTimers(this);
    SSC_TRACE(equipmentGroup(), kFlow, "HWU_CL::Destructor(), CLU-%d.", m_funcId.FuncInst);
}

void HWU_CL::parseStatus(const PpDeviceData& data)
{
    m_oldStatus = m_cluStatus;
    if (const auto* status = std::get_if<PpCluStatus>(&data)) m_cluStatus = status->flags;
}

void HWU_CL::storeCapabilities(const PpDeviceData& data)
{
    if (const auto* capabilities = std::get_if<PpCluCapabilities>(&data)) m_capabilities = capabilities->flags;
    SSC_TRACE(equipmentGroup(), kFlow, "Capabilities on %s-%d read:", typeText(), m_funcId.FuncInst);
    for (unsigned bit = 0; bit < kCapabilityNames.size(); ++bit)
        SSC_TRACE(equipmentGroup(), kFlow, "%s = %s", kCapabilityNames[bit],
                  flag(m_capabilities, bit) ? "supported" : "NOT supported");
    if (m_pClimate == nullptr) return;
    m_pClimate->cluPresent(true);
    reportFanGroups(Led::kOff, Led::kOff);
}

bool HWU_CL::fetchMeasurements()
{
    if (flag(m_cluStatus, kFault)) return m_measuredOk = false;
    m_measuredOk = true;
    PpDeviceData data;
    const auto* values = sendGet(pp::CLU_GET_MEASUREMENTS_REQ, nextSequence(), data)
                             ? std::get_if<PpCluMeasurements>(&data)
                             : nullptr;
    if (values == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get Measurements from CLU-%d", m_funcId.FuncInst);
        return m_measuredOk = false;
    }
    // Read for the trace only: the CLU regulates itself.
    SSC_TRACE(equipmentGroup(), kFlow, "Measurements from %s-%d read:", typeText(), m_funcId.FuncInst);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluSupplyTemp = %d", values->cluSupplyTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluReturnTemp = %d", values->cluReturnTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluCondenserTemp = %d", values->cluCondenserTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluAmbientTemp = %d", values->cluAmbientTemp);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluIntFanSpeed = %d", values->cluIntFanSpeed);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluExtFanSpeed = %d", values->cluExtFanSpeed);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluActiveCoolerSpeed = %d", values->cluActiveCoolerSpeed);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluCompressorCurrent = %d", values->cluCompressorCurrent);
    SSC_TRACE(equipmentGroup(), kFlow, "cluGetMeasurements.cluHeaterCurrent = %d", values->cluHeaterCurrent);
    return true;
}

void HWU_CL::handleStatus(bool)
{
    const bool fault = flag(m_cluStatus, kFault);
    if (isChanged(fault, flag(m_oldStatus, kFault))) setHwFault(fault);
    const bool group2 = flag(m_cluStatus, kFanAlarmGroup2);
    const bool group4 = flag(m_cluStatus, kFanAlarmGroup4);
    if (group2 == flag(m_oldStatus, kFanAlarmGroup2) && group4 == flag(m_oldStatus, kFanAlarmGroup4)) return;
    if (m_pClimate == nullptr) return;
    const std::uint8_t failures = fan_group::toClimateByte({false, group2, false, group4});
    m_pClimate->fanGroupsFailure(kCabinet, failures, false, func_type::kClu);
    if (!isAvailable()) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "CLU is not operational, setting LEDs to NOT AVAILABLE");
        reportFanGroups(Led::kNotAvailable, Led::kNotAvailable);
        return;
    }
    reportFanGroups(group2 ? Led::kSteadyOn : Led::kOff, group4 ? Led::kSteadyOn : Led::kOff);
}

void HWU_CL::reportFanGroups(std::uint32_t group2State, std::uint32_t group4State)
{
    m_pClimate->fanGroupState(kCabinet, 2, group2State, func_type::kClu);
    m_pClimate->fanGroupState(kCabinet, 4, group4State, func_type::kClu);
}

void HWU_CL::unitMissing()
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "CLU disconnected. Ceasing alarms on fan group 2,4");
    clearStatus();
    if (m_pClimate != nullptr) m_pClimate->fanGroupsFailure(kCabinet, 0, false, func_type::kClu);
    HWU_ImplBase::unitMissing();
    if (m_pClimate != nullptr) reportFanGroups(Led::kNotAvailable, Led::kNotAvailable);
}

void HWU_CL::clearStatus()
{
    m_cluStatus = 0;
    HWU_ImplBase::clearStatus();
}

bool HWU_CL::setFanSpeed(std::uint8_t speed)
{
    // A forward on port 1: the CLU does not answer it.
    const bool sent = PpCommunicationService::sendFwd(pp::CLU_SET_FAN_SPEED_FWD, m_hdlcAddress.address, speed, 1);
    SSC_TRACE(equipmentGroup(), kFlow, sent ? "Sent fan speed %d to CLU" : "Failed to send fan speed %d to CLU",
              speed);
    return sent;
}
