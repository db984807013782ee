#pragma once
// How a world waits when none of its processes is ready: for the next
// time-out, for work posted from other threads, and for file descriptors
// (the gateway's sockets) that it watches. Everything it calls back runs on
// the world's thread, between the runs of processes.

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace ose {

class EventLoop {
public:
    using FdCallback = std::function<void(short revents)>;

    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    // Thread-safe.
    void post(std::function<void()> work);
    void requestStop();

    // Runs posted work; true when a stop was requested.
    bool runPosted();
    bool hasPosted() const { return m_pending.load(std::memory_order_acquire); }

    void watch(int fd, short events, FdCallback onReady);
    void setEvents(int fd, short events);
    void unwatch(int fd);
    bool watchesAny() const { return !m_watches.empty(); }

    // Waits at most `timeout` (none: without end) for a watched descriptor or
    // posted work, and calls the callbacks of ready descriptors. True when
    // something happened before the time was up.
    bool wait(std::optional<std::chrono::nanoseconds> timeout);

private:
    struct Watch {
        int fd;
        short events;
        FdCallback onReady;
    };

    int m_wakeFd = -1;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_posted;
    bool m_stop = false;
    std::atomic<bool> m_pending{false};
    std::vector<Watch> m_watches;
};

} // namespace ose
