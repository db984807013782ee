#include "hwu/HWU_SA.h"

#include "frame/SscTrace.h"
#include "frame/TimerService.h"

using namespace ssc_trace;

HWU_SA::HWU_SA(const HwuUnitArgs& args, AlarmCtrlIf* alarms)
    : HWU_ImplBase(args.funcId, args.hubPosition, args.hdlcAddress, args.broker, args.listener, args.faults),
      m_pAlarms(alarms)
{
    m_measuredOk = true;
    SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_SA created for %s-%d, port: %d", typeText(), m_funcId.FuncInst,
              m_hdlcAddress.port);
}

HWU_SA::~HWU_SA()
{
    m_pFaults->ceaseFaults(m_funcId);
    if (m_pAlarms != nullptr) m_pAlarms->removeUnit(m_funcId);
    TimerService::stopAllTimers(this);
    SSC_TRACE(equipmentGroup(), kFlow, "INFO - HWU_SA::Destructor(), SAU-%d.", m_funcId.FuncInst);
}

void HWU_SA::unitMissing()
{
    HWU_ImplBase::unitMissing();
    if (m_pAlarms != nullptr) m_pAlarms->removeUnit(m_funcId);
}

void HWU_SA::parseStatus(const PpDeviceData& data)
{
    m_oldStatus = m_sauStatus;
    if (const auto* status = std::get_if<PpSauStatus>(&data)) m_sauStatus = *status;
}

void HWU_SA::storeCapabilities(const PpDeviceData& data)
{
    const auto* capabilities = std::get_if<PpSauCapabilities>(&data);
    if (capabilities == nullptr) return;
    m_availableInPortsA = capabilities->availableInPortsA;
    m_availableInPortsB = capabilities->availableInPortsB;
    m_availableOutPorts = capabilities->availableOutPorts;
    SSC_TRACE(equipmentGroup(), kFlow, "SAU_AVAILABLE_IN_PORTS_A: 0x%04X", m_availableInPortsA);
    SSC_TRACE(equipmentGroup(), kFlow, "SAU_AVAILABLE_IN_PORTS_B: 0x%04X", m_availableInPortsB);
    SSC_TRACE(equipmentGroup(), kFlow, "SAU_AVAILABLE_OUT_PORTS: 0x%02X", m_availableOutPorts);
    if (m_pAlarms != nullptr) m_pAlarms->setAvailablePorts(m_funcId, m_availableInPortsA, m_availableInPortsB);
}

void HWU_SA::clearCapabilities()
{
    m_availableInPortsA = 0;
    m_availableInPortsB = 0;
    m_availableOutPorts = 0;
}

void HWU_SA::handleStatus(bool)
{
    const bool fault = flag(m_sauStatus.flags, kFaultFlag);
    if (isChanged(fault, flag(m_oldStatus.flags, kFaultFlag))) setHwFault(fault);
    if (m_pAlarms != nullptr) m_pAlarms->updatePorts(m_funcId, m_sauStatus.alarmPortsA, m_sauStatus.alarmPortsB);
}

void HWU_SA::clearStatus()
{
    m_sauStatus = {};
    HWU_ImplBase::clearStatus();
}
