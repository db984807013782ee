#include "ose/Process.h"

#include <utility>

namespace ose {

Process::Process(PROCESS pid, ProcessKind kind, std::string name, Node& node, OSPRIORITY priority)
    : m_pid(pid), m_kind(kind), m_name(std::move(name)), m_pNode(&node),
      m_priority(priority > kLowestPriority ? kLowestPriority : priority)
{
    if (kind != ProcessKind::Fiber) m_state = RunState::Passive;
}

} // namespace ose
