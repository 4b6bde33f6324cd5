#include "SpectrumKernels.h"

#include "SpectrumArithmetic.h"

#include <murvane/math/MathFourierTransform.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

namespace Zantrix::Audio {

namespace {

constexpr std::uintptr_t c_uiScratchAlignment = c_uiWidestLanes * sizeof(double);

double* alignedScratch(std::span<double> scratch) {
    const auto address = reinterpret_cast<std::uintptr_t>(scratch.data());
    const std::uintptr_t misalignment = address % c_uiScratchAlignment;
    return scratch.data() + (misalignment == 0 ? 0 : (c_uiScratchAlignment - misalignment) / sizeof(double));
}

// Which NaN a sum of several NaNs keeps depends on the order in which a compiler writes the operands of an addition,
// so a spectrum without meaning is given one that does not.
void setUndefined(double* spectrum, std::size_t binCount) {
    std::fill_n(spectrum, binCount, std::numeric_limits<double>::quiet_NaN());
}

template <std::size_t lanes>
struct LaneVector {
    typedef double Type __attribute__((vector_size(lanes * sizeof(double))));
    typedef double Unaligned __attribute__((vector_size(lanes * sizeof(double)), aligned(sizeof(double)), may_alias));
};

// Exchanges the upper right and lower left quarters of all blocks of 2 x 2 * `distance` elements in two rows that
// are `distance` apart.
template <std::size_t distance, typename V, std::size_t... column>
[[gnu::always_inline]] inline void exchangeQuarters(V& upper, V& lower, std::index_sequence<column...>) {
    constexpr std::size_t lanes = sizeof...(column);
    const V oldUpper = upper;
    const V oldLower = lower;
    upper = __builtin_shufflevector(oldUpper, oldLower,
                                    static_cast<int>((column & distance) ? lanes + column - distance : column)...);
    lower = __builtin_shufflevector(oldUpper, oldLower,
                                    static_cast<int>((column & distance) ? lanes + column : column + distance)...);
}

// Transposes a square of as many vectors as each has lanes.
template <std::size_t distance = 1, typename V, std::size_t lanes>
[[gnu::always_inline]] inline void transpose(V (&square)[lanes]) {
    for (std::size_t row = 0; row < lanes; ++row) {
        if ((row & distance) == 0) {
            exchangeQuarters<distance>(square[row], square[row + distance], std::make_index_sequence<lanes>());
        }
    }
    if constexpr (2 * distance < lanes) {
        transpose<2 * distance>(square);
    }
}

// Everything a kernel does. Compiled for the instruction set of the function that it is inlined into.
template <std::size_t lanes>
[[gnu::always_inline]] inline void computeSideBySide(const double* const* windows, const double* weights,
                                                     const Math::TransformTables& tables, double* const* spectra,
                                                     double* scratch) {
    using V = typename LaneVector<lanes>::Type;
    using UnalignedV = typename LaneVector<lanes>::Unaligned;
    V* const values = reinterpret_cast<V*>(scratch);
    const std::size_t* const places = tables.bitReversed.data();

    V square[lanes];
    for (std::size_t first = 0; first < tables.size; first += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            square[lane] = *reinterpret_cast<const UnalignedV*>(windows[lane] + first);
        }
        transpose(square);
        for (std::size_t i = 0; i < lanes; i += 2) {
            V* const point = values + 2 * places[(first + i) / 2];
            point[0] = square[i] * weights[first + i];
            point[1] = square[i + 1] * weights[first + i + 1];
        }
    }

    V total;
    V factor;
    powersOfBitReversed(values, tables, total);
    normalisingFactor(total, factor);

    const std::size_t binCount = tables.size / 2;
    for (std::size_t first = 0; first < binCount; first += lanes) {
        for (std::size_t i = 0; i < lanes; ++i) {
            square[i] = values[first + i] * factor;
        }
        transpose(square);
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            *reinterpret_cast<UnalignedV*>(spectra[lane] + first) = square[lane];
        }
    }
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        if (total[lane] != total[lane]) {
            setUndefined(spectra[lane], binCount);
        }
    }
}

// The instruction sets stand in one source, chosen function by function: compiled with options of its own, a source
// could leave a copy of some inline function behind that the linker then shares with code for every processor.
void computeTwo(const double* const* windows, const double* weights, std::size_t n, double* const* spectra,
                double* scratch) {
    computeSideBySide<2>(windows, weights, Math::transformTables(n), spectra, scratch);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void computeFourAvx2(const double* const* windows, const double* weights, std::size_t n,
                                                     double* const* spectra, double* scratch) {
    computeSideBySide<4>(windows, weights, Math::transformTables(n), spectra, scratch);
}

__attribute__((target("avx512f"))) void computeWidestAvx512(const double* const* windows, const double* weights,
                                                            std::size_t n, double* const* spectra, double* scratch) {
    computeSideBySide<c_uiWidestLanes>(windows, weights, Math::transformTables(n), spectra, scratch);
}
#endif

// The kernels of this processor, found once.
struct KernelTable {
    std::array<SpectrumKernel, 3> kernels;
    std::size_t count = 0;

    KernelTable() {
#if defined(__x86_64__)
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx512f")) {
            add({"AVX-512", c_uiWidestLanes, computeWidestAvx512});
        }
        if (__builtin_cpu_supports("avx2")) {
            add({"AVX2", 4, computeFourAvx2});
        }
#endif
        add({"baseline", 2, computeTwo});
    }

    void add(const SpectrumKernel& kernel) {
        kernels[count++] = kernel;
    }
};

}  // namespace

void powerSpectrum(std::span<double> values) {
    const std::size_t n = values.size();
    const std::size_t binCount = n / 2;
    double total = 0.0;
    if (std::has_single_bit(n) && n >= 2) {
        const Math::TransformTables& tables = Math::transformTables(n);
        Math::bitReverse(values.data(), tables);
        powersOfBitReversed(values.data(), tables, total);
    } else {
        Math::realFourierTransform(values);
        for (std::size_t k = 0; k < binCount; ++k) {
            const double re = values[2 * k];
            const double im = k == 0 ? 0.0 : values[2 * k + 1];
            values[k] = re * re + im * im;
            total += values[k];
        }
    }
    double factor;
    normalisingFactor(total, factor);
    for (double& power : values.first(binCount)) {
        power *= factor;
    }
    if (total != total) {
        setUndefined(values.data(), binCount);
    }
}

std::span<const SpectrumKernel> spectrumKernels() {
    static const KernelTable table;
    return {table.kernels.data(), table.count};
}

void powerSpectra(std::span<const double* const> windows, const double* weights, std::size_t n,
                  std::span<double* const> spectra, std::span<double> scratch,
                  std::span<const SpectrumKernel> kernels) {
    std::size_t next = 0;
    if (std::has_single_bit(n)) {
        double* const aligned = alignedScratch(scratch);
        for (const SpectrumKernel& kernel : kernels) {
            for (; n >= 2 * kernel.lanes && windows.size() - next >= kernel.lanes; next += kernel.lanes) {
                kernel.compute(&windows[next], weights, n, &spectra[next], aligned);
            }
        }
    }
    for (; next < windows.size(); ++next) {
        for (std::size_t i = 0; i < n; ++i) {
            scratch[i] = windows[next][i] * weights[i];
        }
        powerSpectrum(scratch.first(n));
        std::copy_n(scratch.data(), n / 2, spectra[next]);
    }
}

}  // namespace Zantrix::Audio
