#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CallProgress {

/// Windows are 64 ms long, so that 440 and 480 Hz stand apart in their spectra, and start every 16 ms. What is said of
/// a window holds for the 16 ms in its middle.
constexpr int c_iWindowMs = 64;
constexpr int c_iStepMs = 16;

/// Kinds of windows beside the tones.
constexpr int c_iSilence = -1;
constexpr int c_iOther = -2;

/// What a window of a recording is.
struct Window {
    int kind = c_iSilence;  ///< the index of a tone in `allTones`, or one of the two above
    double level = 0.0;     ///< mean square of what a telephone line carries, full scale 1
    double flatness = 0.0;  ///< within narrow bands, whatever the colour: near 0.55 for noise, 0 for harmonics
};

/// Classifies all windows of a mono recording at 8000 Hz. What is left at the end, less than a step, belongs to none.
///
/// @param error  on failure, what is wrong with the recording
/// @return nothing when it cannot be read, has another rate, or is shorter than a window
std::optional<std::vector<Window>> classifyWindows(const std::string& path, std::string& error);

}  // namespace CallProgress
