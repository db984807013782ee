#include "ose/EventLoop.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>

namespace ose {

EventLoop::EventLoop() : m_wakeFd(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (m_wakeFd < 0) throw std::runtime_error("cannot create the world's wake-up descriptor");
}

EventLoop::~EventLoop()
{
    close(m_wakeFd);
}

void EventLoop::post(std::function<void()> work)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_posted.push_back(std::move(work));
        m_pending.store(true, std::memory_order_release);
    }
    std::uint64_t one = 1;
    [[maybe_unused]] ssize_t n = write(m_wakeFd, &one, sizeof one);
}

void EventLoop::requestStop()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
        m_pending.store(true, std::memory_order_release);
    }
    std::uint64_t one = 1;
    [[maybe_unused]] ssize_t n = write(m_wakeFd, &one, sizeof one);
}

bool EventLoop::runPosted()
{
    if (!hasPosted()) return false;
    std::vector<std::function<void()>> work;
    bool stop = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        work.swap(m_posted);
        stop = m_stop;
        m_stop = false;
        m_pending.store(false, std::memory_order_release);
    }
    for (auto& item : work) item();
    return stop;
}

void EventLoop::watch(int fd, short events, FdCallback onReady)
{
    unwatch(fd);
    m_watches.push_back({fd, events, std::move(onReady)});
}

void EventLoop::setEvents(int fd, short events)
{
    for (Watch& w : m_watches)
        if (w.fd == fd) w.events = events;
}

void EventLoop::unwatch(int fd)
{
    m_watches.erase(std::remove_if(m_watches.begin(), m_watches.end(), [fd](const Watch& w) { return w.fd == fd; }),
                    m_watches.end());
}

bool EventLoop::wait(std::optional<std::chrono::nanoseconds> timeout)
{
    std::vector<pollfd> fds;
    fds.reserve(m_watches.size() + 1);
    fds.push_back({m_wakeFd, POLLIN, 0});
    for (const Watch& w : m_watches) fds.push_back({w.fd, w.events, 0});
    timespec limit{};
    timespec* pLimit = nullptr;
    if (timeout) {
        auto ns = std::max<std::int64_t>(0, timeout->count());
        limit.tv_sec = static_cast<time_t>(ns / 1000000000);
        limit.tv_nsec = static_cast<long>(ns % 1000000000);
        pLimit = &limit;
    }
    if (hasPosted()) { limit = {}; pLimit = &limit; } // do not sleep on work already here
    int ready = ppoll(fds.data(), fds.size(), pLimit, nullptr);
    if (ready <= 0) return hasPosted();
    if (fds[0].revents != 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] ssize_t n = read(m_wakeFd, &count, sizeof count);
    }
    for (std::size_t i = 1; i < fds.size(); ++i) {
        if (fds[i].revents == 0) continue;
        // A callback may watch or unwatch descriptors: look the watch up anew.
        auto it = std::find_if(m_watches.begin(), m_watches.end(), [&](const Watch& w) { return w.fd == fds[i].fd; });
        if (it == m_watches.end()) continue;
        FdCallback callback = it->onReady;
        callback(fds[i].revents);
    }
    return true;
}

} // namespace ose
