#pragma once
// One attribute of a managed object: name, value as text and type word.

#include "froBl/froMgmtSwU/export/listenerSubject.h"

#include <string>

class AttrNameValue : public listener::Subject {
public:
    AttrNameValue() = default;
    AttrNameValue(std::string name, std::string value, std::string type);

    std::string className() const override { return "AttrNameValue"; }

    const std::string& name() const { return m_name; }
    const std::string& value() const { return m_value; }
    const std::string& type() const { return m_type; }
    void setValue(const std::string& value) { m_value = value; }

    bool operator==(const AttrNameValue& other) const;
    // "{ name, value, type  }" with noName, noValue, noType for empty texts.
    std::string toString() const;

private:
    std::string m_name;
    std::string m_value;
    std::string m_type;
};
