#include "tests/system/NodeProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace systemtest {
namespace {

bool accepts(const std::string& path)
{
    int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    bool ok = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(fd);
    return ok;
}

} // namespace

NodeProcess::NodeProcess(const std::vector<std::string>& options)
{
    char pattern[] = "/tmp/ssc-system-XXXXXX";
    m_dataDir = mkdtemp(pattern);
    start(options);
}

NodeProcess::NodeProcess(const std::string& dataDir, const std::vector<std::string>& options)
    : m_dataDir(dataDir), m_ownsDataDir(false)
{
    start(options);
}

void NodeProcess::start(const std::vector<std::string>& options)
{
    m_socketPath = m_dataDir + "/ssc.sock";
    std::vector<std::string> args = {SSC_NODE_BINARY, "--data-dir", m_dataDir, "--socket", m_socketPath};
    args.insert(args.end(), options.begin(), options.end());
    m_pid = fork();
    if (m_pid == 0) {
        std::vector<char*> argv;
        for (std::string& arg : args) argv.push_back(arg.data());
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    // Waiting for another process to come up is the one wait on the wall
    // clock here; nothing is measured by it.
    for (int attempt = 0; attempt < 500 && !accepts(m_socketPath); ++attempt) {
        if (!isRunning()) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (!accepts(m_socketPath)) ADD_FAILURE() << "ssc-node did not start (" << SSC_NODE_BINARY << ")";
}

NodeProcess::~NodeProcess()
{
    if (m_pid > 0) stop();
    if (!m_ownsDataDir) return;
    std::error_code ignored;
    std::filesystem::remove_all(m_dataDir, ignored);
}

bool NodeProcess::isRunning()
{
    if (m_pid <= 0) return false;
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
        m_pid = -1;
        return false;
    }
    return true;
}

int NodeProcess::stop()
{
    return end(SIGTERM);
}

int NodeProcess::kill()
{
    return end(SIGKILL);
}

int NodeProcess::end(int signal)
{
    if (m_pid <= 0) return -1;
    ::kill(m_pid, signal);
    int status = 0;
    waitpid(m_pid, &status, 0);
    m_pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace systemtest
