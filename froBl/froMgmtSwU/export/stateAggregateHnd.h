#pragma once

#include "froBl/froMgmtSwU/export/aggregateCallback.h"
#include "froBl/froMgmtSwU/export/stateHnd.h"

// Hands a changed state of the other end of the link to its callback.
class StateAggregateHnd : public StateHnd {
public:
    std::string className() const override { return "StateAggregateHnd"; }
    void observerEvent(listener::Subject* subject) override;

    void setCallback(AggregateCallback* callback) { m_pCallback = callback; }

private:
    AggregateCallback* m_pCallback = nullptr; // not owned
};
