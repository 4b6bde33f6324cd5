#pragma once

#include <csignal>
#include <pthread.h>

/// Ctrl-C and its kin: the work ends in order, with temporaries removed, instead of at once.
namespace Zantrix::Cli::Interrupt {

/// From now on SIGINT, SIGTERM and SIGHUP only set a flag, and a closed pipe is an error of `write` like any other.
/// Whoever waits is woken up. A signal that comes two seconds after the first ends the program on the spot.
void install();

/// Whether a signal asked to stop.
bool requested();

/// Has a system call in which another thread waits return, as a signal does in the thread that it reaches.
void wake(pthread_t thread);

/// Signals are for the thread that leads the work: threads that are started while one of these exists take none but
/// that of `wake`.
class Shield {
public:
    Shield();
    ~Shield();
    Shield(const Shield&) = delete;
    Shield& operator=(const Shield&) = delete;

private:
    sigset_t m_previous{};
};

}  // namespace Zantrix::Cli::Interrupt
