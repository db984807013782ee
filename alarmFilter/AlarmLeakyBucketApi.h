#pragma once
// The filter that keeps a flickering fault input from flooding the
// management client with fault and cease indications. fro is the object the
// fault lands on; ldn is its name as the caller knows it.

#include <cstdint>
#include <string>

class fRO;

class AlarmLeakyBucketApi {
public:
    virtual ~AlarmLeakyBucketApi() = default;

    virtual void raise(const fRO& fro, std::int32_t faultId, const std::string& faultDescription,
                       const std::string& ldn) = 0;
    virtual void cease(const fRO& fro, std::int32_t faultId, const std::string& ldn) = 0;
    // Forgets the pair without telling the client anything.
    virtual void remove(const fRO& fro, std::int32_t faultId) = 0;
    // Forgets every fault of the object's external id.
    virtual void removeAll(const fRO& fro) = 0;
    // Forgets every fault recorded under exactly this ldn.
    virtual void removeByLdn(const std::string& ldn) = 0;
    // Sends the cease unconditionally, then forgets the pair.
    virtual void ceaseAndRemove(const fRO& fro, std::int32_t faultId, const std::string& ldn) = 0;
    // Sends the cease of faultId unconditionally, then forgets every fault of the object.
    virtual void ceaseAndRemoveAll(const fRO& fro, std::int32_t faultId, const std::string& ldn) = 0;
    // A fault that stands again without a new edge of the input (an unlock
    // with the input active).
    virtual void pulse(const fRO& fro, std::int32_t faultId, const std::string& ldn) = 0;
};
