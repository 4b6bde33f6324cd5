#pragma once

#include <cstddef>
#include <span>

namespace Zantrix::Audio {

/// The normalised power spectrum of one weighted window of n samples, in place: its n/2 values stand in the first n/2
/// places afterwards, the places behind hold nothing of meaning.
///
/// Value k is the share of term k of the forward real transform in the total power of the terms 0 .. n/2-1. Silence
/// (a total of exactly 0) is left as zeros. If the total is not a number, so is every value: the same quiet NaN.
/// A length that is not a power of two is reported by `Math::realFourierTransform` and computed all the same.
///
/// Allocates nothing, but for the first window of its size in the process and for lengths that are not powers of two.
void powerSpectrum(std::span<double> values);

/// One way to compute the spectra of several windows side by side.
struct SpectrumKernel {
    /// The instruction set, for reports.
    const char* name;
    /// How many windows it takes at a time.
    std::size_t lanes;
    /// Computes the spectra of `lanes` windows of n samples, n a power of two and at least twice `lanes`.
    void (*compute)(const double* const* windows, const double* weights, std::size_t n, double* const* spectra,
                    double* scratch);
};

/// The kernels that this processor can run, the preferred one first; at least one, of two lanes.
std::span<const SpectrumKernel> spectrumKernels();

/// The lanes of the widest kernel of any processor: windows are best handed over in groups of as many.
inline constexpr std::size_t c_uiWidestLanes = 8;

/// How many places of scratch `powerSpectra` needs for windows of n samples.
constexpr std::size_t spectrumScratchSize(std::size_t n) {
    constexpr std::size_t c_uiAlignmentSlack = c_uiWidestLanes - 1;
    return c_uiWidestLanes * n + c_uiAlignmentSlack;
}

/// The normalised power spectra of any number of windows of n samples. Each equals, to the bit, what `powerSpectrum`
/// makes of that window's samples times the weights, whatever windows stand beside it and whichever kernels are used.
///
/// Several windows at a time is several times as fast as one by one.
///
/// @param windows  the windows, n samples each; they may overlap one another, not the spectra or the scratch
/// @param weights  n weights: sample i of every window counts times weight i
/// @param n        samples per window, any number
/// @param spectra  for each window in turn where its n/2 values go; not overlapping one another
/// @param scratch  at least `spectrumScratchSize(n)` places of no meaning before or after
/// @param kernels  in order of preference; the windows that are too few for any of them are computed one by one
void powerSpectra(std::span<const double* const> windows, const double* weights, std::size_t n,
                  std::span<double* const> spectra, std::span<double> scratch,
                  std::span<const SpectrumKernel> kernels = spectrumKernels());

}  // namespace Zantrix::Audio
