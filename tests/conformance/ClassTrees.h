#pragma once

// What the checks of class trees and virtual tables share.
#include <murvane/core/Object.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace class_trees {

/// D has exactly one B, and it can be reached.
template <class D, class B>
constexpr bool hasOne = std::is_base_of_v<B, D>&& std::is_convertible_v<D*, B*>;

template <class D, class B>
constexpr bool hasNo = !std::is_base_of_v<B, D>;

/// D has exactly one B, by virtual inheritance somewhere on the way: no cast leads back from such a base.
template <class D, class B>
constexpr bool hasOneVirtual = hasOne<D, B> && !requires(B * base) {
    static_cast<D*>(base);
};

/// D has exactly one B and every step on the way to it is ordinary inheritance.
template <class D, class B>
constexpr bool hasOneOrdinary = hasOne<D, B>&& requires(B* base) {
    static_cast<D*>(base);
};

/// What every interface is: the bases shared, and no state.
template <class I>
constexpr bool isInterface = std::is_abstract_v<I>&& hasOneVirtual<I, Zantrix::Object> &&
                             sizeof(I) <= 2 * sizeof(void*);

template <class T>
constexpr bool isCopyable = std::is_copy_constructible_v<T>&& std::is_copy_assignable_v<T>;

/// Where a virtual operation stands in its table, in entries. Only differences within one table mean something.
template <typename Operation>
std::ptrdiff_t slotOf(Operation operation) {
    std::ptrdiff_t offset = 0;
    static_assert(sizeof(operation) >= sizeof(offset));
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

}  // namespace class_trees
