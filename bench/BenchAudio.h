#pragma once

#include <murvane/math/DoubleVector.h>

#include <cstddef>
#include <string>
#include <vector>

/// What the benchmarks compute on: telephone audio of our own making, 16 bits at 8000 Hz. Two tones, weak noise, two
/// other tones and loud noise take turns, a second each.
namespace Zantrix::Bench {

inline constexpr std::size_t c_uiSampleRate = 8000;
inline constexpr std::size_t c_uiWindowMs = 32;
inline constexpr std::size_t c_uiOverlapMs = 16;
inline constexpr std::size_t c_uiWindowSize = c_uiSampleRate * c_uiWindowMs / 1000;
inline constexpr std::size_t c_uiHop = c_uiWindowSize - c_uiSampleRate * c_uiOverlapMs / 1000;
inline constexpr std::size_t c_uiBinCount = c_uiWindowSize / 2;
inline constexpr double c_dHopSeconds = static_cast<double>(c_uiHop) / c_uiSampleRate;

/// A file of this name in a folder that goes away when the program ends.
std::string temporaryFile(const std::string& name);

/// A WAV file of so many seconds, made when it is first asked for.
const std::string& audioFile(std::size_t seconds);

/// Consecutive windows from all kinds of signal; few enough to stay in the cache, as windows do that come from a
/// reader.
const std::vector<Math::DoubleVector>& windows();

/// The normalised power spectra of `windows()`.
const std::vector<Math::DoubleVector>& spectra();

/// One value for each of `windows()`.
const std::vector<Math::DoubleVector>& singleValues();

/// The Hann window of a window's length.
const std::vector<double>& weights();

}  // namespace Zantrix::Bench
