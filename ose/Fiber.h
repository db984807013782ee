#pragma once
// A fiber: a stack of its own and a saved machine context. The world switches
// from its scheduler into a fiber and the fiber switches back when its process
// blocks. Stacks have a guard page below them, so an overflow faults at once
// instead of writing over a neighbour.

#include <cstddef>

namespace ose {

class Fiber {
public:
    using Entry = void (*)(void* argument);

    // The smallest stack given to a process: stack sizes in the system's
    // tables were written for a 32-bit target and are minimums here.
    static constexpr std::size_t kMinStackSize =
#if defined(SSC_SANITIZE)
        1024 * 1024;
#else
        256 * 1024;
#endif

    Fiber(std::size_t stackSize, Entry entry, void* argument);
    ~Fiber();
    Fiber(const Fiber&) = delete;
    Fiber& operator=(const Fiber&) = delete;

    // From the scheduler: run the fiber until it suspends or finishes.
    void resume();
    // From inside the fiber: back to the scheduler.
    void suspend();
    // From inside the fiber, for the last time: its stack may be freed after.
    [[noreturn]] void finish();
    // From inside this fiber: straight into `next`, which has run before and
    // is suspended, without a turn through the scheduler. The way back to the
    // scheduler goes over to `next`. Only where a hand-written switch exists.
    void switchTo(Fiber& next);
    static constexpr bool kCanSwitchDirectly =
#if defined(__x86_64__)
        true;
#else
        false;
#endif

    bool isFinished() const { return m_finished; }

private:
    static void start(void* self);
    static void startFromContext(unsigned high, unsigned low); // ucontext entry
    void switchOut(bool last);
    // After this fiber was switched into: tells AddressSanitizer the switch
    // is over, and learns the scheduler's stack when that is where it came from.
    void arrived();

    void* m_stack = nullptr;
    std::size_t m_mappedSize = 0;
    void* m_stackBottom = nullptr; // lowest usable byte
    std::size_t m_stackSize = 0;
    Entry m_entry;
    void* m_argument;
    bool m_finished = false;

    void* m_fiberSp = nullptr;
    void* m_schedulerSp = nullptr;
    [[maybe_unused]] void* m_context = nullptr; // ucontext pair where no hand-written switch exists

    // Bookkeeping for AddressSanitizer's view of the stack switches.
    [[maybe_unused]] void* m_fiberFakeStack = nullptr;
    [[maybe_unused]] void* m_schedulerFakeStack = nullptr;
    const void* m_schedulerBottom = nullptr;
    std::size_t m_schedulerSize = 0;
    bool m_fromScheduler = true; // the last switch into this fiber came from the scheduler
};

} // namespace ose
