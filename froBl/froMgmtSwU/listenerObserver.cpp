#include "froBl/froMgmtSwU/export/listenerObserver.h"

#include "froBl/froMgmtSwU/export/listenerSubject.h"

#include <algorithm>

namespace listener {

Observer::~Observer()
{
    while (!m_subjects.empty()) {
        Subject* subject = m_subjects.back();
        m_subjects.pop_back();
        subject->detach(this);
    }
}

void Observer::unlinkSubject(Subject* subject)
{
    const auto it = std::find(m_subjects.begin(), m_subjects.end(), subject);
    if (it != m_subjects.end())
        m_subjects.erase(it);
}

} // namespace listener
