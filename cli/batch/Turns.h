#pragma once

#include "batch/Crew.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <optional>

namespace Zantrix::Cli {

/// The order of inputs among threads that work on several of them at once: whatever is done in turn is done by one
/// thread at a time, and in the order of the inputs.
///
/// A thread takes the next input, works on it, and passes on what remains to be done. That waits for its turn, and so
/// can a thread. As inputs are taken in order, the one whose turn it is has a thread that need not wait for anybody.
class Turns {
public:
    /// @param ahead  how many inputs may be taken before the first of them is done
    Turns(Crew& crew, std::size_t inputs, std::size_t ahead);

    /// The next input, once there is room for it; nothing when all are taken, or after `stop`.
    std::optional<std::size_t> take();

    /// Whether the inputs before this one are done. To be asked until it has come, by the thread that works on it.
    bool hasCome(std::size_t input) const { return m_uiCurrent.load(std::memory_order_acquire) == input; }

    /// Waits until the turn of an input has come; false after `stop`.
    bool await(std::size_t input);

    /// Ends the work on an input.
    ///
    /// @param finish  called once when its turn has come, by this thread or another one
    void pass(std::size_t input, std::function<void()> finish);

    /// Nothing more is taken or finished, and nobody waits any longer.
    void stop();

    bool isStopped() const { return m_bStopped; }

    /// How many inputs are done, from the first on.
    std::size_t done() const { return m_uiCurrent; }

private:
    Crew& m_crew;
    const std::size_t m_uiInputs;
    const std::size_t m_uiAhead;
    std::size_t m_uiNext = 0;                  // to be taken; under the lock of `Crew::wait`
    std::atomic<std::size_t> m_uiCurrent = 0;  // whose turn it is
    std::atomic<bool> m_bStopped = false;
    std::mutex m_mutex;  // guards what follows
    std::map<std::size_t, std::function<void()>> m_waiting;
};

}  // namespace Zantrix::Cli
