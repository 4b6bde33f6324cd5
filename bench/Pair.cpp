#include "Pair.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace Zantrix::Bench {

namespace {

bool giveTheSame(const Pair& pair) {
    Record library;
    Record bare;
    pair.makeLibrary()(&library);
    pair.makeBare()(&bare);
    return !library.empty() && library.size() == bare.size() &&
           std::memcmp(library.data(), bare.data(), library.size() * sizeof(double)) == 0;
}

// What the two benchmarks of a pair share.
struct SharedPair {
    Pair pair;
    std::optional<bool> areSame;
};

void measure(benchmark::State& state, SharedPair& shared, const std::function<Loop()>& make) {
    if (!shared.areSame) {
        shared.areSame = giveTheSame(shared.pair);
    }
    if (!*shared.areSame) {
        state.SkipWithError("the library and the bare loop give different results");
        return;
    }
    using benchmark::Counter;
    const Loop loop = make();
    for (auto _ : state) {
        loop(nullptr);
    }
    if (shared.pair.audioSeconds > 0) {
        state.counters["audio_seconds_per_second"] =
            Counter(shared.pair.audioSeconds, Counter::kIsIterationInvariantRate);
    }
    if (shared.pair.windows > 0) {
        state.counters["seconds_per_window"] =
            Counter(static_cast<double>(shared.pair.windows), Counter::kIsIterationInvariantRate | Counter::kInvert);
    }
}

}  // namespace

void registerPair(Pair pair) {
    const std::string name = pair.name;
    const auto pShared = std::make_shared<SharedPair>(SharedPair{std::move(pair), {}});
    const auto add = [&](const char* side, std::function<Loop()> Pair::*pMake) {
        benchmark::RegisterBenchmark((name + side).c_str(), [pShared, pMake](benchmark::State& state) {
            measure(state, *pShared, pShared->pair.*pMake);
        });
    };
    add("/library", &Pair::makeLibrary);
    add("/bare", &Pair::makeBare);
}

}  // namespace Zantrix::Bench
