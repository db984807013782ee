#include "froBl/froMgmtSwU/export/listenerSubject.h"

#include "froBl/froMgmtSwU/export/froTrace.h"
#include "froBl/froMgmtSwU/export/listenerObserver.h"

#include <algorithm>

namespace listener {

Subject::Subject(const Subject& other) : m_changed(other.m_changed)
{
    attachAll(other.m_observers);
}

Subject& Subject::operator=(const Subject& other)
{
    if (this != &other) {
        detachAll();
        attachAll(other.m_observers);
        m_changed = other.m_changed;
    }
    return *this;
}

Subject::~Subject()
{
    for (Observer* observer : m_observers)
        if (observer)
            observer->unlinkSubject(this);
}

void Subject::attachAll(const std::vector<Observer*>& observers)
{
    // Registered with the observer too, so that its end detaches the copy.
    for (Observer* observer : observers) {
        m_observers.push_back(observer);
        if (observer)
            observer->linkSubject(this);
    }
}

void Subject::detachAll()
{
    while (!m_observers.empty())
        detach(m_observers.back());
}

void Subject::attach(Observer* observer, int kind)
{
    if (!observer || std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end())
        return;
    m_observers.push_back(observer);
    observer->linkSubject(this);
    observer->setKind(kind);
}

void Subject::detach(Observer* observer)
{
    const auto it = std::find(m_observers.begin(), m_observers.end(), observer);
    if (it == m_observers.end())
        return;
    m_observers.erase(it);
    if (observer)
        observer->unlinkSubject(this);
}

bool Subject::isAttached(const Observer* observer) const
{
    return std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end();
}

void Subject::notify(int kind)
{
    if (m_changed == Nothing)
        return;
    bool allMatched = true;
    // An observer may detach itself, or another, in its event: walk a copy
    // and call only those still attached.
    const std::vector<Observer*> observers = m_observers;
    for (Observer* observer : observers) {
        if (!isAttached(observer))
            continue;
        if (observer && observer->kind() == kind) {
            SSC_TRACE(fro_trace::froGroup(), fro_trace::kFlow, "Calling the observerEvent.");
            observer->observerEvent(this);
        } else {
            allMatched = false;
        }
    }
    if (allMatched)
        m_changed = Nothing;
}

} // namespace listener
