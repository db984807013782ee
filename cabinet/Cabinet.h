#pragma once
// One cabinet and its identity. The identity lives both in the configuration
// and in the memory of the cabinet's SCU, and either can be exchanged
// without the other; the check decides which side is right, writes the
// identity where it is missing, and raises 21500 when only a person can
// tell.

#include "cabinet/CabinetEventIf.h"
#include "cabinet/ProductData.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/Noncopyable.h"
#include "hwu/HwuBrokerIf.h"

#include <cstdint>
#include <string>

class CabinetController;

class Cabinet : private Noncopyable {
public:
    static constexpr std::uint32_t kMismatchDelayMs = 2000;

    // The broker and the event handler may be NIL; nothing is owned.
    Cabinet(CabinetController& controller, FaultsRegisterIf& faults, HwuBrokerIf* broker,
            CabinetEventIf* eventHandler, std::uint32_t funcInst);

    std::uint32_t getFuncInst() const { return m_funcInst; }
    void setEventHandler(CabinetEventIf* handler) { m_pEventHandler = handler; }

    // The identity from configuration: taken when valid, then checked
    // against the SCU afresh.
    void setPid(const ProductData& pid);
    // The identity from the operator: a valid one is right by definition.
    void updatePid(const ProductData& pid);
    void checkPid();
    const ProductData& getPid() const { return m_pid; }

    // NIL when the broker knows no SCU for this cabinet.
    ScuIf* getPrimaryScu() const;

    const std::string& getCabinetIdentifier() const { return m_cabinetIdentifier; }
    void setCabinetIdentifier(const std::string& identifier) { m_cabinetIdentifier = identifier; }
    bool getSmokeDetectorConfigured() const { return m_smokeDetectorConfigured; }
    void setSmokeDetectorConfigured(bool configured) { m_smokeDetectorConfigured = configured; }

private:
    bool readScuPid(ProductData& scuPid);
    void reconcile(const ProductData& scuPid);
    void takeScuPid(const ProductData& scuPid);
    void overwriteScuPid();
    void raiseMismatch();
    void ceaseMismatch();
    void writeScuPid();
    void pidUpdated();
    FuncId_t subject() const { return FuncId_t{0, m_funcInst}; }

    CabinetController* m_pController;
    FaultsRegisterIf* m_pFaults;
    HwuBrokerIf* m_pBroker;
    CabinetEventIf* m_pEventHandler;
    std::uint32_t m_funcInst;
    // Reconciled with an SCU at least once since the last configuration: an
    // SCU that then holds another identity is a new one.
    bool m_pidVerified = false;
    ProductData m_pid;
    std::string m_cabinetIdentifier;
    bool m_smokeDetectorConfigured = false;
};
