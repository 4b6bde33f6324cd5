#pragma once

#include "BenchAudio.h"
#include "Pair.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <span>
#include <vector>

/// Loops of the library that take several windows at a time.
namespace Zantrix::Bench {

using Windows = std::span<const Math::DoubleVector>;
using Rows = std::span<Math::DoubleVector>;

inline void recordRows(Record* pRecord, Windows rows) {
    for (const Math::DoubleVector& row : rows) {
        record(pRecord, row.data(), row.size());
    }
}

/// All windows, `group` at a time, through what takes that many windows and has as many vectors to fill.
template <typename Compute>
Loop inGroups(std::size_t group, Compute compute) {
    return [=, rows = std::vector<Math::DoubleVector>(group)](Record* pRecord) mutable {
        const Windows all = windows();
        for (std::size_t first = 0; first < all.size(); first += group) {
            if (!compute(all.subspan(first, group), Rows(rows))) {
                return;
            }
            benchmark::DoNotOptimize(rows.data());
            recordRows(pRecord, rows);
        }
    };
}

}  // namespace Zantrix::Bench
