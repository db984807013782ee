#pragma once
// The management client's interface of this system: takes the MAOFRO
// signals from the distributor, applies the object-level rules of the
// support system's classes and hands actions to the object controllers.
// Its service name is published at the platform's name server.

#include "froBl/froMgmtSwU/export/MaoFroGenericBase.h"
#include "froBl/froMgmtSwU/export/NameServerFacade.h"
#include "froBl/froMgmtSwU/export/SignalDistributorAPI.h"
#include "froBl/froMgmtSwU/export/TransMgrCallbackIf.h"

class SupSysMaoFroIfHandler : public MaoFroGenericBase, public SignalSubscriber, public TransMgrCallbackIf {
public:
    SupSysMaoFroIfHandler(SignalDistributorAPI& distributor, transMgr& transactions, froMgr& table,
                          ElibDbFroDatabase& database, CtrlCommunicationIfApi& communication);
    ~SupSysMaoFroIfHandler() override;

    // Subscribes to the management signals, in their fixed order.
    void subscribe();
    // Publishes the service name; false when the name server was not found.
    bool publish();
    NameServerFacade& nameServer() { return m_nameServer; }

    void handleSignal(ose::Signal* signal) override;
    void beforeCreate(const fRO&) override {}

protected:
    bool createAllowed(const Request& request, std::string& errorText) override;
    bool setAllowed(const Request& request, std::string& errorText) override;
    bool deleteAllowed(const Request& request, const std::string& ldn, std::string& errorText) override;
    bool performAction(fRO* fro, const std::string& actionName, const SupSysFroCtrlIf::ActionLists& lists,
                       std::string& errorText) override;

private:
    bool classExists(std::int32_t transactionId, const std::string& moType) const;
    bool hwUnitAllowed(const Request& request, std::string& errorText) const;
    bool ecPortAllowed(const Request& request, std::string& errorText) const;
    // The ldn of a HwUnit of that unitType that is not being deleted in the
    // transaction; empty when none.
    std::string unitInUse(std::int32_t transactionId, const std::string& unitType) const;

    SignalDistributorAPI& m_distributor;
    NameServerFacade m_nameServer;
};
