#include "froBl/froMgmtSwU/export/attrNameValue.h"

#include <utility>

AttrNameValue::AttrNameValue(std::string name, std::string value, std::string type)
    : m_name(std::move(name)), m_value(std::move(value)), m_type(std::move(type))
{
}

bool AttrNameValue::operator==(const AttrNameValue& other) const
{
    return m_name == other.m_name && m_value == other.m_value && m_type == other.m_type;
}

std::string AttrNameValue::toString() const
{
    const auto orElse = [](const std::string& text, const char* empty) {
        return text.empty() ? std::string(empty) : text;
    };
    return "{ " + orElse(m_name, "noName") + ", " + orElse(m_value, "noValue") + ", " +
           orElse(m_type, "noType") + "  }";
}
