#pragma once

#include "shell/Diagnostics.h"

#include <cstdint>

namespace Zantrix::Cli {

/// The rate that spectral features count on.
inline constexpr std::uint64_t c_uiTelephoneRate = 8000;

/// No recording has a higher one; windows of a minute at any rate that a header can claim would take all memory.
inline constexpr std::uint64_t c_uiHighestRate = 768000;

/// Whole samples in some time.
inline std::uint64_t samplesOf(std::uint64_t rate, std::uint64_t milliseconds) {
    return rate * milliseconds / 1000;
}

/// Warns of a rate at which frequencies are not what they seem.
void warnOfRate(std::uint64_t rate, Diagnostics& diagnostics);

}  // namespace Zantrix::Cli
