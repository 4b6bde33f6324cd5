#pragma once

#include <memory>

namespace Zantrix::Cli {

class Crew;

/// The threads of a crew, from oneTBB: it keeps a process to the processors that it may use, starts threads only when
/// there is work, and shares them with whatever else in the process uses it.
class Arenas {
public:
    /// @param limit  how many threads there may be at most
    explicit Arenas(unsigned limit);

    /// Waits until the threads have ended. None may be in `Crew::runThread` any more.
    ~Arenas();

    Arenas(const Arenas&) = delete;
    Arenas& operator=(const Arenas&) = delete;

    /// Has `count` threads call `Crew::runThread`. No more are started than have something to do.
    void start(unsigned count, Crew& crew);

private:
    struct Impl;

    std::unique_ptr<Impl> m_pImpl;
};

}  // namespace Zantrix::Cli
