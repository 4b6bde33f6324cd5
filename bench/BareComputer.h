#pragma once

#include "BareFeatures.h"
#include "BareInput.h"
#include "BenchAudio.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

/// A list of features computed by plain loops, and the analysis of a file with them.
namespace Zantrix::Bench {

inline constexpr std::size_t c_uiMaxGroup = 8;

/// Computes the spectrum of windows, then features of it, then features of the samples, into a plain row per window.
template <typename OfSpectrum, typename OfSamples>
class BareComputer {
public:
    /// @param isSpectrumKept  whether rows begin with the spectrum
    BareComputer(bool isSpectrumKept, OfSpectrum ofSpectrum, OfSamples ofSamples)
        : m_uiSkipped(isSpectrumKept ? 0 : c_uiBinCount),
          m_ofSpectrum(std::move(ofSpectrum)),
          m_ofSamples(std::move(ofSamples)),
          m_vRows(c_uiMaxGroup * c_uiStride),
          m_vScratch(Audio::spectrumScratchSize(c_uiWindowSize)) {}

    void compute(std::span<const double* const> windows) {
        if (windows.size() == 1) {
            BareSpectrum()({windows[0], c_uiWindowSize}, start(0));
        } else {
            std::array<double*, c_uiMaxGroup> spectra;
            for (std::size_t i = 0; i < windows.size(); ++i) {
                spectra[i] = start(i);
            }
            Audio::powerSpectra(windows, weights().data(), c_uiWindowSize, {spectra.data(), windows.size()},
                                m_vScratch);
        }
        for (std::size_t i = 0; i < windows.size(); ++i) {
            const Input spectrum(start(i), c_uiBinCount);
            const Input samples(windows[i], c_uiWindowSize);
            double* end = start(i) + c_uiBinCount;
            std::apply([&](auto&... feature) { ((end = feature(spectrum, end)), ...); }, m_ofSpectrum);
            std::apply([&](auto&... feature) { ((end = feature(samples, end)), ...); }, m_ofSamples);
            m_uiRowEnd = static_cast<std::size_t>(end - start(i));
        }
    }

    /// Of the last computation.
    const double* row(std::size_t i) const { return &m_vRows[i * c_uiStride + m_uiSkipped]; }
    std::size_t rowSize() const { return m_uiRowEnd - m_uiSkipped; }

private:
    // A spectrum is made in the places of its samples; the values of all features are fewer.
    static constexpr std::size_t c_uiStride = 2 * c_uiWindowSize;

    double* start(std::size_t i) { return &m_vRows[i * c_uiStride]; }

    std::size_t m_uiSkipped;
    OfSpectrum m_ofSpectrum;
    OfSamples m_ofSamples;
    std::vector<double> m_vRows;
    std::vector<double> m_vScratch;
    std::size_t m_uiRowEnd = 0;
};

/// Computes every window of a file, eight at a time.
///
/// @param visit  called with each row's values, their number, and the time of the window's end
template <typename Computer, typename Visit>
void analyseBare(const std::string& path, Computer& computer, Visit visit) {
    std::array<std::array<double, c_uiWindowSize>, c_uiMaxGroup> windows;
    std::array<const double*, c_uiMaxGroup> addresses;
    std::array<double, c_uiMaxGroup> times;
    std::size_t count = 0;
    const auto compute = [&] {
        computer.compute({addresses.data(), count});
        for (std::size_t i = 0; i < count; ++i) {
            visit(computer.row(i), computer.rowSize(), times[i]);
        }
        count = 0;
    };
    cutBare(path, 16 * c_uiWindowSize, [&](const double* window, double time) {
        std::copy_n(window, c_uiWindowSize, windows[count].begin());
        addresses[count] = windows[count].data();
        times[count] = time;
        if (++count == c_uiMaxGroup) {
            compute();
        }
    });
    if (count > 0) {
        compute();
    }
}

}  // namespace Zantrix::Bench
