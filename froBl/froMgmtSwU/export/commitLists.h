#pragma once
// What the running commit touches, by kind, and whether a commit runs at
// all: the configuration flow asks while the controllers work.

#include <string>
#include <vector>

class commitLists {
public:
    enum Kind : int { Created = 0, Set = 1, Deleted = 2 };

    static bool isCommitRunning();
    static bool isInCommit(int kind, const std::string& ldn);

    // For the commit itself.
    static void begin();
    static void add(Kind kind, const std::vector<std::string>& ldns);
    static void end();
};

inline bool isCommitRunning()
{
    return commitLists::isCommitRunning();
}

inline bool isInCommit(int kind, const std::string& ldn)
{
    return commitLists::isInCommit(kind, ldn);
}
