#include "cabinet/Cabinet.h"

#include "cabinet/CabinetController.h"
#include "frame/FaultIds.h"
#include "frame/SscTrace.h"

using namespace ssc_trace;

namespace {

void tracePid(const ProductData& pid)
{
    SSC_TRACE(equipmentGroup(), kFlow, "CabinetPid: [%s] [%s] [%s] [%s] [%s]", pid.productNumber.c_str(),
              pid.revState.c_str(), pid.productName.c_str(), pid.productionDate.c_str(), pid.serialNumber.c_str());
    SSC_TRACE(equipmentGroup(), kFlow, "CabinetPid: is %s", pid.isValid() ? "valid" : "invalid");
}

} // namespace

Cabinet::Cabinet(CabinetController& controller, FaultsRegisterIf& faults, HwuBrokerIf* broker,
                 CabinetEventIf* eventHandler, std::uint32_t funcInst)
    : m_pController(&controller),
      m_pFaults(&faults),
      m_pBroker(broker),
      m_pEventHandler(eventHandler),
      m_funcInst(funcInst)
{
}

void Cabinet::setPid(const ProductData& pid)
{
    // An invalid identity from configuration never replaces one we have.
    if (pid.isValid()) m_pid = pid;
    m_pidVerified = false;
    checkPid();
    pidUpdated();
}

void Cabinet::updatePid(const ProductData& pid)
{
    if (!pid.isValid()) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Invalid cabinet Pid in UPDATE_PRODUCT_DATA_REQ");
        m_pidVerified = false;
        checkPid();
        return;
    }
    m_pid = pid;
    m_pidVerified = true;
    writeScuPid();
    // The operator has settled it, whether or not the SCU took the write.
    ceaseMismatch();
    pidUpdated();
}

void Cabinet::checkPid()
{
    tracePid(m_pid);
    ProductData scuPid;
    if (readScuPid(scuPid)) {
        tracePid(scuPid);
        reconcile(scuPid);
    } else {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Could not read cabinet Pid from SCU, skipping check.");
    }
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(equipmentGroup(), kError, "m_pEventHandler is not set");
        return;
    }
    m_pEventHandler->productDataUpdated(m_pid, m_funcInst);
}

ScuIf* Cabinet::getPrimaryScu() const { return m_pBroker != nullptr ? m_pBroker->getPrimaryScu(m_funcInst) : nullptr; }

bool Cabinet::readScuPid(ProductData& scuPid)
{
    ScuIf* scu = getPrimaryScu();
    if (scu == nullptr) {
        SSC_TRACE(equipmentGroup(), kDetail, "No primary Scu found yet, unable to get cabinet Pid.");
        return false;
    }
    HwuProductRecord record;
    if (!scu->readCabinetPid(&record)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to read cabinet Pid from Scu.");
        return false;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "Cabinet Pid read from Scu.");
    scuPid = ProductData::fromRecord(record);
    return true;
}

void Cabinet::reconcile(const ProductData& scuPid)
{
    const bool scuValid = scuPid.isValid();
    const bool ownValid = m_pid.isValid();
    // Asked only where it decides, as it leaves its own trace.
    const bool contradicted = scuValid && !ownValid && m_pController->isContradictedByProductNameME(scuPid);
    const bool differ = scuPid != m_pid;
    if (scuValid && !ownValid && !contradicted) {
        takeScuPid(scuPid);
    } else if ((!scuValid && ownValid) || (differ && m_pidVerified)) {
        overwriteScuPid();
    } else if ((!scuValid && !ownValid) || contradicted || differ) {
        raiseMismatch();
    } else {
        SSC_TRACE(equipmentGroup(), kFlow, "Pid match, no action.");
        m_pidVerified = true;
    }
}

// The cabinet is new to the configuration: its SCU knows what it is.
void Cabinet::takeScuPid(const ProductData& scuPid)
{
    SSC_TRACE(equipmentGroup(), kInfo, "New Tbn installed. Setting Pid from SCU.");
    m_pid = scuPid;
    ceaseMismatch();
    pidUpdated();
    m_pidVerified = true;
}

// The SCU is new to the cabinet: the configuration knows what the cabinet is.
void Cabinet::overwriteScuPid()
{
    SSC_TRACE(equipmentGroup(), kInfo, "New Scu installed. Setting Pid from MP.");
    writeScuPid();
    ceaseMismatch();
    m_pidVerified = true;
}

void Cabinet::raiseMismatch()
{
    SSC_TRACE(equipmentGroup(), kInfo, "Pid mismatch (or both invalid). Raising alarm.");
    // Held back, so that an SCU or operator settling it at once leaves no alarm.
    m_pFaults->raiseFault(fault_id::kCabinetPidMismatch, subject(), kMismatchDelayMs);
    m_pidVerified = false;
}

void Cabinet::ceaseMismatch() { m_pFaults->ceaseFault(fault_id::kCabinetPidMismatch, subject()); }

void Cabinet::writeScuPid()
{
    ScuIf* scu = getPrimaryScu();
    if (scu == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "No matching Scu found, unable to write cabinet Pid.");
        return;
    }
    if (scu->writeCabinetPid(m_pid.toRecord()))
        SSC_TRACE(equipmentGroup(), kFlow, "The cabinet Pid is now up-to-date");
    else
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unable to update the cabinet Pid");
}

void Cabinet::pidUpdated()
{
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(equipmentGroup(), kError, "m_pEventHandler is not set");
        return;
    }
    m_pEventHandler->cabinetPidUpdated(m_pid);
}
