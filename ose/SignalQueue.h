#pragma once
// The queue of signals of one process, in arrival order. A receive takes the
// first signal that its selector (and, if given, its sender) accepts; the
// others stay where they are.

#include "ose/Signal.h"
#include "ose/SignalPool.h"

#include <cstddef>

namespace ose {

// A selector checked against its length: a count beyond the numbers given is
// cut to them (the caller is told, so that it can trace the bad use).
class SelectorView {
public:
    explicit SelectorView(Selector selector);

    bool accepts(SIGSELECT sigNo) const;
    bool wasTruncated() const { return m_truncated; }

private:
    Selector m_numbers;
    bool m_allBut = false;
    bool m_any = false;
    bool m_truncated = false;
};

class SignalQueue {
public:
    SignalQueue() = default;
    SignalQueue(const SignalQueue&) = delete;
    SignalQueue& operator=(const SignalQueue&) = delete;
    ~SignalQueue();

    void push(Signal* signal);
    // The first signal accepted by the selector and from `from` (0: any sender).
    Signal* take(const SelectorView& selector, PROCESS from = 0);
    bool contains(const SelectorView& selector, PROCESS from = 0) const;
    // Frees every queued signal.
    void clear();
    std::size_t size() const { return m_count; }
    bool empty() const { return m_count == 0; }

private:
    static bool matches(const SignalHeader* header, const SelectorView& selector, PROCESS from);

    SignalHeader* m_head = nullptr;
    SignalHeader* m_tail = nullptr;
    std::size_t m_count = 0;
};

} // namespace ose
