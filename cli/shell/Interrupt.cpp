#include "shell/Interrupt.h"

#include "Command.h"

#include <atomic>
#include <ctime>
#include <unistd.h>

namespace Zantrix::Cli::Interrupt {

namespace {

// Nothing happens to a process that gets one of these by accident.
constexpr int c_iWakeSignal = SIGURG;

std::atomic<bool> g_bRequested = false;
std::atomic<std::time_t> g_firstTime = 0;  // written before the flag is set, read only when it is
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<std::time_t>::is_always_lock_free);

std::time_t now() {
    struct timespec time {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

// Only what is safe in a signal handler.
void onSignal(int) {
    if (!g_bRequested) {
        g_firstTime = now();
        g_bRequested = true;
    } else if (now() - g_firstTime >= 2) {
        ::_exit(Interrupted);
    }
}

void onWake(int) {}

}  // namespace

void install() {
    struct sigaction action {};
    ::sigemptyset(&action.sa_mask);
    // Without SA_RESTART: a write to a pipe that nobody reads returns.
    action.sa_handler = onSignal;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
    struct sigaction hangup {};
    ::sigaction(SIGHUP, nullptr, &hangup);
    if (hangup.sa_handler != SIG_IGN) {  // ignored under nohup
        ::sigaction(SIGHUP, &action, nullptr);
    }
    action.sa_handler = onWake;
    ::sigaction(c_iWakeSignal, &action, nullptr);
    action.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &action, nullptr);
}

bool requested() {
    return g_bRequested;
}

void wake(pthread_t thread) {
    ::pthread_kill(thread, c_iWakeSignal);
}

Shield::Shield() {
    sigset_t blocked;
    ::sigfillset(&blocked);
    ::sigdelset(&blocked, c_iWakeSignal);
    ::pthread_sigmask(SIG_SETMASK, &blocked, &m_previous);
}

Shield::~Shield() {
    ::pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
}

}  // namespace Zantrix::Cli::Interrupt
