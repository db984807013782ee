#pragma once
// The cabinets of the site, and the watch on their SCUs: each time an SCU
// comes up (also after a restart or a replacement) the identity of its
// cabinet is checked again.

#include "cabinet/Cabinet.h"
#include "cabinet/CabinetEventIf.h"
#include "cabinet/ProductData.h"
#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/Noncopyable.h"
#include "hwu/BrokerObserverIf.h"
#include "hwu/HwuBrokerIf.h"

#include <cstdint>
#include <memory>
#include <string>

class CabinetController : public BrokerObserverIf, private Noncopyable {
public:
    // Subscribes to the broker, if there is one, for the life of the object.
    CabinetController(FaultsRegisterIf& faults, HwuBrokerIf* broker);
    ~CabinetController() override;

    // Also for every cabinet there is.
    void setEventHandler(CabinetEventIf* handler);

    void setProductNameME(const std::string& name) { m_productNameME = name; }
    // True when the number in the SCU's product name is not the number in
    // the managed element's: such an identity belongs to another kind of
    // cabinet, and is not taken. Without a managed element name nothing
    // contradicts.
    bool isContradictedByProductNameME(const ProductData& scuPid) const;

    // NIL for an unknown cabinet.
    Cabinet* findCabinet(std::uint32_t funcInst);
    // A new cabinet goes to the tail.
    Cabinet& findOrAddCabinet(std::uint32_t funcInst);
    // False for an unknown cabinet.
    bool deleteCabinet(std::uint32_t funcInst);

    void unitOperational(const FuncId_t& funcId) override;
    void unitRemoved(const FuncId_t& funcId) override;
    void unitRestarted(const FuncId_t& funcId) override;

private:
    EC_LinkedList<std::unique_ptr<Cabinet>> m_cabinets;
    std::string m_productNameME;
    FaultsRegisterIf* m_pFaults;
    HwuBrokerIf* m_pBroker;
    CabinetEventIf* m_pEventHandler = nullptr;
};
