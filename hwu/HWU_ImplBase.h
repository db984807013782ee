#pragma once
// The common part of every hardware unit object: it polls its unit once a
// second, lets a unit that starts answering settle for four polls, takes it
// through the start sequence (start flag, product data, capabilities),
// notices restarts and replacements, resets a silent unit every tenth miss
// and declares it missing at the thirtieth, keeps its two LEDs, and
// publishes its health. A concrete unit gives the message numbers and
// decodes its own status.

#include "frame/FaultsRegisterIf.h"
#include "frame/FuncId.h"
#include "frame/Noncopyable.h"
#include "frame/TimerObserverIf.h"
#include "hwu/EquipmentManagerIf.h"
#include "hwu/HdlcAddress.h"
#include "hwu/HwuBrokerIf.h"
#include "hwu/HwuStatusRecord.h"
#include "hwu/Led.h"
#include "hwu/PpRecords.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

class HWU_ImplBase : public TimerObserverIf, private Noncopyable {
public:
    static constexpr TimerType kPollTimer = 2;
    static constexpr std::uint32_t kSettlingPolls = 4;

    HWU_ImplBase(const FuncId_t& funcId, std::string hubPosition, const HdlcAddress& hdlcAddress,
                 HwuBrokerIf* broker, EquipmentManagerIf* listener, FaultsRegisterIf* faults);
    ~HWU_ImplBase() override;

    void timeout(TimerId timerId) override;
    // Starts polling when the hub position gives an address; false when it
    // gives none, and the unit then never polls.
    virtual bool initObject();
    virtual std::uint32_t getPowerDistrFaultIndicator() { return 0; }
    virtual std::uint32_t getBatteryFaultIndicator() { return 0; }
    virtual void unitFound();
    virtual void unitMissing();

    // What the unit's wrapper shows outside.
    bool isAvailable() const { return !m_hwFault && m_started && m_measuredOk; }
    const FuncId_t& getFuncId() const { return m_funcId; }
    std::uint32_t getPort() const { return m_hdlcAddress.port; }
    std::uint32_t getHdlcAddress() const { return m_hdlcAddress.address; }
    const std::string& getHubPosition() const { return m_hubPosition; }
    bool isSameFuncId(const FuncId_t& funcId) const { return m_funcId == funcId; }
    void reset();
    bool getProductData(HwuProductRecord* record);
    std::uint32_t getOperationalLedState() const { return m_ledOperationalPtr->getLedState(); }
    std::uint32_t getFaultLedState() const { return m_ledFaultPtr->getLedState(); }
    bool isCommunicating() const { return m_commOk; }

    std::uint32_t getLedState(std::uint32_t type) const;
    // The stored product data, NUL-terminated.
    const char* productNumber() const { return m_productNumber.data(); }
    const char* revState() const { return m_revState.data(); }
    const char* productName() const { return m_productName.data(); }
    const char* productionDate() const { return m_productionDate.data(); }
    const char* serialNumber() const { return m_serialNumber.data(); }

protected:
    // The status and capabilities of the unit's own kind.
    virtual pp::MessageNo getStatusMsg() const = 0;
    virtual pp::MessageNo getCapabilityMsg() const = 0;
    // Keeps the decoded status; the one before stays for handleStatus.
    virtual void parseStatus(const PpDeviceData& data) = 0;
    virtual bool isStartFlagSet() const = 0;
    virtual bool readProductData(bool* replaced);
    // The measurements; true when they were read.
    virtual bool fetchMeasurements() { return false; }
    virtual void capabilitiesDone() {}
    virtual void commLost() { m_measuredOk = false; }
    virtual void storeCapabilities(const PpDeviceData& data) = 0;
    virtual void clearCapabilities() = 0;
    virtual void readAdditionalCapabilities(std::uint8_t /*sequence*/) {}
    // Acts on the status kept by parseStatus against the one before.
    virtual void handleStatus(bool measured) = 0;
    // Forgets the status; overrides call this one too, so that the next
    // status reports every flag.
    virtual void clearStatus() = 0;
    virtual void firstPollMissed() {}
    virtual bool isOperationalLedAvailable() const { return true; }
    virtual bool isFaultLedAvailable() const { return true; }

    // For the concrete units.
    bool sendSet(pp::MessageNo message, std::uint8_t sequence, const PpSetData& data);
    bool sendSet(pp::MessageNo message, std::uint8_t sequence, const PpSetData& data, std::uint8_t* cause);
    bool sendGet(pp::MessageNo message, std::uint8_t sequence, PpDeviceData& out);
    static std::uint8_t nextSequence();
    // Every flag counts as changed until a status was handled after a start
    // or reset.
    bool isChanged(bool newValue, bool oldValue) const { return newValue != oldValue || !m_firstStatusDone; }
    void setHwFault(bool on);
    void setLed(std::uint32_t type, std::uint32_t state);
    // Publishes now, whether or not anything was marked changed.
    void publishStatus();
    void markStatusChanged() { m_statusChanged = true; }

    const char* typeText() const;

    FuncId_t m_funcId;
    bool m_capabilitiesRead = false;
    bool m_measuredOk = false;
    bool m_started = false;
    bool m_missing = false;
    std::uint32_t m_missedPolls = 0;
    std::uint32_t m_okPolls = 0;
    std::uint32_t m_pollPeriod = 1000;
    std::uint32_t m_missingLimit = 30;
    std::uint32_t m_resetInterval = 10;
    std::unique_ptr<Led> m_ledFaultPtr;
    std::unique_ptr<Led> m_ledOperationalPtr;
    bool m_available = false;
    bool m_statusChanged = false;
    std::array<char, pp::kProductNumberSize> m_productNumber{};
    std::array<char, pp::kRevStateSize> m_revState{};
    std::array<char, pp::kProductionDateSize> m_productionDate{};
    std::array<char, pp::kSerialNumberSize> m_serialNumber{};
    std::array<char, pp::kProductNameSize> m_productName{};
    std::string m_hubPosition;
    HdlcAddress m_hdlcAddress;
    HwuBrokerIf* m_pBroker;
    EquipmentManagerIf* m_pListener;
    FaultsRegisterIf* m_pFaults;
    bool m_hwFault = false;
    bool m_commOk = false;
    bool m_firstStatusDone = false;

private:
    void poll();
    void answered(const PpDeviceData& data);
    void missed();
    void handleStatusCfm(const PpDeviceData& data);
    bool startSequence();
    bool readCapabilities();
    void resetStep();
    void setFaultLed(std::uint32_t state);
    void setOperationalLed(std::uint32_t state);
    bool sendIndication(std::uint8_t code, std::uint32_t ledType);
    void storeLed(Led& led, std::uint32_t state);
    void validateProduct(const PpProductIdentity& identity, HwuProductRecord& into) const;
};
