#pragma once
// The leaky bucket for fault inputs that are prone to flicker. The first
// raise and the first cease of a fault go out at once; each repeat within a
// minute raises a level, and while the level is above 1 a cease is held
// back until the drop timer has drained the level to 1. Each entry's drop
// timer runs from the entry's creation and drains one level a minute; at
// level 0 the entry goes.

#include "alarmFilter/AlarmIndicationIf.h"
#include "alarmFilter/AlarmLeakyBucketApi.h"

#include "froBl/froMgmtSwU/export/TimerApi.h"
#include "froBl/froMgmtSwU/export/TimerObserver.h"

#include <cstdint>
#include <string>
#include <vector>

class froMgr;

class AlarmLeakyBucket : public TimerObserver, public AlarmLeakyBucketApi {
public:
    static constexpr std::int32_t kDropTimeMs = 60000;
    static constexpr std::uint32_t kHighestLevel = 3;

    // None of the three is owned.
    AlarmLeakyBucket(AlarmIndicationIf& indications, TimerApi& timer, froMgr& froTable);
    // Cancels the drop timers, so that no time-out finds the bucket gone.
    ~AlarmLeakyBucket() override;
    AlarmLeakyBucket(const AlarmLeakyBucket&) = delete;
    AlarmLeakyBucket& operator=(const AlarmLeakyBucket&) = delete;

    void raise(const fRO& fro, std::int32_t faultId, const std::string& faultDescription,
               const std::string& ldn) override;
    void cease(const fRO& fro, std::int32_t faultId, const std::string& ldn) override;
    void remove(const fRO& fro, std::int32_t faultId) override;
    void removeAll(const fRO& fro) override;
    void removeByLdn(const std::string& ldn) override;
    void ceaseAndRemove(const fRO& fro, std::int32_t faultId, const std::string& ldn) override;
    void ceaseAndRemoveAll(const fRO& fro, std::int32_t faultId, const std::string& ldn) override;
    void pulse(const fRO& fro, std::int32_t faultId, const std::string& ldn) override;

    void timeout(std::uint32_t timerId) override;

private:
    struct Entry {
        std::uint32_t timerId = 0;
        std::uint32_t alarmLevel = 1;
        bool alarmReported = false; // a fault indication stands at the client
        bool alarmActive = false;   // the input is in the fault state now
        std::uint32_t froId = 0;    // external id
        std::uint32_t froType = 0;
        std::string ldn;
        std::int32_t faultId = 0;
    };
    using Entries = std::vector<Entry>;

    Entry* find(std::uint32_t froId, std::int32_t faultId);
    Entries::iterator findByTimer(std::uint32_t timerId);
    void add(const fRO& fro, std::int32_t faultId, const std::string& ldn, bool alarmActive);
    void raiseLevel(Entry& entry);
    Entries::iterator erase(Entries::iterator position);
    template <typename Match>
    void eraseIf(Match match);
    void drained(Entry& entry);
    void writeBackInactive(const std::string& ldn);
    void sendFault(const fRO& fro, std::int32_t faultId, const std::string& faultDescription,
                   const std::string& ldn);
    void sendCease(const fRO& fro, std::int32_t faultId, const std::string& ldn);

    AlarmIndicationIf& m_indications;
    TimerApi& m_timer;
    froMgr& m_froTable;
    Entries m_entries; // in order of adding
};
