#include "ose/SignalQueue.h"

#include <cstdint>

namespace ose {

SelectorView::SelectorView(Selector selector)
{
    if (selector.empty()) {
        m_any = true;
        m_truncated = true;
        return;
    }
    auto count = static_cast<std::int32_t>(selector[0]);
    m_allBut = count < 0;
    std::size_t wanted = m_allBut ? static_cast<std::size_t>(-static_cast<std::int64_t>(count))
                                  : static_cast<std::size_t>(count);
    std::size_t available = selector.size() - 1;
    if (wanted > available) {
        m_truncated = true;
        wanted = available;
    }
    m_numbers = selector.subspan(1, wanted);
    m_any = count == 0;
}

bool SelectorView::accepts(SIGSELECT sigNo) const
{
    if (m_any) return true;
    for (SIGSELECT number : m_numbers)
        if (number == sigNo) return !m_allBut;
    return m_allBut;
}

SignalQueue::~SignalQueue()
{
    clear();
}

void SignalQueue::push(Signal* signal)
{
    SignalHeader* header = SignalHeader::of(signal);
    header->next = nullptr;
    if (m_tail != nullptr) m_tail->next = header;
    else m_head = header;
    m_tail = header;
    ++m_count;
}

bool SignalQueue::matches(const SignalHeader* header, const SelectorView& selector, PROCESS from)
{
    const Signal* signal = reinterpret_cast<const Signal*>(header + 1);
    return selector.accepts(signal->sigNo) && (from == 0 || header->sender == from);
}

Signal* SignalQueue::take(const SelectorView& selector, PROCESS from)
{
    SignalHeader* previous = nullptr;
    for (SignalHeader* header = m_head; header != nullptr; previous = header, header = header->next) {
        if (!matches(header, selector, from)) continue;
        if (previous != nullptr) previous->next = header->next;
        else m_head = header->next;
        if (m_tail == header) m_tail = previous;
        header->next = nullptr;
        --m_count;
        return header->signal();
    }
    return nullptr;
}

bool SignalQueue::contains(const SelectorView& selector, PROCESS from) const
{
    for (const SignalHeader* header = m_head; header != nullptr; header = header->next)
        if (matches(header, selector, from)) return true;
    return false;
}

void SignalQueue::clear()
{
    while (m_head != nullptr) {
        SignalHeader* header = m_head;
        m_head = header->next;
        SignalPool::release(header->signal());
    }
    m_tail = nullptr;
    m_count = 0;
}

} // namespace ose
