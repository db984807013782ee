#pragma once
// Observer of the small publish and subscribe mechanism of the object layer.

#include <vector>

namespace listener {

class Subject;

class Observer {
public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer();

    virtual void observerEvent(Subject* subject) = 0;

    // One kind for the observer, the one given at the last attach.
    int kind() const { return m_kind; }
    const std::vector<Subject*>& subjects() const { return m_subjects; }

private:
    friend class Subject;
    void linkSubject(Subject* subject) { m_subjects.push_back(subject); }
    void unlinkSubject(Subject* subject);
    void setKind(int kind) { m_kind = kind; }

    std::vector<Subject*> m_subjects;
    int m_kind = 0;
};

} // namespace listener
