#pragma once

#include "BenchAudio.h"
#include "features/EnergyArithmetic.h"
#include "features/HarmonicProductArithmetic.h"
#include "features/LowFreqEnergyRatioArithmetic.h"
#include "features/NeighbourhoodArithmetic.h"
#include "features/PeakArithmetic.h"
#include "features/SilenceRatioArithmetic.h"
#include "features/SpectralRangeArithmetic.h"
#include "features/SpectralShapeArithmetic.h"
#include "features/SpectrumKernels.h"
#include "features/SpectrumReduction.h"
#include "features/ZeroCrossingArithmetic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The features without their classes: the same arithmetic from plain arrays to plain arrays. Each is called with its
/// input and the place for its values, and returns the end of those.
namespace Zantrix::Bench {

using Input = std::span<const double>;

inline constexpr std::size_t c_uiCandidateCount = (c_uiBinCount - 1) / 5 + 1;

struct BareCopy {
    double* operator()(Input in, double* out) const { return std::copy(in.begin(), in.end(), out); }
};

struct BareMean {
    double* operator()(Input in, double* out) const {
        double sum = 0.0;
        for (const double value : in) {
            sum += value;
        }
        *out = sum / static_cast<double>(in.size());
        return out + 1;
    }
};

struct BareTemporalMean {
    double* operator()(Input in, double* out) {
        ++count;
        for (std::size_t i = 0; i < in.size(); ++i) {
            sums[i] += in[i];
            out[i] = sums[i] / static_cast<double>(count);
        }
        return out + in.size();
    }
    std::array<double, c_uiBinCount> sums{};
    std::uint64_t count = 0;
};

/// The last five of single values.
struct BareSlidingWindow {
    double* operator()(Input in, double* out) {
        if (count == last.size()) {
            std::copy(last.begin() + 1, last.end(), last.begin());
            --count;
        }
        last[count++] = in[0];
        return std::copy_n(last.begin(), count, out);
    }
    std::array<double, 5> last{};
    std::size_t count = 0;
};

struct BareDeltaToSlidingMean {
    double* operator()(Input in, double* out) {
        std::array<double, 5> last;
        const double* const end = window(in, last.data());
        double mean = 0.0;
        BareMean()({last.data(), end}, &mean);
        *out = in[0] - mean;
        return out + 1;
    }
    BareSlidingWindow window;
};

struct BareRange {
    double* operator()(Input in, double* out) const { return std::copy_n(in.begin() + start, length, out); }
    std::size_t start;
    std::size_t length;
};

/// Needs as many places in `out` as there are samples, of which the second half is scratch.
struct BareSpectrum {
    double* operator()(Input in, double* out) const {
        const double* const w = weights().data();
        for (std::size_t i = 0; i < in.size(); ++i) {
            out[i] = in[i] * w[i];
        }
        Audio::powerSpectrum({out, in.size()});
        return out + in.size() / 2;
    }
};

struct BareReducedSpectrum {
    double* operator()(Input in, double* out) const {
        const double* const end = BareSpectrum()(in, out);
        return out + Audio::reduceSpectrum({out, static_cast<std::size_t>(end - out)}, bands);
    }
    std::size_t bands;
};

struct BareFlatness {
    double* operator()(Input in, double* out) const {
        Audio::flatness<double>(in, *out);
        return out + 1;
    }
};

struct BareWeightedArea {
    double* operator()(Input in, double* out) const {
        Audio::weightedArea<double>(in, band, c_uiSampleRate, *out);
        return out + 1;
    }
    Audio::BinRange band = Audio::bandOfBins(c_uiSampleRate, 500, 1500, c_uiBinCount);
};

struct BareLowFreqEnergyRatio {
    double* operator()(Input in, double* out) const {
        Audio::sumOfBins<double>(in, 0, Audio::binsBelow(1000.0, in.size()), *out);
        return out + 1;
    }
};

struct BareLowFreqEnergyRatios {
    double* operator()(Input in, double* out) const {
        const std::size_t first = Audio::binsBelow(100.0, in.size());
        Audio::sumOfBins<double>(in, 0, first, out[0]);
        Audio::sumOfBins<double>(in, first, Audio::binsBelow(1000.0, in.size()), out[1]);
        return out + 2;
    }
};

template <typename Bin>
struct BareHarmonicProduct {
    double* operator()(Input in, double* out) const {
        Audio::productOfHarmonics<double>(in, {out, c_uiCandidateCount}, Bin());
        return out + c_uiCandidateCount;
    }
};

struct BareOldHarmonicProduct {
    double* operator()(Input in, double* out) const {
        Audio::oldHarmonicProduct<double>(in, {out, in.size()});
        return out + in.size();
    }
};

struct BareAntiHarmonicProduct {
    double* operator()(Input in, double* out) const {
        std::array<double, c_uiCandidateCount> product;
        if (*std::max_element(in.begin(), in.end()) == 0.0) {
            product.fill(1.0);
        } else {
            Audio::antiHarmonicProduct<double>(in, product);
        }
        return std::copy(product.begin() + 2, product.end(), out);
    }
};

template <std::size_t peakCount>
struct BarePeaks {
    double* operator()(Input in, double* out) const {
        std::array<double, c_uiBinCount> work;
        std::transform(in.begin(), in.end(), work.begin(), [](double value) { return std::fabs(value); });
        std::array<std::size_t, peakCount> positions;
        Audio::findPeaks(work, {out, peakCount}, positions);
        for (std::size_t p = 0; p < peakCount; ++p) {
            out[peakCount + p] = useLog ? Audio::logOfPosition(positions[p]) : static_cast<double>(positions[p]);
        }
        return out + 2 * peakCount;
    }
    bool useLog = true;
};

struct BarePonderatedPeaks {
    double* operator()(Input in, double* out) const {
        double mean = 0.0;
        BareMean()(in, &mean);
        BarePeaks<3>()(in, out);
        for (std::size_t p = 0; p < 3; ++p) {
            out[p] = mean == 0.0 ? out[p] * mean : out[p] / mean;
        }
        return out + 3;
    }
};

struct BareNonLogPeaks {
    double* operator()(Input in, double* out) const {
        std::array<double, 10> peaks;
        BarePeaks<5>{false}(in, peaks.data());
        return std::copy(peaks.begin() + 5, peaks.end(), out);
    }
};

struct BareMaxNeighbourhood {
    double* operator()(Input in, double* out) const {
        return std::copy_n(in.begin() + static_cast<std::ptrdiff_t>(Audio::startOfNeighbourhood(in)), 3, out);
    }
};

struct BareSpectralRange {
    explicit BareSpectralRange(std::uint64_t centreHz) : range(Audio::binsAround(centreHz, 20, c_uiBinCount)) {}
    double* operator()(Input in, double* out) const {
        out = std::copy_n(&in[range.centreIndex - range.width], 2 * range.width + 1, out);
        *out = range.relativePosition;
        return out + 1;
    }
    Audio::BinsAround range;
};

struct BareMaxSpectralRanges {
    double* operator()(Input in, double* out) const {
        double best = -1.0;
        const BareSpectralRange* pBest = nullptr;
        for (const BareSpectralRange& candidate : ranges) {
            const double* const first = &in[candidate.range.centreIndex - candidate.range.width];
            const double strongest = *std::max_element(first, first + 2 * candidate.range.width + 1);
            if (strongest > best) {
                best = strongest;
                pBest = &candidate;
            }
        }
        return pBest == nullptr ? out : (*pBest)(in, out);
    }
    std::vector<BareSpectralRange> ranges;
};

struct BareZeroCrossingRate {
    double* operator()(Input in, double* out) {
        *out = static_cast<double>(Audio::countCrossings(in, last)) / static_cast<double>(in.size());
        last = in.back();
        return out + 1;
    }
    double last = NAN;
};

struct BareClippingRate {
    double* operator()(Input in, double* out) const {
        std::uint64_t clipped = 0;
        for (const double sample : in) {
            clipped += sample >= high || sample <= low ? 1 : 0;
        }
        *out = static_cast<double>(clipped) / static_cast<double>(in.size());
        return out + 1;
    }
    double low;
    double high;
};

struct BareSilenceRatio {
    double* operator()(Input in, double* out) const {
        const double threshold = Audio::peakAmplitude(in) / divisor;
        *out = static_cast<double>(Audio::countBelow(in, threshold)) / static_cast<double>(in.size());
        return out + 1;
    }
    double divisor;
};

struct BareAmplitudeDistribution {
    double* operator()(Input in, double* out) {
        double peak = Audio::peakAmplitude(in);
        if (isTemporal) {
            peak = runningPeak = std::max(runningPeak, peak);
        }
        for (const std::uint64_t count : Audio::amplitudeBands(in, peak)) {
            *out++ = static_cast<double>(count) / static_cast<double>(in.size());
        }
        return out;
    }
    bool isTemporal;
    double runningPeak = 0.0;
};

struct BareEnergyHistogram {
    double* operator()(Input in, double* out) const {
        std::array<std::uint64_t, 10> bins;
        Audio::energyHistogram(in, energyMax, bins);
        return std::copy(bins.begin(), bins.end(), out);
    }
    double energyMax;
};

struct BareMeanEnergyAboveThresh {
    double* operator()(Input in, double* out) {
        Audio::addEnergiesAbove(in, threshold, accepted);
        *out = Audio::meanOf(accepted);
        return out + 1;
    }
    double threshold;
    Audio::EnergySum accepted = {};
};

struct BareMeanMax {
    double* operator()(Input in, double* out) {
        Audio::addSegments(in, step, floor, maxima);
        const bool isClosed = maxima.uiCount > 0;
        out[0] = isClosed ? Audio::meanOf(maxima) : maxima.dCurrentMaximum;
        out[1] = isClosed ? maxima.dMinimum : maxima.dCurrentMaximum;
        return out + 2;
    }
    double step;
    double floor;
    Audio::SegmentMaxima maxima = {};
};

}  // namespace Zantrix::Bench
