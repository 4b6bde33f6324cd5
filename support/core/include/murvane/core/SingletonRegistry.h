#pragma once

#include <murvane/core/Export.h>

namespace Zantrix {

/// Process-wide objects by name. The first object registered under a name stays; later ones learn of it, so that
/// modules which each bring their own copy of a singleton end up sharing one.
class MURVANE_API SingletonRegistry {
public:
    using Destroy = void (*)(void* object);

    static SingletonRegistry& getInstance();

    SingletonRegistry(const SingletonRegistry&) = delete;
    SingletonRegistry& operator=(const SingletonRegistry&) = delete;

    /// Registers `object` unless the name is taken. Thread-safe.
    ///
    /// @param destroy  called with the object when the process ends, in reverse order of registration; may be null
    /// @return the object held under the name: `object`, then owned by the registry, or the one registered
    ///         before, and then `object` remains the caller's
    void* registerObject(const char* name, void* object, Destroy destroy);

    /// The object held under the name, or null.
    void* find(const char* name) const;

private:
    SingletonRegistry();
    ~SingletonRegistry();

    struct Impl;
    Impl* m_pImpl;
};

}  // namespace Zantrix
