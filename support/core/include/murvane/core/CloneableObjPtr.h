#pragma once

#include <murvane/core/Assertion.h>
#include <murvane/core/Object.h>

#include <concepts>
#include <utility>

namespace Zantrix {

/// Owns one object, or none, and clones it when copied.
///
/// A clone that turns out not to be a `T` is reported as a failed assertion and leaves the copy empty.
template <typename T>
class CloneableObjPtr {
public:
    CloneableObjPtr() = default;

    /// Takes ownership of an object whose exact type may be hidden, typically a fresh clone.
    explicit CloneableObjPtr(Cloneable* pCloneable) : m_ptr(narrow(pCloneable)) {
        Assertion((pCloneable == nullptr) || m_ptr, "(pCloneable == 0) || m_ptr", c_szSource, __LINE__);
    }

    /// The same for an object that is seen to be a `T`.
    template <std::derived_from<T> U>
    explicit CloneableObjPtr(U* pObject) noexcept : m_ptr(pObject) {}

    CloneableObjPtr(const CloneableObjPtr& aCP) : m_ptr(aCP.isNull() ? nullptr : narrow(aCP.m_ptr->clone())) {
        Assertion(aCP.isNull() || m_ptr, "aCP.isNull() || m_ptr", c_szSource, __LINE__);
    }

    CloneableObjPtr(CloneableObjPtr&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}

    CloneableObjPtr& operator=(CloneableObjPtr other) noexcept {
        std::swap(m_ptr, other.m_ptr);
        return *this;
    }

    ~CloneableObjPtr() { delete m_ptr; }

    bool isNull() const { return m_ptr == nullptr; }
    explicit operator bool() const { return m_ptr != nullptr; }

    /// The object, still owned by this pointer; null when empty.
    T* get() const { return m_ptr; }
    T& operator*() const { return *m_ptr; }
    T* operator->() const { return m_ptr; }

    /// Hands the object over to the caller and becomes empty.
    T* release() { return std::exchange(m_ptr, nullptr); }

private:
    static constexpr const char* c_szSource = "CloneableObjPtr";

    // The object as a T; one of another kind is of no use to anybody and is destroyed.
    static T* narrow(Cloneable* pCloneable) {
        T* pObject = dynamic_cast<T*>(pCloneable);
        if (pObject == nullptr) {
            delete pCloneable;
        }
        return pObject;
    }

    T* m_ptr = nullptr;
};

}  // namespace Zantrix
