#pragma once
// The object of every class without a controller of its own, and the shadow
// of an object in a transaction.

#include "froBl/froMgmtSwU/export/fRO.h"

#include <string>

class dummy_fRO : public fRO {
public:
    explicit dummy_fRO(std::string moType) : m_moType(std::move(moType)) {}
    std::string className() const override { return m_moType; }

private:
    std::string m_moType;
};
