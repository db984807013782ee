#include "hwu/HdlcAddressFacade.h"

#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "hwu/HdlcAddressBroker.h"

using namespace ssc_trace;

namespace {
constexpr std::size_t kMaxHubPositions = 2;
} // namespace

HdlcAddressFacade::HdlcAddressFacade(FaultsRegisterIf& faultsRegister) : m_pFaultsRegister(&faultsRegister)
{
    m_pFaultsRegister->addReporter(this);
}

HdlcAddressFacade::~HdlcAddressFacade() { m_pFaultsRegister->removeReporter(this); }

bool HdlcAddressFacade::getHdlcAddress(std::string_view hubPosition, std::uint32_t funcType, HdlcAddress* address)
{
    return Hdlc::getHdlcAddress(hubPosition, funcType, address);
}

bool HdlcAddressFacade::checkHubPositions(std::span<const std::string_view> hubPositions, const FuncId_t& funcId)
{
    if (hubPositions.empty() || hubPositions.size() > kMaxHubPositions) return false;
    // The equipment support function is placed where external nodes are.
    const std::uint32_t funcType =
        funcId.FuncType == func_type::kEquipSupFunc ? func_type::kExternalNode : funcId.FuncType;
    m_pFaultsRegister->ceaseFault(fault_id::kFaultyHubPosition, funcId);
    m_pFaultsRegister->ceaseFault(fault_id::kConflictingHubPosition, funcId);
    if (hubPositions.size() == 2) return checkTwo(hubPositions[0], hubPositions[1], funcType, funcId);
    if (Hdlc::getHdlcAddress(hubPositions[0], funcType, nullptr)) return true;
    reportFaulty(hubPositions[0], funcId);
    return false;
}

bool HdlcAddressFacade::checkTwo(std::string_view first, std::string_view second, std::uint32_t funcType,
                                 const FuncId_t& funcId)
{
    // A position not found counts as address 0.
    HdlcAddress firstAddress(0, 0);
    HdlcAddress secondAddress(0, 0);
    const bool firstFound = Hdlc::getHdlcAddress(first, funcType, &firstAddress);
    const bool secondFound = Hdlc::getHdlcAddress(second, funcType, &secondAddress);
    if (!firstFound && !secondFound) {
        reportFaulty(first, funcId);
        return false;
    }
    if (firstAddress.address != secondAddress.address) return true;
    SSC_TRACE(equipmentGroup(), kUnexpected, "Conflicting hub position: %.*s", static_cast<int>(first.size()),
              first.data());
    m_pFaultsRegister->raiseFault(fault_id::kConflictingHubPosition, funcId);
    // Both can still be reached on the one address: configuration goes on.
    return true;
}

void HdlcAddressFacade::reportFaulty(std::string_view hubPosition, const FuncId_t& funcId)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "Faulty hub position: %.*s", static_cast<int>(hubPosition.size()),
              hubPosition.data());
    m_pFaultsRegister->raiseFault(fault_id::kFaultyHubPosition, funcId);
}

void HdlcAddressFacade::raiseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (faultId.id != fault_id::kFaultyHubPosition && faultId.id != fault_id::kConflictingHubPosition) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(equipmentGroup(), kError, "raiseFault: m_pEventHandler is not set");
        return;
    }
    if (faultId.id == fault_id::kFaultyHubPosition)
        m_pEventHandler->raiseFaultyHubPosition(funcId);
    else
        m_pEventHandler->raiseConflictingHubPosition(funcId);
}

void HdlcAddressFacade::ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId)
{
    if (faultId.id != fault_id::kFaultyHubPosition && faultId.id != fault_id::kConflictingHubPosition) return;
    if (m_pEventHandler == nullptr) {
        SSC_TRACE(equipmentGroup(), kError, "ceaseFault: m_pEventHandler is not set");
        return;
    }
    if (faultId.id == fault_id::kFaultyHubPosition)
        m_pEventHandler->ceaseFaultyHubPosition(funcId);
    else
        m_pEventHandler->ceaseConflictingHubPosition(funcId);
}
