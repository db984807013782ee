#pragma once

#include "froBl/froMgmtSwU/export/propagateCallback.h"
#include "froBl/froMgmtSwU/export/stateHnd.h"

// Hands a changed state of the other end of the link to its callback.
class StatePropagateHnd : public StateHnd {
public:
    std::string className() const override { return "StatePropagateHnd"; }
    void observerEvent(listener::Subject* subject) override;

    void setCallback(PropagateCallback* callback) { m_pCallback = callback; }

private:
    PropagateCallback* m_pCallback = nullptr; // not owned
};
