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
    // returns when its socket accepts connections. The directory goes with
    // this object.
    explicit NodeProcess(const std::vector<std::string>& options);
    // Starts ssc-node on the data directory of an earlier run, as a restart
    // of the node finds it; the directory is left where it is.
    NodeProcess(const std::string& dataDir, const std::vector<std::string>& options);
    ~NodeProcess();
    NodeProcess(const NodeProcess&) = delete;
    NodeProcess& operator=(const NodeProcess&) = delete;

    const std::string& socketPath() const { return m_socketPath; }
    const std::string& dataDir() const { return m_dataDir; }
    bool isRunning();
    // SIGTERM and wait; the exit status.
    int stop();
    // SIGKILL and wait, as a power loss would end it: nothing of the node
    // runs after the signal. The exit status (128 + 9).
    int kill();

private:
    void start(const std::vector<std::string>& options);
    int end(int signal);

    pid_t m_pid = -1;
    std::string m_dataDir;
    std::string m_socketPath;
    bool m_ownsDataDir = true;
};

} // namespace systemtest
