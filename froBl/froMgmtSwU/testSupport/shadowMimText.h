#pragma once
// The mim text that the management handler gives the database for an object
// created in a transaction: the shadow's attributes without the
// transaction's own state.

#include "froBl/froMgmtSwU/export/fRO.h"
#include "froBl/froMgmtSwU/export/transMgr.h"
#include "froBl/froMgmtSwU/export/xmlHandler.h"

#include <string>
#include <vector>

inline bool shadowMimText(const fRO& shadow, const std::string& ldn, std::string& xml)
{
    std::vector<std::string> names, types, values;
    for (const AttrNameValue& a : shadow.attributes()) {
        if (a.name() == transMgr::kTransState)
            continue;
        names.push_back(a.name());
        types.push_back(a.type());
        values.push_back(a.value());
    }
    return xmlHandler::instance().build(ldn, "1.0", names, types, values, xml);
}
