// Compiled without the thread sanitizer, which sees no order in what the library hands from thread to thread. Nothing
// but a reference goes that way; all else is handed over by the crew.
#include "batch/Arenas.h"

#include "batch/Crew.h"

#include <deque>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>

namespace Zantrix::Cli {

struct Arenas::Impl {
    explicit Impl(unsigned limit) : limit(tbb::global_control::max_allowed_parallelism, limit) {}

    tbb::task_scheduler_handle handle{tbb::attach{}};
    tbb::global_control limit;
    std::deque<tbb::task_arena> arenas;
};

Arenas::Arenas(unsigned limit) : m_pImpl(std::make_unique<Impl>(limit + 1)) {}  // and the thread that starts them

// Threads of the library's that outlive `main` use what the process destroys at its end, and crash now and then. To
// wait until they have stopped looking for work takes a small run half a millisecond.
Arenas::~Arenas() {
    m_pImpl->arenas.clear();
    tbb::finalize(m_pImpl->handle, std::nothrow);
}

void Arenas::start(unsigned count, Crew& crew) {
    tbb::task_arena& arena = m_pImpl->arenas.emplace_back(static_cast<int>(count), 0U);
    for (unsigned i = 0; i < count; ++i) {
        arena.enqueue([&crew] { crew.runThread(); });
    }
}

}  // namespace Zantrix::Cli
