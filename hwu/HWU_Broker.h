#pragma once
// Owns every hardware unit object: makes one when configuration asks, deletes
// it again, keeps the addresses in use away from the bus monitor, and tells
// its subscribers when a unit comes up, goes away or restarts.

#include "frame/EC_LinkedList.h"
#include "frame/FaultsRegisterIf.h"
#include "frame/Noncopyable.h"
#include "frame/Observer.h"
#include "hwu/BfuIf.h"
#include "hwu/BfuStatus.h"
#include "hwu/BusMonitor.h"
#include "hwu/CluIf.h"
#include "hwu/PduIf.h"
#include "hwu/PsuIf.h"
#include "hwu/SauIf.h"
#include "hwu/ScuIf.h"
#include "hwu/HdlcAddress.h"
#include "hwu/HwuBrokerIf.h"
#include "hwu/HwuFactoryIf.h"

#include <array>
#include <functional>
#include <memory>

class CabinetObserverIf;

class HWU_Broker : public HwuBrokerIf, public Observer, private Noncopyable {
public:
    using UnitList = EC_LinkedList<std::unique_ptr<HwuStatusIf>>;

    // The factory is not owned.
    HWU_Broker(FaultsRegisterIf& faults, HwuFactoryIf& factory);
    ~HWU_Broker() override;

    bool configureHwu(const FuncId_t& funcId, std::string_view hubPosition, std::uint32_t cascadingOrder,
                      std::uint32_t cabinetFuncInst) override;
    bool deleteHwu(const FuncId_t& funcId) override;
    bool subscribeHWU(BrokerObserverIf* observer) override;
    bool unSubscribeHWU(BrokerObserverIf* observer) override;
    void hwuFound(const FuncId_t& funcId) override;
    void hwuRestarted(const FuncId_t& funcId) override;
    void hwuMissing(const FuncId_t& funcId) override;
    HwuStatusIf* getHwu(const FuncId_t& funcId) override;
    std::uint32_t getBfuCount() const override { return countOf(kBfuList); }
    std::uint32_t getPduCount() const override { return countOf(kPduList); }
    std::uint32_t getPsuCount() const override { return countOf(kPsuList); }
    std::uint32_t getSauCount() const override { return countOf(kSauList); }
    std::uint32_t getScuCount() const override { return countOf(kScuList); }
    std::uint32_t getCluCount() const override { return countOf(kCluList); }
    void setConfigured(bool configured) override;
    void start(SscHandleIf& ssc) override;
    // Stops listening to the cabinet, for a root that takes the cabinet down
    // before the broker.
    void detachCabinet();
    void setDualBoxSupported(bool supported) override { m_dualBoxSupported = supported; }
    bool isDualBoxSupported() const override { return m_dualBoxSupported; }

    // The cabinet's events (id 0: the cabinet was configured).
    void update(std::uint32_t id) override;

    BfuIf* getBfu(const FuncId_t& funcId) override { return dynamic_cast<BfuIf*>(getHwu(funcId)); }
    PduIf* getPdu(const FuncId_t& funcId) override { return dynamic_cast<PduIf*>(getHwu(funcId)); }
    PsuIf* getPsu(const FuncId_t& funcId) override { return dynamic_cast<PsuIf*>(getHwu(funcId)); }
    SauIf* getSau(const FuncId_t& funcId) override { return dynamic_cast<SauIf*>(getHwu(funcId)); }
    ScuIf* getScu(const FuncId_t& funcId) override { return dynamic_cast<ScuIf*>(getHwu(funcId)); }
    CluIf* getClu(const FuncId_t& funcId) override { return dynamic_cast<CluIf*>(getHwu(funcId)); }
    std::vector<HwuStatusIf*> getUnits(std::uint32_t funcType) override;
    ScuIf* getPrimaryScu(std::uint32_t cabinetFuncInst) override;
    BfuStatusIf& getBfuStatus() override { return m_bfuStatus; }

    bool isAddressFree(const HdlcAddress& address);
    BusMonitor& getBusMonitor() { return *m_pBusMonitor; }

private:
    // The lists in the order in which units are announced and removed.
    enum ListIndex : std::size_t { kBfuList, kPduList, kPsuList, kSauList, kScuList, kCluList, kListCount };
    static int listIndexOf(std::uint32_t funcType);
    std::uint32_t countOf(ListIndex index) const { return m_units[index].count(); }

    bool resolve(const FuncId_t& funcId, std::string_view hubPosition, std::uint32_t cascadingOrder,
                 HdlcAddress& address, std::string& position);
    void raiseConfigFault(std::int32_t faultId, const FuncId_t& funcId);
    void releaseAddress(const HwuStatusIf& unit);
    void cabinetConfigured();
    void tellSubscribers(const std::function<void(BrokerObserverIf&)>& tell);

    EC_LinkedList<BrokerObserverIf*> m_subscribers;
    EC_LinkedList<HdlcAddress> m_usedAddresses;
    bool m_monitoringStarted = false;
    bool m_cabinetConfigured = false;
    bool m_dualBoxSupported = false;
    std::array<UnitList, kListCount> m_units;
    SscHandleIf* m_pSsc = nullptr;
    EquipmentManagerIf* m_pEquipmentManager = nullptr;
    CabinetObserverIf* m_pCabinetObserver = nullptr;
    std::unique_ptr<BusMonitor> m_pBusMonitor;
    FaultsRegisterIf* m_pFaults;
    HwuFactoryIf* m_pFactory;
    BfuStatus m_bfuStatus;
};
