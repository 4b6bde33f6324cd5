#include <testkit/AllocationCounter.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_allocations{0};

}  // namespace

// The other forms of new and delete all come down to these: but for the one below, whose version in the address
// sanitizer's runtime does not.
void* operator new(std::size_t size) {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size > 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace testkit {

AllocationCounter::AllocationCounter() : m_countAtStart(g_allocations.load()) {}

std::size_t AllocationCounter::count() const {
    return g_allocations.load() - m_countAtStart;
}

}  // namespace testkit
