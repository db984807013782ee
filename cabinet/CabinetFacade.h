#pragma once
// The door of the cabinets to the rest of the core: configuration and the
// operator's identity come in here, the SCU tells its smoke detector and
// identifier here, the cabinet's faults go out to the event handler, and the
// cabinet counts as configured once its product data and the node have both
// been configured, which lets the broker start the bus scan.

#include "cabinet/CabinetController.h"
#include "cabinet/CabinetCtrlIf.h"
#include "cabinet/CabinetFacadeIf.h"
#include "cabinet/CabinetObserverIf.h"
#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/FaultsRegisterReportIf.h"
#include "frame/Noncopyable.h"
#include "frame/SscHandleIf.h"

#include <cstdint>
#include <memory>
#include <string>

class CabinetFacade : public CabinetFacadeIf,
                      public CabinetObserverIf,
                      public FaultsRegisterReportIf,
                      public CabinetCtrlIf,
                      private Noncopyable {
public:
    struct CabinetConfig {
        std::uint8_t doorSwitch = 0;
        std::uint32_t funcInst = 0;
    };

    // Made after the unit broker, which the controller subscribes to.
    CabinetFacade(SscHandleIf& ssc, FaultsRegisterIf& faults);
    ~CabinetFacade() override;

    void addCabinet(std::uint32_t funcInst) override;
    void deleteCabinet(std::uint32_t funcInst) override;
    void setProductData(const ProductData& pid, std::uint32_t funcInst) override;
    void updateProductData(const ProductData& pid, std::uint32_t funcInst) override;
    void setProductNameME(const std::string& name) override;
    void setNodeConfigured() override;
    std::uint8_t getDoorSwitch(std::uint32_t funcInst) override;
    void setDoorSwitch(std::uint32_t funcInst, std::uint8_t value) override;
    // Also the SCU's: one flag for both.
    void setSmokeDetectorConfigured(std::uint32_t funcInst, bool configured) override;
    bool getSmokeDetectorStatus(std::uint32_t funcInst) override;
    ProductData getProductData(std::uint32_t funcInst) override;
    std::string getCabinetIdentifier(std::uint32_t funcInst) override;
    void setCabinetIdentifier(std::uint32_t funcInst, const std::string& identifier) override;
    void setEventHandler(CabinetEventIf* handler) override;

    // A subscriber after the cabinet was configured is told at once.
    void subscribe(std::uint32_t id, Observer* observer) override;
    void unsubscribe(std::uint32_t id, Observer* observer) override;

    void raiseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;
    void ceaseFault(const FaultId_t& faultId, const FuncId_t& funcId) override;

    void notifySmokeDetectorStatusUpdated(std::uint32_t cabinetFuncInst) override;
    void notifyCabinetIdentifierUpdated(std::uint32_t cabinetFuncInst, const std::string& identifier) override;
    bool getSmokeDetectorConfigured(std::uint32_t cabinetFuncInst) override;

private:
    struct Subscription {
        std::uint32_t id;
        Observer* pObserver;
        friend bool operator==(const Subscription&, const Subscription&) = default;
    };

    CabinetConfig* findConfig(std::uint32_t funcInst);
    // NIL, with a trace, for an unknown cabinet.
    Cabinet* findCabinet(std::uint32_t funcInst);
    CabinetEventIf* eventHandler();
    void fireConfigured();
    void forwardFault(const FaultId_t& faultId, const FuncId_t& funcId, bool raise);

    bool m_productDataSet = false;
    bool m_nodeConfigured = false;
    bool m_cabinetConfigured = false;
    EC_LinkedList<CabinetConfig> m_configs;
    CabinetEventIf* m_pEventHandler = nullptr;
    EC_LinkedList<Subscription> m_subscriptions;
    FaultsRegisterIf* m_pFaults;
    std::unique_ptr<CabinetController> m_pCabinetController;
};
