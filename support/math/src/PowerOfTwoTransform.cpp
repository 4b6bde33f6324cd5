#include "Rotation.h"

#include <murvane/math/PowerOfTwoTransform.h>

#include <array>
#include <atomic>
#include <limits>
#include <memory>

namespace Zantrix::Math {

namespace {

void appendRotation(std::vector<double>& table, double cosine, double sine) {
    table.insert(table.end(), {cosine, cosine, sine, -sine});
}

void fillBitReversal(TransformTables& tables) {
    const std::size_t points = tables.size / 2;
    tables.bitReversed.resize(points);
    for (std::size_t i = 1; i < points; ++i) {
        tables.bitReversed[i] = tables.bitReversed[i / 2] / 2 + (i % 2) * (points / 2);
        if (i < tables.bitReversed[i]) {
            tables.swaps.push_back(i);
            tables.swaps.push_back(tables.bitReversed[i]);
        }
    }
}

void fillPasses(TransformTables& tables) {
    const std::size_t points = tables.size / 2;
    for (std::size_t length = firstPassLength(points); length < points; length *= 4) {
        for (std::size_t j = 1; j < length; ++j) {
            for (std::size_t m = 1; m <= 3; ++m) {
                const Rotation rotation = rotationBy(j * m, 4 * length);
                appendRotation(tables.passes, rotation.cosine, rotation.sine);
            }
        }
    }
}

void fillSeparation(TransformTables& tables) {
    for (std::size_t k = 1; k < tables.size / 4; ++k) {
        // (c - i s) (-i/2) = s' = -s/2 as real part and -c/2 as imaginary part.
        const Rotation rotation = rotationBy(k, tables.size);
        appendRotation(tables.separation, -rotation.sine / 2, rotation.cosine / 2);
    }
}

std::unique_ptr<const TransformTables> buildTables(std::size_t n) {
    auto tables = std::make_unique<TransformTables>();
    tables->size = n;
    if (n >= 2) {
        fillBitReversal(*tables);
        fillPasses(*tables);
        fillSeparation(*tables);
    }
    return tables;
}

}  // namespace

const TransformTables& transformTables(std::size_t n) {
    // By the logarithm of the size. Constant-initialised and never destroyed, so that static constructors and
    // destructors may transform too.
    static constinit std::array<std::atomic<const TransformTables*>, std::numeric_limits<std::size_t>::digits> known{};
    std::atomic<const TransformTables*>& slot = known[static_cast<std::size_t>(std::countr_zero(n))];
    if (const TransformTables* tables = slot.load(std::memory_order_acquire)) {
        return *tables;
    }
    // Threads that come here together each build the tables; the first one's are kept.
    std::unique_ptr<const TransformTables> built = buildTables(n);
    const TransformTables* expected = nullptr;
    if (slot.compare_exchange_strong(expected, built.get(), std::memory_order_acq_rel, std::memory_order_acquire)) {
        return *built.release();
    }
    return *expected;
}

}  // namespace Zantrix::Math
