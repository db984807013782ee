#pragma once
// The alarm handler of the object process: the indications of all fault
// filters go out through it, and it owns the leaky bucket that filters the
// flickering ones.

#include "alarmFilter/AlarmHandlerApi.h"
#include "alarmFilter/AlarmIndicationIf.h"
#include "alarmFilter/AlarmLeakyBucket.h"
#include "alarmFilter/AlarmPortData.h"
#include "alarmFilter/BatteryBackupData.h"
#include "alarmFilter/HwUnitData.h"

#include <cstdint>
#include <string>
#include <vector>

class IndHandlerApi;
class TimerApi;
class froMgr;

class AlarmHandler : public AlarmHandlerApi, public AlarmIndicationIf {
public:
    // A fault on an EC port of a unit, ceased when the unit starts over.
    struct EcPortFault {
        std::int32_t faultId = 0;
        std::string ldn;
    };

    // None of the three is owned; the timer must outlive the handler.
    AlarmHandler(IndHandlerApi& indications, TimerApi& timer, froMgr& froTable);
    // The handler of the object process, on its indications, timer and table.
    static AlarmHandler& instance();
    AlarmHandler(const AlarmHandler&) = delete;
    AlarmHandler& operator=(const AlarmHandler&) = delete;

    void init() override;

    void sendFaultInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn, std::int32_t faultId,
                      const std::string& faultDescription, const std::vector<std::string>& additionalData,
                      std::int32_t eventId) override;
    void sendFaultInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn, std::int32_t faultId,
                      const std::string& faultDescription, const std::vector<std::string>& additionalData,
                      std::int32_t eventId, bool store) override;
    void sendFaultCeaseInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                           std::int32_t faultId) override;

    void leakyBucketRaise(const fRO& fro, std::int32_t faultId, const std::string& faultDescription,
                          const std::string& ldn) override;
    void leakyBucketRemove(const fRO& fro, std::int32_t faultId) override;
    void leakyBucketCease(const fRO& fro, std::int32_t faultId, const std::string& ldn) override;
    void leakyBucketCeaseAndRemove(const fRO& fro, std::int32_t faultId, const std::string& ldn) override;

    void clearAlarmPorts(const std::string& ldn) override;

    void handleFroChanged(fRO& fro) override;
    void handleFroCreated(fRO& fro) override;
    void handleFroDeleted(const fRO& fro) override;
    void ceaseFault(fRO& fro) override;

    // What is stored of a unit or a port, for the fault handlers of the
    // interfaces, which add to it as faults and inputs come; nullptr when the
    // object is not known here.
    HwUnitData* findHwUnitData(const std::string& ldn);
    AlarmPortData* findAlarmPortData(const std::string& ldn);
    std::vector<EcPortFault>& ecPortFaults() { return m_ecPortFaults; }

private:
    std::string ldnOf(const fRO& fro) const;
    std::vector<std::string> childrenOf(const std::string& ldn) const;
    void sendPortCease(const fRO& port, const std::string& ldn);

    void hwUnitCreated(const fRO& fro, const std::string& ldn);
    void alarmPortCreated(fRO& fro, const std::string& ldn);
    AlarmPortData newAlarmPortData(const fRO& fro, const std::string& ldn, const fRO& parent) const;
    void adoptAlarmPortData(AlarmPortData& entry, fRO& fro, const std::string& ldn, bool parentLocked);

    void hwUnitChanged(const fRO& fro, const std::string& ldn);
    void alarmPortChanged(fRO& fro, const std::string& ldn);
    void normallyOpenChanged(fRO& fro, const std::string& ldn, AlarmPortData& entry);
    void alarmPortLockChanged(const fRO& fro, const std::string& ldn, AlarmPortData& entry);

    void eraseHwUnitData(const std::string& ldn);
    void eraseAlarmPortData(const std::string& ldn);

    void hwUnitStateChanged(const fRO& fro, const std::string& ldn, bool locking);
    void sendHwUnitFaults(const fRO& fro, const std::string& ldn, const HwUnitData& entry, bool locking);
    void unitStateChangedForPort(const std::string& ldn, bool locking);

    void ceaseHwUnitFaults(const fRO& fro, const std::string& ldn);
    void ceaseEcPortFault(const fRO& child, const std::string& ldn);
    void startPortOver(fRO& port, const std::string& ldn, AlarmPortData& entry);

    IndHandlerApi& m_indications;
    froMgr& m_froTable;
    BatteryBackupData m_batteryBackupData;
    std::vector<AlarmPortData> m_alarmPortData;
    std::vector<HwUnitData> m_hwUnitData;
    std::vector<EcPortFault> m_ecPortFaults;
    AlarmLeakyBucket m_leakyBucket; // last: its indications come back through this handler
};
