#pragma once

/// Ctrl-C and its kin: the work ends in order, with temporaries removed, instead of at once.
namespace Zantrix::Cli::Interrupt {

/// From now on SIGINT, SIGTERM and SIGHUP only set a flag, and a closed pipe is an error of `write` like any other.
/// Whoever waits is woken up. A signal that comes two seconds after the first ends the program on the spot.
void install();

/// Whether a signal asked to stop.
bool requested();

}  // namespace Zantrix::Cli::Interrupt
