#pragma once

#include <murvane/core/Export.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <new>
#include <string>

namespace Zantrix {

/// A named account of heap memory. Classes route their own `operator new` and `delete` to one, so that a program
/// can ask at any time how many of their objects live. Thread-safe; an account is never destroyed.
class MURVANE_API MemAccount {
public:
    /// The account of that name, opened on first use; always the same object for the same name.
    static MemAccount& named(const char* name);

    /// Live allocations of each account opened so far.
    static std::map<std::string, std::int64_t> snapshot();

    MemAccount() = default;
    MemAccount(const MemAccount&) = delete;
    MemAccount& operator=(const MemAccount&) = delete;

    /// @throws std::bad_alloc
    void* allocate(std::size_t size);

    /// The same, but null where there is no memory.
    void* allocate(std::size_t size, const std::nothrow_t& nothrow) noexcept;

    /// Returns memory of this account; null is ignored. The size, where the caller knows it, may be passed along.
    void deallocate(void* memory, std::size_t size = 0) noexcept;

    /// Allocations not yet returned.
    std::int64_t live() const { return m_iLive.load(std::memory_order_relaxed); }

private:
    std::atomic<std::int64_t> m_iLive{0};
};

}  // namespace Zantrix

/// Goes into the public part of a class: its objects are allocated from the account `accountName`, which
/// `getMemAccountName()` tells. Derived classes inherit the account.
#define MURVANE_MEM_ACCOUNT(accountName)                                                   \
    static const char* getMemAccountName() {                                               \
        return accountName;                                                                \
    }                                                                                      \
    static ::Zantrix::MemAccount& getMemAccount() {                                        \
        static ::Zantrix::MemAccount& account = ::Zantrix::MemAccount::named(accountName); \
        return account;                                                                    \
    }                                                                                      \
    static void* operator new(std::size_t size) {                                          \
        return getMemAccount().allocate(size);                                             \
    }                                                                                      \
    static void* operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {  \
        return getMemAccount().allocate(size, nothrow);                                    \
    }                                                                                      \
    static void* operator new(std::size_t, void* place) noexcept {                         \
        return place;                                                                      \
    }                                                                                      \
    static void* operator new[](std::size_t size) {                                        \
        return getMemAccount().allocate(size);                                             \
    }                                                                                      \
    static void operator delete(void* memory, std::size_t size) noexcept {                 \
        getMemAccount().deallocate(memory, size);                                          \
    }                                                                                      \
    static void operator delete(void* memory, const std::nothrow_t&) noexcept {            \
        getMemAccount().deallocate(memory);                                                \
    }                                                                                      \
    static void operator delete(void*, void*) noexcept {}                                  \
    static void operator delete[](void* memory) noexcept {                                 \
        getMemAccount().deallocate(memory);                                                \
    }
