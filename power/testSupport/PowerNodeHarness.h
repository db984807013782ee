#pragma once
// A node with the power control on the virtual clock: real units from the
// unit factory against the simulated cabinet, the power manager made and
// configured as the object layer would, and its events recorded.

#include "frame/TimerService.h"
#include "hwu/HwuUnitFactory.h"
#include "hwu/testSupport/HwuNodeHarness.h"
#include "power/PowerCtrlManager.h"
#include "power/testSupport/PowerEventRecorder.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

class PowerNodeHarness : public HwuNodeHarness {
protected:
    // Tenths of a volt, as the power supply configuration brings them.
    struct Supply {
        std::int16_t nominal = -545;
        std::int16_t overvoltageCeaseOffset = 5;
        std::int16_t overvoltageRaise = -575;
        std::int16_t undervoltageCeaseOffset = 30;
        std::int16_t undervoltageRaise = -440;
    };
    struct Unit {
        FuncId_t funcId;
        const char* hubPosition;
    };

    static std::array<std::int16_t, PowerCtrlManagerIf::kPowerSupplyValues> values(const Supply& supply)
    {
        std::array<std::int16_t, PowerCtrlManagerIf::kPowerSupplyValues> all{};
        all[4] = supply.nominal;
        all[5] = supply.overvoltageCeaseOffset;
        all[6] = supply.overvoltageRaise;
        all[7] = supply.undervoltageCeaseOffset;
        all[8] = supply.undervoltageRaise;
        return all;
    }

    void SetUp() override
    {
        HwuNodeHarness::SetUp();
        m_pUnitFactory = &m_units;
    }

    // The manager goes first, while the broker it watches is still there.
    void TearDown() override
    {
        TimerService::setHandler(nullptr);
        PowerCtrlManager::destroy();
        HwuNodeHarness::TearDown();
    }

    // The manager, its supply configuration and the units at 0 s; the
    // cabinet configured at `cabinetAtMs`, from when a pass runs every 6 s.
    void startPower(const std::vector<Unit>& units) { startPower(units, Supply{}); }
    void startPower(const std::vector<Unit>& units, const Supply& supply, std::uint32_t cabinetAtMs = 10'000)
    {
        step(0, [this, units, supply](HWU_Broker& broker) {
            PowerCtrlManager* power = PowerCtrlManager::create(broker, m_faults, {&m_events, &m_events, nullptr});
            m_units.setSides({nullptr, nullptr, nullptr, power, nullptr});
            power->setEnabled(true);
            power->updatePowerSupply(values(supply).data());
            for (const Unit& unit : units) broker.configureHwu(unit.funcId, unit.hubPosition, 0, 0);
        });
        step(cabinetAtMs, [](HWU_Broker&) { power().update(PowerCtrlManager::kCabinetConfigured); });
    }

    static PowerCtrlManager& power() { return *PowerCtrlManager::getInstance(); }
    PsuIf& psu(std::uint32_t funcInst) { return *m_pBroker->getPsu({func_type::kPsu, funcInst}); }

    HwuUnitFactory m_units;
    PowerEventRecorder m_events;
};
