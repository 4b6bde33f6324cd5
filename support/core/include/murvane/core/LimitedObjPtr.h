#pragma once

namespace Zantrix {

/// A pointer that does not own: whoever made the object keeps it alive for as long as this is used.
template <typename T>
class LimitedObjPtr {
public:
    LimitedObjPtr() = default;
    // Implicit on purpose: handing `&object` to an operation that keeps a LimitedObjPtr is its whole use.
    LimitedObjPtr(T* object) : m_pObject(object) {}

    bool isNull() const { return m_pObject == nullptr; }
    explicit operator bool() const { return m_pObject != nullptr; }

    T* get() const { return m_pObject; }
    T& operator*() const { return *m_pObject; }
    T* operator->() const { return m_pObject; }

private:
    T* m_pObject = nullptr;
};

}  // namespace Zantrix
