#pragma once

#include <murvane/core/MemAccount.h>

#include <cstdint>
#include <new>
#include <utility>

namespace Zantrix {

/// Shares one object among handles; the last handle deletes it.
///
/// The count is a separate 32-bit number from the memory account "ReferenceCount". It is not atomic: handles to
/// one object belong to one thread.
template <typename T>
class RefCountedObjPtr {
public:
    RefCountedObjPtr() = default;

    /// Takes ownership of `object`, with a count of 1; null makes an empty handle.
    explicit RefCountedObjPtr(T* object) : m_pObject(object) {
        if (object != nullptr) {
            try {
                m_pCount = new (account().allocate(sizeof(std::uint32_t))) std::uint32_t(1);
            } catch (...) {
                delete object;
                throw;
            }
        }
    }

    RefCountedObjPtr(const RefCountedObjPtr& other) : m_pObject(other.m_pObject), m_pCount(other.m_pCount) {
        if (m_pCount != nullptr) {
            ++*m_pCount;
        }
    }

    RefCountedObjPtr(RefCountedObjPtr&& other) noexcept
        : m_pObject(std::exchange(other.m_pObject, nullptr)), m_pCount(std::exchange(other.m_pCount, nullptr)) {}

    RefCountedObjPtr& operator=(RefCountedObjPtr other) noexcept {
        std::swap(m_pObject, other.m_pObject);
        std::swap(m_pCount, other.m_pCount);
        return *this;
    }

    ~RefCountedObjPtr() {
        if (m_pCount != nullptr && --*m_pCount == 0) {
            account().deallocate(m_pCount, sizeof(std::uint32_t));
            delete m_pObject;
        }
    }

    bool isNull() const { return m_pObject == nullptr; }
    explicit operator bool() const { return m_pObject != nullptr; }

    T* get() const { return m_pObject; }
    T& operator*() const { return *m_pObject; }
    T* operator->() const { return m_pObject; }

    /// How many handles share the object; 0 for an empty handle.
    std::uint32_t useCount() const { return m_pCount == nullptr ? 0 : *m_pCount; }

private:
    static MemAccount& account() {
        static MemAccount& account = MemAccount::named("ReferenceCount");
        return account;
    }

    T* m_pObject = nullptr;
    std::uint32_t* m_pCount = nullptr;
};

}  // namespace Zantrix
