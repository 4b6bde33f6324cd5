#pragma once

#include <murvane/core/Export.h>

#include <iosfwd>

/// The root interfaces. Nearly every class inherits them virtually, so they hold no state and are
/// default-constructible.
///
///     Object
///     ├── Cloneable         clone()
///     ├── Resettable        reset()
///     └── OutputStreamable  write(), and with it operator<<
namespace Zantrix {

/// Root of the class tree: whoever owns an object may delete it through any of its bases.
class MURVANE_API Object {
public:
    Object() = default;
    Object(const Object&) = default;
    Object& operator=(const Object&) = default;
    virtual ~Object() = default;
};

/// An object that can copy itself without the caller knowing its type.
class MURVANE_API Cloneable : public virtual Object {
public:
    /// A new copy in the same state; the caller owns it and deletes it. Null when the type cannot be copied.
    virtual Cloneable* clone() const = 0;
};

/// An object with a memory that can be brought back to its initial state.
class MURVANE_API Resettable : public virtual Object {
public:
    /// Forgets everything since construction, configuration kept. False when that is not possible.
    virtual bool reset() = 0;
};

/// An object that can print itself.
class MURVANE_API OutputStreamable : public virtual Object {
public:
    /// Writes the object with the stream's current formatting and returns the stream.
    virtual std::ostream& write(std::ostream& os) const = 0;
};

/// Prints any `OutputStreamable` through its `write`.
MURVANE_API std::ostream& operator<<(std::ostream& os, const OutputStreamable& object);

}  // namespace Zantrix
