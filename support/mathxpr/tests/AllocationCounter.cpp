// A source of its own: where the compiler sees through the replaced operators it takes them for mismatched.
#include "AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_uiAllocations{0};

}  // namespace

std::size_t countAllocations() {
    return g_uiAllocations;
}

void* operator new(std::size_t size) {
    ++g_uiAllocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

// Not forwarded to the one above by every runtime.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++g_uiAllocations;
    return std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
