#pragma once
// A real object of a persistent class is a controller: the object and its
// link to the rest of the system. A commit calls it through traniInterface;
// the management handler asks it for fresh values before a get and hands it
// actions. An object that is not a controller has neither.

#include "froBl/froMgmtSwU/export/SupSysFroCallbackIf.h"
#include "froBl/froMgmtSwU/export/fRO.h"
#include "froBl/froMgmtSwU/export/traniInterface.h"

#include <string>
#include <vector>

class SupSysFroCtrlIf : public traniInterface, public fRO {
public:
    struct ActionLists {
        std::vector<std::string> names;
        std::vector<std::string> values;
        std::vector<std::string> types;
    };

    std::string className() const override { return "SupSysFroCtrlIf"; }
    // After the object was made again from the database at start.
    virtual void restore() {}
    // True when the action runs and `callback` will be told; false with
    // errorText when it could not be started.
    virtual bool performAction(const std::string& actionName, const ActionLists& lists, std::string& errorText,
                               SupSysFroCallbackIf* callback) = 0;
    // True when fresh values are being read and `callback` will be told;
    // false when the object has nothing to read.
    virtual bool snapshotRequest(SupSysFroCallbackIf* callback) = 0;
};
