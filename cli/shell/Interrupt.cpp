#include "shell/Interrupt.h"

#include "Command.h"

#include <csignal>
#include <ctime>
#include <unistd.h>

namespace Zantrix::Cli::Interrupt {

namespace {

volatile std::sig_atomic_t g_bRequested = 0;
std::time_t g_firstTime = 0;  // written before the flag is set, read only when it is

std::time_t now() {
    struct timespec time {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

// Only what is safe in a signal handler.
void onSignal(int) {
    if (g_bRequested == 0) {
        g_firstTime = now();
        g_bRequested = 1;
    } else if (now() - g_firstTime >= 2) {
        ::_exit(Interrupted);
    }
}

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
    action.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &action, nullptr);
}

bool requested() {
    return g_bRequested != 0;
}

}  // namespace Zantrix::Cli::Interrupt
