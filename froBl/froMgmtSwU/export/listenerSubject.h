#pragma once
// Subject of the small publish and subscribe mechanism of the object layer.

#include <string>
#include <vector>

namespace listener {

class Observer;

class Subject {
public:
    enum Changed : int { Nothing = 0, IsChanged = 1, Created = 2, Deleted = 3 };

    Subject() = default;
    // A copy is watched by the same observers as the original.
    Subject(const Subject& other);
    Subject& operator=(const Subject& other);
    virtual ~Subject();

    virtual std::string className() const = 0;
    virtual void attach(Observer* observer, int kind);
    virtual void detach(Observer* observer);
    virtual void notify(int kind);

    int changed() const { return m_changed; }
    void setChanged(int changed) { m_changed = changed; }
    const std::vector<Observer*>& observers() const { return m_observers; }
    bool isAttached(const Observer* observer) const;

private:
    void attachAll(const std::vector<Observer*>& observers);
    void detachAll();

    std::vector<Observer*> m_observers;
    int m_changed = Nothing;
};

} // namespace listener
