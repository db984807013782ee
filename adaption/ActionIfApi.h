#pragma once
// Actions on managed objects: the name becomes an action of the object's
// interface, is sent to the core, and the core's answer comes back to the
// callback that asked.

#include "froBl/froMgmtSwU/export/SupSysFroCallbackIf.h"
#include "froBl/froMgmtSwU/export/SupSysFroCtrlIf.h"

#include <string>

class fRO;

class ActionFroCallbackIf {
public:
    virtual void actionDone(const SupSysFroCallbackIf::ActionResult& result) = 0;
    virtual ~ActionFroCallbackIf() = default;
};

class ActionIfApi {
public:
    virtual ~ActionIfApi() = default;
    // True when the action was sent and `callback` will be told.
    virtual bool perform(fRO* fro, const std::string& actionName, const SupSysFroCtrlIf::ActionLists& lists,
                         ActionFroCallbackIf* callback) = 0;
};
