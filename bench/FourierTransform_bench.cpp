// The transform and the power spectra that stand on it. Every time is per window.

#include "features/SpectrumKernels.h"

#include <murvane/math/MathFourierTransform.h>
#include <murvane/math/PowerOfTwoTransform.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Zantrix::Audio;
using namespace Zantrix::Math;

std::vector<double> noise(std::size_t count) {
    std::mt19937_64 generator(1);
    std::uniform_real_distribution<double> sample(-1.0, 1.0);
    std::vector<double> values(count);
    std::generate(values.begin(), values.end(), [&] { return sample(generator); });
    return values;
}

void reportPerWindow(benchmark::State& state, std::size_t windowsPerIteration) {
    state.counters["seconds_per_window"] =
        benchmark::Counter(static_cast<double>(windowsPerIteration),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// A transform of a transform grows; each starts from the same samples instead, at the price of a copy.
void scalarTransform(benchmark::State& state) {
    const std::vector<double> samples = noise(static_cast<std::size_t>(state.range(0)));
    std::vector<double> values(samples.size());
    for (auto _ : state) {
        std::copy(samples.begin(), samples.end(), values.begin());
        realFourierTransform(values);
        benchmark::DoNotOptimize(values.data());
        benchmark::ClobberMemory();
    }
    reportPerWindow(state, 1);
}
BENCHMARK(scalarTransform)->Name("transform/one by one")->RangeMultiplier(2)->Range(128, 1024);

// The copy brings the samples into bit-reversed order, as a caller's transposition would.
template <typename V>
[[gnu::always_inline]] inline void transformLanes(const double* samples, double* values,
                                                  const TransformTables& tables) {
    const V* const from = reinterpret_cast<const V*>(samples);
    V* const to = reinterpret_cast<V*>(values);
    for (std::size_t i = 0; i < tables.size; i += 2) {
        V* const point = to + 2 * tables.bitReversed[i / 2];
        point[0] = from[i];
        point[1] = from[i + 1];
    }
    transformBitReversed(to, tables);
    separateRealTerms(to, tables);
}

using Two = double __attribute__((vector_size(16)));
void transformTwo(const double* samples, double* values, const TransformTables& tables) {
    transformLanes<Two>(samples, values, tables);
}

#if defined(__x86_64__)
using Four = double __attribute__((vector_size(32)));
__attribute__((target("avx2"))) void transformFourLanes(const double* samples, double* values,
                                                        const TransformTables& tables) {
    transformLanes<Four>(samples, values, tables);
}

using Eight = double __attribute__((vector_size(64)));
__attribute__((target("avx512f"))) void transformEightLanes(const double* samples, double* values,
                                                            const TransformTables& tables) {
    transformLanes<Eight>(samples, values, tables);
}
#endif

using LaneTransform = void (*)(const double*, double*, const TransformTables&);

void laneTransform(benchmark::State& state, LaneTransform transform, std::size_t lanes) {
    const auto n = static_cast<std::size_t>(state.range(0));
    constexpr std::size_t alignment = 8;
    const std::vector<double> samples = noise(n * lanes + alignment);
    std::vector<double> values(samples.size());
    const auto aligned = [](const double* p) {
        return (alignment - reinterpret_cast<std::uintptr_t>(p) / sizeof(double) % alignment) % alignment;
    };
    const double* const from = samples.data() + aligned(samples.data());
    double* const to = values.data() + aligned(values.data());
    const TransformTables& tables = transformTables(n);
    for (auto _ : state) {
        transform(from, to, tables);
        benchmark::DoNotOptimize(to);
        benchmark::ClobberMemory();
    }
    reportPerWindow(state, lanes);
}

// Rows of half-overlapping windows to rows of spectra.
void spectra(benchmark::State& state, std::span<const SpectrumKernel> kernels) {
    constexpr std::size_t count = 32;
    const auto n = static_cast<std::size_t>(state.range(0));
    const std::size_t binCount = n / 2;
    const std::vector<double> signal = noise((count + 1) * binCount);
    const std::vector<double> weights = noise(n);
    std::vector<double> values(count * binCount);
    std::vector<double> scratch(spectrumScratchSize(n));
    std::vector<const double*> from;
    std::vector<double*> to;
    for (std::size_t i = 0; i < count; ++i) {
        from.push_back(&signal[i * binCount]);
        to.push_back(&values[i * binCount]);
    }

    powerSpectra(from, weights.data(), n, to, scratch, {});
    const std::vector<double> expected = values;
    powerSpectra(from, weights.data(), n, to, scratch, kernels);
    if (std::memcmp(values.data(), expected.data(), values.size() * sizeof(double)) != 0) {
        state.SkipWithError("the lanes differ from single windows");
        return;
    }
    for (auto _ : state) {
        powerSpectra(from, weights.data(), n, to, scratch, kernels);
        benchmark::DoNotOptimize(values.data());
        benchmark::ClobberMemory();
    }
    reportPerWindow(state, count);
}

const bool registered = [] {
    const auto sizes = [](benchmark::internal::Benchmark* bench) { bench->RangeMultiplier(2)->Range(128, 1024); };
    for (const SpectrumKernel& kernel : spectrumKernels()) {
        LaneTransform transform = transformTwo;
#if defined(__x86_64__)
        transform = kernel.lanes == 8 ? transformEightLanes : kernel.lanes == 4 ? transformFourLanes : transformTwo;
#endif
        const std::string name = "transform/lanes, " + std::string(kernel.name);
        benchmark::RegisterBenchmark(name.c_str(), laneTransform, transform, kernel.lanes)->Apply(sizes);
    }
    benchmark::RegisterBenchmark("transform/spectra, one by one", spectra, std::span<const SpectrumKernel>())
        ->Apply(sizes);
    for (std::size_t i = 0; i < spectrumKernels().size(); ++i) {
        const std::span<const SpectrumKernel> only = spectrumKernels().subspan(i, 1);
        const std::string name = "transform/spectra, " + std::string(only[0].name);
        benchmark::RegisterBenchmark(name.c_str(), spectra, only)->Apply(sizes);
    }
    return true;
}();

}  // namespace
