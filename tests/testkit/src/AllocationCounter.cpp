#include <testkit/AllocationCounter.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_allocations{0};

void* nonNull(void* memory) {
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

// All forms, as the address sanitizer's runtime has its own of every one that does not stand here. The standard
// library's would come down to a few.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size > 0 ? size : 1);
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    const auto unit = static_cast<std::size_t>(alignment);
    const std::size_t units = size > 0 ? (size - 1) / unit + 1 : 1;
    return std::aligned_alloc(unit, units * unit);
}

void* operator new(std::size_t size) {
    return nonNull(::operator new(size, std::nothrow));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return nonNull(::operator new(size, alignment, std::nothrow));
}

void* operator new[](std::size_t size) {
    return ::operator new(size);
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
    return ::operator new(size, alignment);
}

void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return ::operator new(size, nothrow);
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t& nothrow) noexcept {
    return ::operator new(size, alignment, nothrow);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace testkit {

AllocationCounter::AllocationCounter() : m_countAtStart(g_allocations.load()) {}

std::size_t AllocationCounter::count() const {
    return g_allocations.load() - m_countAtStart;
}

}  // namespace testkit
