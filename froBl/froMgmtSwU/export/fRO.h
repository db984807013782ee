#pragma once
// A managed object: class number, internal id and a list of named, typed
// attributes whose values are kept as text. Its name (ldn) is the key under
// which the object table holds it.

#include "froBl/froMgmtSwU/export/aggregateCallback.h"
#include "froBl/froMgmtSwU/export/attrNameValue.h"
#include "froBl/froMgmtSwU/export/listenerObserver.h"
#include "froBl/froMgmtSwU/export/listenerSubject.h"
#include "froBl/froMgmtSwU/export/propagateCallback.h"
#include "froBl/froMgmtSwU/export/stateAggregateHnd.h"
#include "froBl/froMgmtSwU/export/statePropagateHnd.h"

#include <cstdint>
#include <string>
#include <vector>

class froIdHandler;
class froMgr;

class fRO : public listener::Observer,
            public listener::Subject,
            public PropagateCallback,
            public AggregateCallback {
public:
    fRO();
    fRO(const fRO&) = delete;
    fRO& operator=(const fRO&) = delete;
    // Gives the internal id back to the id handler that gave it.
    ~fRO() override;

    void observerEvent(listener::Subject*) override {}

    // Links the object's state handlers with those of its parent in table.
    virtual void connectStates(const froMgr& table);
    virtual void disconnectStates();

    virtual std::string getVirtualAttribute(const std::string& name) const;
    virtual std::string getVirtualAttributeType(const std::string& name) const;
    virtual void getVirtualAttributeNames(std::vector<std::string>& names) const;

    // Appends unless the object has the name already.
    virtual void addAttribute(const std::string& name, const std::string& value, const std::string& type);

    // Only stored attributes can be set. The typed forms convert to text and
    // call the string form, so overriding that one changes them all.
    virtual bool setAttribute(const std::string& name, const std::string& value);
    virtual bool setAttribute(const std::string& name, bool value);
    virtual bool setAttribute(const std::string& name, const char* value);
    virtual bool setAttribute(const std::string& name, std::int32_t value);
    virtual bool setAttribute(const std::string& name, std::uint32_t value);
    virtual bool setAttribute(const std::string& name, std::int16_t value);
    virtual bool setAttribute(const std::string& name, std::uint16_t value);
    virtual bool setAttribute(const std::string& name, std::int8_t value);
    virtual bool setAttribute(const std::string& name, std::uint8_t value);

    virtual bool isAttribute(const std::string& name, const std::string& value) const;
    virtual bool isAttribute(const std::string& name, bool value) const;
    virtual bool isAttribute(const std::string& name, const char* value) const;
    virtual bool isAttribute(const std::string& name, std::int32_t value) const;
    virtual bool isAttribute(const std::string& name, std::uint32_t value) const;
    virtual bool isAttribute(const std::string& name, std::int16_t value) const;
    virtual bool isAttribute(const std::string& name, std::uint16_t value) const;
    virtual bool isAttribute(const std::string& name, std::int8_t value) const;
    virtual bool isAttribute(const std::string& name, std::uint8_t value) const;

    virtual void attributeChanged(const std::string& name, const std::string& oldValue,
                                  const std::string& newValue);
    void propagate(const stateUserData&) override {}
    void aggregate(const stateUserData&) override {}

    std::int32_t getInternalId() const { return m_internalId; }
    std::uint32_t getFroType() const { return m_froType; }
    std::int32_t getExternalId() const;

    std::string getAttribute(const std::string& name) const;
    std::string getAttributeType(const std::string& name) const;
    bool hasAttribute(const std::string& name) const;
    std::vector<std::string> getAttributeNames() const;
    AttrNameValue* findAttribute(const std::string& name);
    const AttrNameValue* findAttribute(const std::string& name) const;
    const std::vector<AttrNameValue>& attributes() const { return m_attributes; }

    void clearChanged();
    // Tells every observer that the object goes, then unlinks the states.
    void clearListeners();

    // For the factory and the id owner.
    void setIdentity(std::uint32_t froType, std::int32_t internalId, froIdHandler* idHandler);
    void setInternalId(std::int32_t internalId) { m_internalId = internalId; }

    StatePropagateHnd& propagateHnd() { return m_propagateHnd; }
    StateAggregateHnd& aggregateHnd() { return m_aggregateHnd; }

private:
    fRO* findParent() const;
    static void tellObserversGone(listener::Subject& subject);

    StatePropagateHnd m_propagateHnd;
    StateAggregateHnd m_aggregateHnd;
    std::int32_t m_internalId = -1;
    std::uint32_t m_froType = 0;
    std::vector<AttrNameValue> m_attributes;
    froIdHandler* m_pIdHandler = nullptr;   // not owned
    const froMgr* m_pTable = nullptr;       // not owned; set while connected
};
