#include <murvane/math/MathFourierTransform.h>
#include <murvane/math/PowerOfTwoTransform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace Zantrix::Math;

TEST(PowerOfTwoTransform, TablesOfASizeAreAlwaysTheSameObject) {
    const TransformTables& tables = transformTables(64);
    EXPECT_EQ(tables.size, 64u);
    EXPECT_EQ(&transformTables(64), &tables);
    EXPECT_NE(&transformTables(128), &tables);
}

TEST(PowerOfTwoTransform, SwappingBringsValuesToTheirBitReversedPlaces) {
    for (std::size_t n = 2; n <= 256; n *= 2) {
        const TransformTables& tables = transformTables(n);
        std::vector<double> values(n);
        for (std::size_t i = 0; i < n; ++i) {
            values[i] = static_cast<double>(i);
        }
        bitReverse(values.data(), tables);
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_EQ(values[2 * tables.bitReversed[i / 2] + i % 2], static_cast<double>(i));
        }
    }
}

template <typename V>
void expectLanesLikeSingleWindows(std::size_t n) {
    constexpr std::size_t lanes = sizeof(V) / sizeof(double);
    std::mt19937_64 generator(n);
    std::uniform_real_distribution<double> sample(-1.0, 1.0);
    std::vector<std::vector<double>> windows(lanes, std::vector<double>(n));
    std::vector<V> sideBySide(n);
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        for (std::size_t i = 0; i < n; ++i) {
            sideBySide[i][lane] = windows[lane][i] = sample(generator);
        }
    }
    const TransformTables& tables = transformTables(n);
    bitReverse(sideBySide.data(), tables);
    transformBitReversed(sideBySide.data(), tables);
    separateRealTerms(sideBySide.data(), tables);
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        realFourierTransform(windows[lane]);
        for (std::size_t i = 0; i < n; ++i) {
            const double value = sideBySide[i][lane];
            EXPECT_EQ(std::memcmp(&value, &windows[lane][i], sizeof value), 0) << n << " " << i << " " << lane;
        }
    }
}

using TwoLanes = double __attribute__((vector_size(16)));

TEST(PowerOfTwoTransform, EveryLaneGetsTheBytesOfASingleWindow) {
    for (std::size_t n = 2; n <= 1024; n *= 2) {
        expectLanesLikeSingleWindows<TwoLanes>(n);
    }
}

}  // namespace
