#include <murvane/core/SingletonRegistry.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace Zantrix {

struct SingletonRegistry::Impl {
    struct Entry {
        std::string name;
        void* object;
        Destroy destroy;
    };

    void* find(const std::string& name) const {
        const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return e.name == name; });
        return entry == entries.end() ? nullptr : entry->object;
    }

    mutable std::mutex mutex;
    std::vector<Entry> entries;  // in order of registration
};

SingletonRegistry& SingletonRegistry::getInstance() {
    static SingletonRegistry registry;
    return registry;
}

SingletonRegistry::SingletonRegistry() : m_pImpl(new Impl) {}

SingletonRegistry::~SingletonRegistry() {
    for (auto entry = m_pImpl->entries.rbegin(); entry != m_pImpl->entries.rend(); ++entry) {
        if (entry->destroy != nullptr) {
            entry->destroy(entry->object);
        }
    }
    delete m_pImpl;
}

void* SingletonRegistry::registerObject(const char* name, void* object, Destroy destroy) {
    const std::lock_guard lock(m_pImpl->mutex);
    if (void* registered = m_pImpl->find(name)) {
        return registered;
    }
    m_pImpl->entries.push_back({name, object, destroy});
    return object;
}

void* SingletonRegistry::find(const char* name) const {
    const std::lock_guard lock(m_pImpl->mutex);
    return m_pImpl->find(name);
}

}  // namespace Zantrix
