#pragma once
// An ssc-node started as its own Linux process for a system test, reached
// only through its gateway socket.

#include <string>
#include <sys/types.h>
#include <vector>

namespace systemtest {

class NodeProcess {
public:
    // Starts ssc-node with a fresh data directory and the given extra options;
    // returns when its socket accepts connections.
    explicit NodeProcess(const std::vector<std::string>& options);
    ~NodeProcess();
    NodeProcess(const NodeProcess&) = delete;
    NodeProcess& operator=(const NodeProcess&) = delete;

    const std::string& socketPath() const { return m_socketPath; }
    const std::string& dataDir() const { return m_dataDir; }
    bool isRunning();
    // SIGTERM and wait; the exit status.
    int stop();

private:
    pid_t m_pid = -1;
    std::string m_dataDir;
    std::string m_socketPath;
};

} // namespace systemtest
