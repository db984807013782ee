#pragma once
// The indications to the management client. One client, the first process
// that subscribes; it is supervised by an attach, and when it dies all
// subscriptions end. Indications for a type nobody subscribes to wait:
// attribute changes and events as ready-made signals until the type is
// subscribed, faults (when asked to be stored) as records until they cease,
// sent again at every subscription of their type.
//
// Texts (ldn, names, values) are given plain; the XML printer escapes them.

#include "froBl/froMgmtSwU/export/IndHandlerApi.h"
#include "froBl/froMgmtSwU/export/MaoFroSignals.h"
#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"

#include "ose/Types.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace maofro {

// Layouts of the subscription and of the indications' fixed parts; an
// indication's text follows its block.
struct MAOFRO_NOTIFY_SUBSCRIBE_REQ2_S {
    ose::be_u32 sigNo;
    ose::be_u32 signalRevision;
    ose::be_u32 clientId;
    ose::be_u32 froType;
};
OSE_SIGNAL_LAYOUT(MAOFRO_NOTIFY_SUBSCRIBE_REQ2_S, 16);

struct MAO_FRO_FAULT_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 froId;
    ose::be_u32 froType;
    ose::be_i32 specificProblem;
    ose::be_u32 primaryInd;
    ose::be_u32 noOfAttributes;
    ATTRIBUTE_BLOCK_S block;
};
OSE_SIGNAL_LAYOUT(MAO_FRO_FAULT_IND_S, 36);

struct MAO_FRO_FAULT_CEASED_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 froId;
    ose::be_u32 froType;
    ose::be_i32 specificProblem;
    ose::be_u32 noOfAttributes;
    ATTRIBUTE_BLOCK_S block;
};
OSE_SIGNAL_LAYOUT(MAO_FRO_FAULT_CEASED_IND_S, 32);

struct MAO_FRO_EVENT_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 froId;
    ose::be_u32 froType;
    ose::be_i32 specificEvent;
    ose::be_u32 noOfAttributes;
    ATTRIBUTE_BLOCK_S block;
};
OSE_SIGNAL_LAYOUT(MAO_FRO_EVENT_IND_S, 32);

struct MAO_FRO_PARAMETER_CHD_IND_S {
    ose::be_u32 sigNo;
    ose::be_u32 froId;
    ose::be_u32 froType;
    ose::be_u32 noOfAttributes;
    ATTRIBUTE_BLOCK_S block;
};
OSE_SIGNAL_LAYOUT(MAO_FRO_PARAMETER_CHD_IND_S, 28);

} // namespace maofro

class IndHandler : public IndHandlerApi, public SignalSubscriber {
public:
    explicit IndHandler(SignalDistributorAPI& distributor);
    // Ends the supervision of the client and frees the waiting signals.
    ~IndHandler() override;
    IndHandler(const IndHandler&) = delete;
    IndHandler& operator=(const IndHandler&) = delete;

    static IndHandler& instance();

    void init() override;
    bool isAttached() const override { return m_attached; }
    void handleSignal(ose::Signal* signal) override;
    void sendFault(std::uint32_t froId, std::uint32_t froType, const std::string& ldn, std::int32_t specificProblem,
                   const std::string& faultDescription, const std::vector<std::string>& additionalData,
                   std::int32_t eventId, bool store) override;
    void sendParameterChange(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                             const Attributes& attributes) override;
    void sendFaultCeased(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                         std::int32_t specificProblem) override;
    void sendEvent(std::uint32_t froId, std::uint32_t froType, const std::string& ldn, std::int32_t specificEvent,
                   const Attributes& attributes) override;

private:
    struct FreeSignal {
        void operator()(ose::Signal* signal) const;
    };
    using OwnedSignal = std::unique_ptr<ose::Signal, FreeSignal>;
    using PendingLists = std::map<std::uint32_t, std::vector<OwnedSignal>>;

    struct FaultRecord {
        std::uint32_t froId = 0;
        std::uint32_t froType = 0;
        std::string ldn;
        std::int32_t specificProblem = 0;
        std::string faultDescription;
        std::vector<std::string> additionalData;
        std::int32_t eventId = 0;
    };

    // An indication with its XML text; `code` is the problem or the event.
    static OwnedSignal make(ose::SIGSELECT sigNo, std::uint32_t froId, std::uint32_t froType, std::int32_t code,
                            const std::string& text);

    // XML bodies.
    std::string faultText(const std::string& ldn, std::int32_t specificProblem, const std::string& faultDescription,
                          const std::vector<std::string>& additionalData, std::int32_t eventId) const;
    std::string faultCeasedText(const std::string& ldn, std::int32_t specificProblem) const;
    std::string attributesText(const std::string& ldn, const Attributes& attributes, bool withStructs) const;

    bool listens(std::uint32_t froType) const;
    void deliver(OwnedSignal signal);
    void deliverOrKeep(std::uint32_t froType, OwnedSignal signal, PendingLists& pending);
    void deliverPending(std::uint32_t froType, PendingLists& pending);
    void storeFault(FaultRecord record);
    void removeFault(std::uint32_t froType, std::uint32_t froId, std::int32_t specificProblem);
    // Faults are told apart by object and problem; the object is its type
    // and external id, as external ids repeat across types.
    FaultRecord* findFault(std::uint32_t froType, std::uint32_t froId, std::int32_t specificProblem);

    void handleSubscribe(ose::Signal* signal);
    void handleClientDeath(ose::Signal* signal);
    void attachTo(ose::PROCESS client);

    SignalDistributorAPI& m_distributor;
    bool m_attached = false;
    ose::PROCESS m_client = 0;
    ose::OSATTREF m_attachRef = 0;
    std::set<std::uint32_t> m_subscribedTypes;
    PendingLists m_pendingParameterChanges;
    PendingLists m_pendingEvents;
    std::map<std::uint32_t, std::vector<FaultRecord>> m_storedFaults;
    const std::vector<ose::SIGSELECT> m_subscribedSignals;
    const std::string m_mimVersion;
};
