#pragma once
// State link end of a managed object: an observer of the other end and a
// subject for it.

#include "froBl/froMgmtSwU/export/listenerObserver.h"
#include "froBl/froMgmtSwU/export/listenerSubject.h"
#include "froBl/froMgmtSwU/export/stateUserData.h"

class StateHnd : public listener::Observer, public listener::Subject {
public:
    std::string className() const override { return "StateHnd"; }
    void observerEvent(listener::Subject*) override {}

    void stateChanged(const stateUserData& data);
    const stateUserData& data() const { return m_data; }

private:
    stateUserData m_data;
};
