#pragma once
// The filter between the faults of the core's interfaces and the fault
// indications that the management client sees. It keeps a shadow of the
// state of hardware units and alarm ports, holds a unit's faults back while
// it is locked and keeps the alarm ports' state attributes in step with
// their hardware. froId is always the object's external id.

#include <cstdint>
#include <string>
#include <vector>

class fRO;

class AlarmHandlerApi {
public:
    virtual ~AlarmHandlerApi() = default;

    virtual void init() = 0;

    // Stored for the client while nobody subscribes.
    virtual void sendFaultInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                              std::int32_t faultId, const std::string& faultDescription,
                              const std::vector<std::string>& additionalData, std::int32_t eventId) = 0;
    virtual void sendFaultInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                              std::int32_t faultId, const std::string& faultDescription,
                              const std::vector<std::string>& additionalData, std::int32_t eventId,
                              bool store) = 0;
    virtual void sendFaultCeaseInd(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                                   std::int32_t faultId) = 0;

    // The leaky bucket, for faults that are prone to flicker.
    virtual void leakyBucketRaise(const fRO& fro, std::int32_t faultId, const std::string& faultDescription,
                                  const std::string& ldn) = 0;
    virtual void leakyBucketRemove(const fRO& fro, std::int32_t faultId) = 0;
    virtual void leakyBucketCease(const fRO& fro, std::int32_t faultId, const std::string& ldn) = 0;
    virtual void leakyBucketCeaseAndRemove(const fRO& fro, std::int32_t faultId, const std::string& ldn) = 0;

    // The unit of ldn is missing: its alarm ports know nothing any more.
    virtual void clearAlarmPorts(const std::string& ldn) = 0;

    // The object lifecycle, told by the object controllers: after a set,
    // after a create or restore, before a delete.
    virtual void handleFroChanged(fRO& fro) = 0;
    virtual void handleFroCreated(fRO& fro) = 0;
    virtual void handleFroDeleted(const fRO& fro) = 0;
    // The object's EC port data changed: everything known of it starts over.
    virtual void ceaseFault(fRO& fro) = 0;
};
