#pragma once
// The one path from the object process to the management client for what
// is not a confirmation: faults, their cease, attribute changes and events.
// froId is always the object's external id.

#include "froBl/froMgmtSwU/export/SignalSubscriber.h"

#include <cstdint>
#include <string>
#include <vector>

class IndHandlerApi {
public:
    // One attribute of a parameter change or an event. An entry of type
    // "struct" with value "BEGIN" opens a struct of its name; the entries
    // after it belong to it until an entry of type "struct" with another
    // value closes it.
    struct Attribute {
        std::string name;
        std::string type;
        std::string value;
    };
    using Attributes = std::vector<Attribute>;

    virtual ~IndHandlerApi() = default;
    // Subscribes to the subscription and attach signals.
    virtual void init() = 0;
    virtual bool isAttached() const = 0;
    virtual void handleSignal(ose::Signal* signal) = 0;
    virtual void sendFault(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                           std::int32_t specificProblem, const std::string& faultDescription,
                           const std::vector<std::string>& additionalData, std::int32_t eventId, bool store) = 0;
    virtual void sendParameterChange(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                                     const Attributes& attributes) = 0;
    virtual void sendFaultCeased(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                                 std::int32_t specificProblem) = 0;
    virtual void sendEvent(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                           std::int32_t specificEvent, const Attributes& attributes) = 0;
};
