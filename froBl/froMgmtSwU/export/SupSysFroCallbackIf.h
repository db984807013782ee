#pragma once
// How a controller answers the management handler when a snapshot read or
// an action it started has finished.

#include <cstdint>
#include <string>
#include <vector>

class fRO;

class SupSysFroCallbackIf {
public:
    struct ActionResult {
        bool success = false;
        std::uint32_t failureCode = 0;
        // The action answered: an object may have actions of several names
        // waiting.
        std::string actionName;
        // The action's output.
        std::vector<std::string> names;
        std::vector<std::string> values;
        std::vector<std::string> types;
        std::string errorText;
    };

    virtual void snapshotDone(fRO* fro) = 0;
    virtual void actionDone(fRO* fro, const ActionResult& result) = 0;
    virtual ~SupSysFroCallbackIf() = default;
};
