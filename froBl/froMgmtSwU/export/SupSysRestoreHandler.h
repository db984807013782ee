#pragma once
// The restore at start of this system: units and nodes first, so that what
// hangs on them finds them, and each controller brings the rest of the
// system up to date once all objects exist. Made on the stack for the one
// restore at start; it holds nothing of its own.

#include "froBl/froMgmtSwU/export/RestoreHandlerGenericBase.h"

#include <vector>

class SupSysRestoreHandler : public RestoreHandlerGenericBase {
public:
    using RestoreHandlerGenericBase::RestoreHandlerGenericBase;

    // The order of recreation: the equipment support function, the first
    // cabinet, the external nodes in reverse, the hardware units in reverse
    // led by SUP1, then all others as read.
    static void sortForRecreation(std::vector<froRecord>& records);

protected:
    void beforeCreate(std::int32_t froId, std::uint32_t froType, const std::string& ldn,
                      std::vector<std::string>& names, std::vector<std::string>& values,
                      std::vector<std::string>& types) override;
    // A controller's restore(); other objects have nothing to do.
    void afterAllCreated(fRO& fro) override;
    void sort(std::vector<froRecord>& records) override;
};
