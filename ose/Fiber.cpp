#include "ose/Fiber.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

#include "ose/Sanitizer.h"

#if defined(OSE_ADDRESS_SANITIZER)
#include <sanitizer/common_interface_defs.h>
#define OSE_ASAN_FIBERS 1
#endif

#if !defined(__x86_64__)
#include <ucontext.h>
#endif

namespace ose {

#if defined(__x86_64__)
extern "C" void ose_fiber_switch(void** saveSp, void* newSp);
extern "C" void ose_fiber_trampoline();
#else
namespace {
struct ContextPair {
    ucontext_t scheduler;
    ucontext_t fiber;
};
} // namespace
#endif

namespace {

std::size_t pageSize()
{
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

std::size_t roundUp(std::size_t value, std::size_t unit)
{
    return (value + unit - 1) / unit * unit;
}

} // namespace

Fiber::Fiber(std::size_t stackSize, Entry entry, void* argument) : m_entry(entry), m_argument(argument)
{
    m_stackSize = roundUp(stackSize < kMinStackSize ? kMinStackSize : stackSize, pageSize());
    m_mappedSize = m_stackSize + pageSize();
    m_stack = mmap(nullptr, m_mappedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (m_stack == MAP_FAILED) throw std::bad_alloc();
    mprotect(m_stack, pageSize(), PROT_NONE); // the guard page
    m_stackBottom = static_cast<char*>(m_stack) + pageSize();
    char* top = static_cast<char*>(m_stackBottom) + m_stackSize;

#if defined(__x86_64__)
    // The frame that ose_fiber_switch pops: control words, r15..r12, rbx,
    // rbp, and the return address that enters the trampoline.
    auto* frame = reinterpret_cast<std::uint64_t*>(top - 72);
    std::memset(frame, 0, 72);
    std::uint16_t fpuControl = 0x037F;
    std::uint32_t sseControl = 0x1F80;
    std::memcpy(frame, &fpuControl, sizeof fpuControl);
    std::memcpy(reinterpret_cast<char*>(frame) + 8, &sseControl, sizeof sseControl);
    frame[2 + 3] = reinterpret_cast<std::uint64_t>(this);                 // r12
    frame[2 + 4] = reinterpret_cast<std::uint64_t>(&Fiber::start);        // rbx
    frame[2 + 5] = 0;                                                     // rbp
    frame[2 + 6] = reinterpret_cast<std::uint64_t>(&ose_fiber_trampoline); // return address
    m_fiberSp = frame;
#else
    auto* pair = new ContextPair;
    m_context = pair;
    getcontext(&pair->fiber);
    pair->fiber.uc_stack.ss_sp = m_stackBottom;
    pair->fiber.uc_stack.ss_size = m_stackSize;
    pair->fiber.uc_link = nullptr;
    auto address = reinterpret_cast<std::uintptr_t>(this);
    makecontext(&pair->fiber, reinterpret_cast<void (*)()>(&Fiber::startFromContext), 2,
                static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
#endif
}

Fiber::~Fiber()
{
#if !defined(__x86_64__)
    delete static_cast<ContextPair*>(m_context);
#endif
    munmap(m_stack, m_mappedSize);
}

void Fiber::start(void* self)
{
    auto* fiber = static_cast<Fiber*>(self);
#if defined(OSE_ASAN_FIBERS)
    __sanitizer_finish_switch_fiber(nullptr, &fiber->m_schedulerBottom, &fiber->m_schedulerSize);
#endif
    fiber->m_entry(fiber->m_argument);
    fiber->finish();
}

void Fiber::startFromContext(unsigned high, unsigned low)
{
    auto address = (static_cast<std::uintptr_t>(high) << 32) | low;
    start(reinterpret_cast<void*>(address));
}

void Fiber::resume()
{
    m_fromScheduler = true;
#if defined(OSE_ASAN_FIBERS)
    __sanitizer_start_switch_fiber(&m_schedulerFakeStack, m_stackBottom, m_stackSize);
#endif
#if defined(__x86_64__)
    ose_fiber_switch(&m_schedulerSp, m_fiberSp);
#else
    auto* pair = static_cast<ContextPair*>(m_context);
    swapcontext(&pair->scheduler, &pair->fiber);
#endif
#if defined(OSE_ASAN_FIBERS)
    __sanitizer_finish_switch_fiber(m_schedulerFakeStack, nullptr, nullptr);
#endif
}

void Fiber::switchOut(bool last)
{
#if defined(OSE_ASAN_FIBERS)
    __sanitizer_start_switch_fiber(last ? nullptr : &m_fiberFakeStack, m_schedulerBottom, m_schedulerSize);
#endif
#if defined(__x86_64__)
    ose_fiber_switch(&m_fiberSp, m_schedulerSp);
#else
    auto* pair = static_cast<ContextPair*>(m_context);
    swapcontext(&pair->fiber, &pair->scheduler);
#endif
    arrived();
    (void)last;
}

void Fiber::switchTo(Fiber& next)
{
#if defined(__x86_64__)
    next.m_schedulerSp = m_schedulerSp;
    next.m_schedulerBottom = m_schedulerBottom;
    next.m_schedulerSize = m_schedulerSize;
    next.m_fromScheduler = false;
#if defined(OSE_ASAN_FIBERS)
    __sanitizer_start_switch_fiber(&m_fiberFakeStack, next.m_stackBottom, next.m_stackSize);
#endif
    ose_fiber_switch(&m_fiberSp, next.m_fiberSp);
    arrived();
#else
    (void)next;
    std::abort(); // callers check kCanSwitchDirectly
#endif
}

void Fiber::arrived()
{
#if defined(OSE_ASAN_FIBERS)
    const void* fromBottom = nullptr;
    std::size_t fromSize = 0;
    __sanitizer_finish_switch_fiber(m_fiberFakeStack, &fromBottom, &fromSize);
    if (m_fromScheduler) {
        m_schedulerBottom = fromBottom;
        m_schedulerSize = fromSize;
    }
#endif
}

void Fiber::suspend()
{
    switchOut(false);
}

void Fiber::finish()
{
    m_finished = true;
    switchOut(true);
    std::abort(); // a finished fiber is never resumed
}

} // namespace ose
