#pragma once

#include <cstddef>

namespace testkit {

/// Counts the calls of the global `operator new`, from any thread, since its construction. A program that uses it has
/// its `operator new` and `delete` replaced by counting ones.
class AllocationCounter {
public:
    AllocationCounter();
    std::size_t count() const;

private:
    std::size_t m_countAtStart;
};

}  // namespace testkit
