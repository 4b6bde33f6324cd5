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

std::map<std::string, std::int64_t> MemAccount::snapshot() {
    const std::lock_guard lock(accounts().mutex);
    std::map<std::string, std::int64_t> live;
    for (const auto& [name, pAccount] : accounts().byName) {
        live.emplace(name, pAccount->live());
    }
    return live;
}

}  // namespace Zantrix
