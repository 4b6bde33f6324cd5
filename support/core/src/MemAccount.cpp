#include <murvane/core/MemAccount.h>

#include <mutex>

namespace Zantrix {

namespace {

struct Accounts {
    std::mutex mutex;
    std::map<std::string, MemAccount*> byName;
};

// Never destroyed: objects may be returned to their account by static destructors.
Accounts& accounts() {
    static auto& accounts = *new Accounts;
    return accounts;
}

}  // namespace

MemAccount& MemAccount::named(const char* name) {
    const std::lock_guard lock(accounts().mutex);
    MemAccount*& pAccount = accounts().byName[name];
    if (pAccount == nullptr) {
        pAccount = new MemAccount;
    }
    return *pAccount;
}

// None is inline: a compiler that sees through one operator of a pair but not the other takes them for mismatched.
void* MemAccount::allocate(std::size_t size) {
    void* memory = ::operator new(size);
    m_iLive.fetch_add(1, std::memory_order_relaxed);
    return memory;
}

void* MemAccount::allocate(std::size_t size, const std::nothrow_t& nothrow) noexcept {
    void* memory = ::operator new(size, nothrow);
    if (memory != nullptr) {
        m_iLive.fetch_add(1, std::memory_order_relaxed);
    }
    return memory;
}

void MemAccount::deallocate(void* memory, std::size_t) noexcept {
    if (memory != nullptr) {
        m_iLive.fetch_sub(1, std::memory_order_relaxed);
        ::operator delete(memory);
    }
}

std::map<std::string, std::int64_t> MemAccount::snapshot() {
    const std::lock_guard lock(accounts().mutex);
    std::map<std::string, std::int64_t> live;
    for (const auto& [name, pAccount] : accounts().byName) {
        live.emplace(name, pAccount->live());
    }
    return live;
}

}  // namespace Zantrix
