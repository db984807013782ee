#pragma once
// What the configuration and the hardware say about each cabinet's fan
// groups: compared, faulted, and the fan speeds handed out to the SCUs and
// the climate unit. A climate unit stands in for fan groups 2 and 4.

#include "climate/CabinetFanGroups.h"
#include "frame/EC_LinkedList.h"

#include <cstdint>
#include <memory>

class ClimateConfigurationIf;
class FanGroupEventIf;
class FaultsRegisterIf;
class HwuBrokerIf;
class ScuIf;
struct FuncId_t;

class FanGroupControl {
public:
    FanGroupControl(HwuBrokerIf* broker, FaultsRegisterIf* faults, ClimateConfigurationIf* configuration,
                    FanGroupEventIf* eventHandler);

    void setFanSpeeds(std::int32_t internal, std::int32_t external);
    void checkFanGroupCapabilities();
    void checkCapabilitiesAndBlowers();
    void checkConnectedFanGroups();
    bool configureFanGroup(std::uint32_t funcInst, std::uint32_t number, std::uint32_t cabinetId, bool external);
    void deleteFanGroup(std::uint32_t funcInst);
    void fanGroupsConnected(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu, std::uint32_t funcType);
    void fanGroupsFailure(std::uint32_t cabinetId, std::uint8_t statusByte, bool secondScu, std::uint32_t funcType);
    void cluPresent(bool present);
    void fanGroupState(std::uint32_t cabinetId, std::uint32_t number, std::uint32_t state, std::uint32_t funcType);
    bool isFanGroupConfigured(std::uint32_t cabinetId, std::uint32_t number);
    // An SCU or CLU that went away: a cabinet left without an SCU has no
    // fan group the hardware supports.
    void unitGone(const FuncId_t& unit);

    // The fan groups of a cabinet, or of the cabinet that holds the fan
    // group object; NIL when there are none.
    CabinetFanGroups* find(std::uint32_t cabinetId);
    CabinetFanGroups* findHolding(std::uint32_t funcInst);
    void checkConsistencyOfAll();

private:
    CabinetFanGroups& findOrCreate(std::uint32_t cabinetId);
    void setFanSpeedsOf(ScuIf& scu, std::int32_t internal, std::int32_t external);
    template <typename Visit>
    void forEachScu(Visit&& visit);

    HwuBrokerIf* m_pBroker;
    FaultsRegisterIf* m_pFaultsRegister;
    ClimateConfigurationIf* m_pConfiguration;
    FanGroupEventIf* m_pEventHandler;
    EC_LinkedList<std::unique_ptr<CabinetFanGroups>> m_cabinets;
    bool m_cluPresent = false;
};
