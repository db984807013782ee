#pragma once
// What every unit wrapper does: it owns its unit object, starts it, and
// shows it through the unit's interface.

#include "hwu/HwuStatusIf.h"

#include <memory>
#include <utility>

template <typename Interface, typename Unit>
class HwuWrapper : public Interface {
public:
    template <typename... Args>
    explicit HwuWrapper(Args&&... args) : m_pUnit(std::make_unique<Unit>(std::forward<Args>(args)...))
    {
        m_pUnit->initObject();
    }

    bool isAvailable() const override { return m_pUnit->isAvailable(); }
    const FuncId_t& getFuncId() const override { return m_pUnit->getFuncId(); }
    std::uint32_t getPort() const override { return m_pUnit->getPort(); }
    std::uint32_t getHdlcAddress() const override { return m_pUnit->getHdlcAddress(); }
    const std::string& getHubPosition() const override { return m_pUnit->getHubPosition(); }
    bool isSameFuncId(const FuncId_t& funcId) const override { return m_pUnit->isSameFuncId(funcId); }
    void reset() override { m_pUnit->reset(); }
    bool getProductData(HwuProductRecord* record) override { return m_pUnit->getProductData(record); }
    std::uint32_t getOperationalLedState() const override { return m_pUnit->getOperationalLedState(); }
    std::uint32_t getFaultLedState() const override { return m_pUnit->getFaultLedState(); }
    bool isCommunicating() const override { return m_pUnit->isCommunicating(); }

    Unit& unit() { return *m_pUnit; }

protected:
    std::unique_ptr<Unit> m_pUnit;
};
