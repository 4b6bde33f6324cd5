#pragma once

#include <memory>

namespace Zantrix::Cli {

class Crew;

/// The threads of a crew, from oneTBB.
class Arenas {
public:
    /// @param limit  how many threads there may be at most
    explicit Arenas(unsigned limit);

    /// Ends the threads, once none is in `Crew::runThread` any more.
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
