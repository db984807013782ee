#include "froBl/froMgmtSwU/export/fRO.h"

#include "froBl/froMgmtSwU/export/froIdHandler.h"
#include "froBl/froMgmtSwU/export/froMgr.h"
#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/ldn.h"
#include "ose/Format.h"

#include <algorithm>

using namespace fro_trace;

fRO::fRO() = default;

fRO::~fRO()
{
    if (m_pIdHandler && m_internalId >= 0)
        m_pIdHandler->freeFroId(m_froType, m_internalId);
}

void fRO::setIdentity(std::uint32_t froType, std::int32_t internalId, froIdHandler* idHandler)
{
    m_froType = froType;
    m_internalId = internalId;
    m_pIdHandler = idHandler;
}

std::int32_t fRO::getExternalId() const
{
    return froIdHandler::toExternalId(m_internalId);
}

fRO* fRO::findParent() const
{
    if (!m_pTable)
        return nullptr;
    const std::string parentLdn = Ldn::parent(m_pTable->getLdn(m_internalId));
    return parentLdn.empty() ? nullptr : m_pTable->getFro(parentLdn);
}

void fRO::connectStates(const froMgr& table)
{
    m_propagateHnd.setCallback(this);
    m_aggregateHnd.setCallback(this);
    m_pTable = &table;
    fRO* parent = findParent();
    if (!parent)
        return;
    parent->m_propagateHnd.attach(&m_propagateHnd, 1);
    m_aggregateHnd.attach(&parent->m_aggregateHnd, 1);
    SSC_TRACE(froGroup(), kFlow, "Observer is attached.");
}

void fRO::disconnectStates()
{
    if (fRO* parent = findParent()) {
        parent->m_propagateHnd.detach(&m_propagateHnd);
        m_aggregateHnd.detach(&parent->m_aggregateHnd);
    }
    m_pTable = nullptr;
}

std::string fRO::getVirtualAttribute(const std::string&) const
{
    return {};
}

std::string fRO::getVirtualAttributeType(const std::string&) const
{
    return {};
}

void fRO::getVirtualAttributeNames(std::vector<std::string>&) const {}

void fRO::addAttribute(const std::string& name, const std::string& value, const std::string& type)
{
    if (!hasAttribute(name))
        m_attributes.emplace_back(name, value, type);
}

bool fRO::setAttribute(const std::string& name, const std::string& value)
{
    AttrNameValue* attribute = findAttribute(name);
    if (!attribute)
        return false;
    if (attribute->value() != value) {
        attribute->setChanged(IsChanged);
        setChanged(IsChanged);
    }
    attribute->setValue(value);
    attribute->notify(1);
    notify(1);
    return true;
}

bool fRO::setAttribute(const std::string& name, bool value)
{
    return setAttribute(name, std::string(value ? "1" : "0"));
}

bool fRO::setAttribute(const std::string& name, const char* value)
{
    return setAttribute(name, std::string(value ? value : ""));
}

bool fRO::setAttribute(const std::string& name, std::int32_t value)
{
    return setAttribute(name, ose::format("%d", value));
}

bool fRO::setAttribute(const std::string& name, std::uint32_t value)
{
    return setAttribute(name, ose::format("%u", value));
}

bool fRO::setAttribute(const std::string& name, std::int16_t value)
{
    return setAttribute(name, ose::format("%d", value));
}

bool fRO::setAttribute(const std::string& name, std::uint16_t value)
{
    return setAttribute(name, ose::format("%d", value));
}

bool fRO::setAttribute(const std::string& name, std::int8_t value)
{
    return setAttribute(name, ose::format("%d", value));
}

bool fRO::setAttribute(const std::string& name, std::uint8_t value)
{
    return setAttribute(name, ose::format("%u", value));
}

bool fRO::isAttribute(const std::string& name, const std::string& value) const
{
    return getAttribute(name) == value;
}

bool fRO::isAttribute(const std::string& name, bool value) const
{
    return isAttribute(name, std::string(value ? "1" : "0"));
}

bool fRO::isAttribute(const std::string& name, const char* value) const
{
    return isAttribute(name, std::string(value ? value : ""));
}

bool fRO::isAttribute(const std::string& name, std::int32_t value) const
{
    return isAttribute(name, ose::format("%d", value));
}

bool fRO::isAttribute(const std::string& name, std::uint32_t value) const
{
    return isAttribute(name, ose::format("%u", value));
}

bool fRO::isAttribute(const std::string& name, std::int16_t value) const
{
    return isAttribute(name, ose::format("%d", value));
}

bool fRO::isAttribute(const std::string& name, std::uint16_t value) const
{
    return isAttribute(name, ose::format("%d", value));
}

bool fRO::isAttribute(const std::string& name, std::int8_t value) const
{
    return isAttribute(name, ose::format("%d", value));
}

bool fRO::isAttribute(const std::string& name, std::uint8_t value) const
{
    return isAttribute(name, ose::format("%u", value));
}

void fRO::attributeChanged(const std::string&, const std::string&, const std::string&) {}

const AttrNameValue* fRO::findAttribute(const std::string& name) const
{
    const auto it = std::find_if(m_attributes.begin(), m_attributes.end(),
                                 [&](const AttrNameValue& a) { return a.name() == name; });
    return it == m_attributes.end() ? nullptr : &*it;
}

AttrNameValue* fRO::findAttribute(const std::string& name)
{
    return const_cast<AttrNameValue*>(static_cast<const fRO*>(this)->findAttribute(name));
}

std::string fRO::getAttribute(const std::string& name) const
{
    const AttrNameValue* attribute = findAttribute(name);
    return attribute ? attribute->value() : getVirtualAttribute(name);
}

std::string fRO::getAttributeType(const std::string& name) const
{
    const AttrNameValue* attribute = findAttribute(name);
    return attribute ? attribute->type() : getVirtualAttributeType(name);
}

bool fRO::hasAttribute(const std::string& name) const
{
    if (findAttribute(name))
        return true;
    std::vector<std::string> names;
    getVirtualAttributeNames(names);
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::vector<std::string> fRO::getAttributeNames() const
{
    std::vector<std::string> names;
    for (const AttrNameValue& attribute : m_attributes)
        names.push_back(attribute.name());
    getVirtualAttributeNames(names);
    return names;
}

void fRO::clearChanged()
{
    for (AttrNameValue& attribute : m_attributes) {
        attribute.notify(0);
        attribute.setChanged(Nothing);
    }
    notify(0);
    setChanged(Nothing);
}

void fRO::tellObserversGone(listener::Subject& subject)
{
    subject.setChanged(Deleted);
    // An observer's event may detach others: only those still attached hear it.
    const std::vector<listener::Observer*> observers = subject.observers();
    for (listener::Observer* observer : observers)
        if (observer && subject.isAttached(observer))
            observer->observerEvent(&subject);
}

void fRO::clearListeners()
{
    for (AttrNameValue& attribute : m_attributes)
        tellObserversGone(attribute);
    tellObserversGone(*this);
    disconnectStates();
}
