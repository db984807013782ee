#include "cabinet/CabinetController.h"

#include "frame/EC_LinkedListIterator.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"

#include <algorithm>
#include <limits>
#include <string_view>

using namespace ssc_trace;

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The decimal number that starts at the first digit of `text`; 0 without a
// digit. A run of digits too long for the trace saturates instead of
// overflowing.
std::int32_t numberPart(std::string_view text)
{
    constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (auto at = std::find_if(text.begin(), text.end(), isDigit); at != text.end() && isDigit(*at); ++at)
        value = std::min(value * 10 + (*at - '0'), kMax);
    return static_cast<std::int32_t>(value);
}

} // namespace

CabinetController::CabinetController(FaultsRegisterIf& faults, HwuBrokerIf* broker)
    : m_pFaults(&faults), m_pBroker(broker)
{
    if (m_pBroker == nullptr) {
        SSC_TRACE(equipmentGroup(), kError, "CabinetController: no unit broker, SCUs will not be checked");
        return;
    }
    m_pBroker->subscribeHWU(this);
}

CabinetController::~CabinetController()
{
    if (m_pBroker != nullptr) m_pBroker->unSubscribeHWU(this);
}

void CabinetController::setEventHandler(CabinetEventIf* handler)
{
    m_pEventHandler = handler;
    EC_LinkedListIterator<std::unique_ptr<Cabinet>> it(m_cabinets);
    while (std::unique_ptr<Cabinet>* cabinet = it.next()) (*cabinet)->setEventHandler(handler);
}

bool CabinetController::isContradictedByProductNameME(const ProductData& scuPid) const
{
    if (m_productNameME.empty()) {
        SSC_TRACE(equipmentGroup(), kFlow, "isContradictedByProductNameME: productNameME is empty. No contradiction.");
        return false;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "isContradictedByProductNameME: comparing %s with %s",
              scuPid.productName.c_str(), m_productNameME.c_str());
    const std::int32_t scuNumber = numberPart(scuPid.productName);
    const std::int32_t meNumber = numberPart(m_productNameME);
    SSC_TRACE(equipmentGroup(), kFlow, "isContradictedByProductNameME: number parts %d, %d", scuNumber, meNumber);
    return scuNumber != meNumber;
}

Cabinet* CabinetController::findCabinet(std::uint32_t funcInst)
{
    std::unique_ptr<Cabinet>* found = m_cabinets.find(
        [funcInst](const std::unique_ptr<Cabinet>& cabinet) { return cabinet->getFuncInst() == funcInst; });
    return found != nullptr ? found->get() : nullptr;
}

Cabinet& CabinetController::findOrAddCabinet(std::uint32_t funcInst)
{
    if (Cabinet* cabinet = findCabinet(funcInst)) return *cabinet;
    m_cabinets.addLast(std::make_unique<Cabinet>(*this, *m_pFaults, m_pBroker, m_pEventHandler, funcInst));
    return *findCabinet(funcInst);
}

bool CabinetController::deleteCabinet(std::uint32_t funcInst)
{
    Cabinet* cabinet = findCabinet(funcInst);
    if (cabinet == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "pCabinet is not set");
        return false;
    }
    SSC_TRACE(equipmentGroup(), kFlow, "Deleted Cabinet instance for FuncInst %d", funcInst);
    m_cabinets.removeFirst([cabinet](const std::unique_ptr<Cabinet>& row) { return row.get() == cabinet; });
    return true;
}

void CabinetController::unitOperational(const FuncId_t& funcId)
{
    if (funcId.FuncType != func_type::kScu) return;
    SSC_TRACE(equipmentGroup(), kFlow, "New HWU added. FuncType %d.", funcId.FuncType);
    ScuIf* scu = m_pBroker->getScu(funcId);
    if (scu == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "No SCU-%d at the broker, unable to check its cabinet Pid",
                  funcId.FuncInst);
        return;
    }
    Cabinet* cabinet = findCabinet(scu->getCabinetFuncInst());
    if (cabinet == nullptr) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "pCabinet is not set");
        return;
    }
    cabinet->checkPid();
}

void CabinetController::unitRemoved(const FuncId_t&) {}

// A restart is reported as the unit coming up as well, which checks already.
void CabinetController::unitRestarted(const FuncId_t&) {}
