#include "froBl/froMgmtSwU/export/commitLists.h"

#include <algorithm>
#include <array>

namespace {

struct State {
    bool running = false;
    std::array<std::vector<std::string>, 3> lists;
};

State& state()
{
    static State commit;
    return commit;
}

} // namespace

bool commitLists::isCommitRunning()
{
    return state().running;
}

bool commitLists::isInCommit(int kind, const std::string& ldn)
{
    if (kind < Created || kind > Deleted)
        return false;
    const auto& list = state().lists[static_cast<std::size_t>(kind)];
    return std::find(list.begin(), list.end(), ldn) != list.end();
}

void commitLists::begin()
{
    state().running = true;
}

void commitLists::add(Kind kind, const std::vector<std::string>& ldns)
{
    auto& list = state().lists[static_cast<std::size_t>(kind)];
    list.insert(list.end(), ldns.begin(), ldns.end());
}

void commitLists::end()
{
    state().running = false;
    for (auto& list : state().lists)
        list.clear();
}
