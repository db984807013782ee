#include "ose/SignalPool.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "ose/Sanitizer.h"

#if defined(OSE_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#define OSE_POISON(p, n) ASAN_POISON_MEMORY_REGION((p), (n))
#define OSE_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION((p), (n))
#else
#define OSE_POISON(p, n) ((void)(p), (void)(n))
#define OSE_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace ose {
namespace {

constexpr unsigned kSmallestClassShift = 5; // 32 bytes
constexpr unsigned kClassCount = 22;        // up to 64 MiB

constexpr OSBUFSIZE classSize(unsigned index)
{
    return OSBUFSIZE{1} << (kSmallestClassShift + index);
}
static_assert(classSize(kClassCount - 1) == SignalPool::kMaxSize);

unsigned classOf(OSBUFSIZE size)
{
    unsigned index = 0;
    while (classSize(index) < size) ++index;
    return index;
}

struct Pool {
    std::mutex mutex;
    std::array<SignalHeader*, kClassCount> freeLists{};
    std::size_t live = 0;
};

Pool& pool()
{
    static Pool* p = new Pool; // never destroyed: buffers may be freed during static destruction
    return *p;
}

} // namespace

Signal* SignalPool::allocate(OSBUFSIZE size, SIGSELECT sigNo)
{
    if (size > kMaxSize) return nullptr;
    if (size < kMinSize) size = kMinSize;
    unsigned index = classOf(size);
    Pool& p = pool();
    SignalHeader* header = nullptr;
    {
        std::lock_guard<std::mutex> lock(p.mutex);
        header = p.freeLists[index];
        if (header != nullptr) p.freeLists[index] = header->next;
        ++p.live;
    }
    if (header == nullptr) {
        void* memory = std::malloc(sizeof(SignalHeader) + classSize(index));
        if (memory == nullptr) throw std::bad_alloc();
        header = static_cast<SignalHeader*>(memory);
    }
    OSE_UNPOISON(header->signal(), classSize(index));
    header->state = SignalHeader::kLive;
    header->sizeClass = index;
    header->size = size;
    header->sender = 0;
    header->addressee = 0;
    header->next = nullptr;
    std::memset(static_cast<void*>(header->signal()), 0, size);
    header->signal()->sigNo = sigNo;
    return header->signal();
}

bool SignalPool::isLive(const Signal* signal)
{
    return signal != nullptr && SignalHeader::of(signal)->state == SignalHeader::kLive;
}

bool SignalPool::release(Signal* signal)
{
    if (!isLive(signal)) return false;
    SignalHeader* header = SignalHeader::of(signal);
    header->state = SignalHeader::kFree;
    OSE_POISON(header->signal(), classSize(header->sizeClass));
    Pool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    header->next = p.freeLists[header->sizeClass];
    p.freeLists[header->sizeClass] = header;
    --p.live;
    return true;
}

std::size_t SignalPool::liveCount()
{
    Pool& p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return p.live;
}

} // namespace ose
