#pragma once
// Watches the part of the EC bus that nobody configured: every 30 minutes it
// asks each free address of the scan table for its status. A unit that
// answers there raises the mismatch fault; one that stays silent for two
// scans in a row is forgotten again.

#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FuncId.h"
#include "frame/Noncopyable.h"
#include "frame/TimerObserverIf.h"

#include <cstdint>

class BusMonitor : public TimerObserverIf, private Noncopyable {
public:
    static constexpr TimerType kScanTimer = 2;
    static constexpr std::uint32_t kScanPeriodMs = 1800000;
    static constexpr std::uint32_t kMismatchDelayMs = 2000;

    struct BlockedEntry {
        std::uint32_t address = 0;
        std::uint32_t port = 0;
        friend bool operator==(const BlockedEntry&, const BlockedEntry&) = default;
    };

    explicit BusMonitor(FaultsRegisterIf& faults);
    ~BusMonitor() override;

    void startMonitoring();
    void stopMonitoring();
    // A configured unit takes this address: it is not scanned any more, and
    // a stray seen there is now the configured unit.
    void stopPollOf(std::uint32_t address, const FuncId_t& funcId, std::uint32_t port);
    void startPollOf(std::uint32_t address, std::uint32_t port);
    void timeout(TimerId timerId) override;

    bool isBlocked(std::uint32_t address, std::uint32_t port) const;

private:
    void scan();
    void scanAddress(std::uint8_t message, std::uint32_t funcType, std::uint32_t address, std::uint32_t port,
                     const FuncId_t& funcId);
    void block(std::uint32_t address, std::uint32_t port);
    void unblock(std::uint32_t address, std::uint32_t port);

    EC_LinkedList<BlockedEntry> m_blocked;
    EC_LinkedList<FuncId_t> m_noResponse;
    FaultsRegisterIf* m_pFaults;
};
