#include "hwu/BusMonitor.h"

#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/PpCommunicationService.h"

#include <array>
#include <string>

using namespace ssc_trace;
using namespace func_type;

namespace {

struct ScanRow {
    std::uint32_t first;
    std::uint32_t last;
    std::uint32_t port;
    pp::MessageNo message;
    std::uint32_t funcType;
};

// In scan order. The auxiliary port is scanned at one PSU and one SCU address.
constexpr std::array<ScanRow, 9> kScanTable{{
    {96, 102, 1, pp::SCU_GET_STATUS_REQ, kScu},
    {32, 32, 2, pp::SCU_GET_STATUS_REQ, kScu},
    {32, 32, 1, pp::SCU_GET_STATUS_REQ, kScu},
    {33, 33, 1, pp::SAU_GET_STATUS_REQ, kSau},
    {44, 44, 1, pp::CLU_GET_STATUS_REQ, kClu},
    {48, 63, 1, pp::PSU_GET_STATUS_REQ, kPsu},
    {64, 79, 1, pp::BFU_GET_STATUS_REQ, kBfu},
    {80, 95, 1, pp::PDU_GET_STATUS_REQ, kPdu},
    {52, 52, 2, pp::PSU_GET_STATUS_REQ, kPsu},
}};

constexpr std::uint32_t kAuxInstOffset = 256;
constexpr std::uint32_t kScuAddress = 32;
constexpr std::uint32_t kCascadeAddress = 96;

std::uint32_t instOffset(std::uint32_t port) { return port == Hdlc::kAuxPort ? kAuxInstOffset : 0; }

FaultId_t mismatch(std::uint32_t funcType, std::uint32_t address)
{
    return FaultId_t(fault_id::kHwEntitiesMismatch, std::string(Hdlc::getHubPosition(funcType, address)));
}

} // namespace

BusMonitor::BusMonitor(FaultsRegisterIf& faults) : m_pFaults(&faults) {}

BusMonitor::~BusMonitor() { TimerService::stopAllTimers(this); }

void BusMonitor::startMonitoring()
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "startMonitoring");
    TimerService::startCyclicTimer(kScanPeriodMs, kScanTimer, this, 0);
    timeout(TimerId{kScanTimer, 0});
}

void BusMonitor::timeout(TimerId) { scan(); }

void BusMonitor::scan()
{
    for (const ScanRow& row : kScanTable) {
        for (std::uint32_t address = row.first; address <= row.last; ++address) {
            if (isBlocked(address, row.port)) continue;
            const FuncId_t funcId{row.funcType, address - row.first + instOffset(row.port)};
            scanAddress(row.message, row.funcType, address, row.port, funcId);
        }
    }
}

void BusMonitor::scanAddress(std::uint8_t message, std::uint32_t funcType, std::uint32_t address,
                             std::uint32_t port, const FuncId_t& funcId)
{
    PpDeviceData answer;
    if (PpCommunicationService::getDeviceData(message, 0, address, answer, port, false)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Found unconfigured hardware, %s Port: %d, HDLC address: 0x%2X",
                  text(funcType), port, address);
        m_pFaults->raiseFault(mismatch(funcType, address), funcId, kMismatchDelayMs);
        m_noResponse.remove(funcId);
        // A cascaded SCU answers for the first SCU address too.
        if (address == kCascadeAddress && !isBlocked(kScuAddress, Hdlc::kMainPort))
            block(kScuAddress, Hdlc::kMainPort);
        return;
    }
    if (!m_pFaults->isFaultActive(fault_id::kHwEntitiesMismatch, funcId)) return;
    // One silent scan may be a unit busy with something else: only the
    // second in a row forgets it.
    if (!m_noResponse.contains(funcId)) {
        m_noResponse.add(funcId);
        return;
    }
    m_noResponse.remove(funcId);
    SSC_TRACE(equipmentGroup(), kUnexpected,
              "Previously unconfigured hardware, %s Port: %d, HDLC address: 0x%2X does not respond anymore",
              text(funcType), port, address);
    m_pFaults->ceaseFault(mismatch(funcType, address), funcId);
}

void BusMonitor::stopPollOf(std::uint32_t address, const FuncId_t& funcId, std::uint32_t port)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "stopPollOf address: %d funcType: %d port %d", address, funcId.FuncType,
              port);
    block(address, port);
    if (address == kCascadeAddress) {
        block(kScuAddress, Hdlc::kMainPort);
        SSC_TRACE(equipmentGroup(), kUnexpected, "stopPollOf address: 0x20(32) when stopping 0x60(96)");
    } else if (address == kScuAddress && port == Hdlc::kMainPort) {
        block(kCascadeAddress, Hdlc::kMainPort);
        SSC_TRACE(equipmentGroup(), kUnexpected, "stopPollOf address: 0x60(96) when stopping 0x20(32) on ECB");
    }
    const std::uint32_t base = Hdlc::getBaseAddress(funcId.FuncType, address);
    if (address < base) return;
    const FuncId_t strayId{funcId.FuncType, address - base + instOffset(port)};
    if (!m_pFaults->isFaultActive(fault_id::kHwEntitiesMismatch, strayId)) return;
    const std::string position(Hdlc::getHubPosition(funcId.FuncType, address));
    SSC_TRACE(equipmentGroup(), kUnexpected,
              "Previously unconfigured hardware, %s-%d Port: %d, HDLC address: 0x%2X, hubpos: \"%s\" has now been "
              "configured",
              text(strayId.FuncType), strayId.FuncInst, port, address, position.c_str());
    m_pFaults->ceaseFault(mismatch(funcId.FuncType, address), strayId);
}

void BusMonitor::startPollOf(std::uint32_t address, std::uint32_t port)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "startPollOf address: %d", address);
    unblock(address, port);
    if (address == kCascadeAddress) {
        unblock(kScuAddress, Hdlc::kMainPort);
        SSC_TRACE(equipmentGroup(), kUnexpected, "startPollOf address: 0x20(32) when starting 0x60(96)");
    } else if (address == kScuAddress && port == Hdlc::kMainPort) {
        unblock(kCascadeAddress, Hdlc::kMainPort);
        SSC_TRACE(equipmentGroup(), kUnexpected, "startPollOf address: 0x60(96) when starting 0x20(32) on ECB");
    }
}

void BusMonitor::stopMonitoring()
{
    TimerService::stopTimer(kScanTimer, this, 0);
    for (const ScanRow& row : kScanTable) {
        for (std::uint32_t address = row.first; address <= row.last; ++address) {
            const FuncId_t funcId{row.funcType, address - row.first + instOffset(row.port)};
            if (!m_pFaults->isFaultActive(fault_id::kHwEntitiesMismatch, funcId)) continue;
            SSC_TRACE(equipmentGroup(), kUnexpected, "Ceasing mismatch alarm, %s-%d Port: %d, HDLC address: 0x%2X",
                      text(row.funcType), funcId.FuncInst, row.port, address);
            m_pFaults->ceaseFault(mismatch(row.funcType, address), funcId);
        }
    }
    m_blocked.clear();
    m_noResponse.clear();
}

bool BusMonitor::isBlocked(std::uint32_t address, std::uint32_t port) const
{
    return m_blocked.contains(BlockedEntry{address, port});
}

void BusMonitor::block(std::uint32_t address, std::uint32_t port)
{
    if (!isBlocked(address, port)) m_blocked.add(BlockedEntry{address, port});
}

void BusMonitor::unblock(std::uint32_t address, std::uint32_t port) { m_blocked.remove(BlockedEntry{address, port}); }
