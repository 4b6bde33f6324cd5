#include "shell/ShortestDouble.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace Zantrix::Cli {

namespace {

std::string printed(double value) {
    std::array<char, c_iMaxNumberLength> text{};
    return {text.data(), writeShortest(text.data(), value)};
}

std::string expected(double value) {
    std::array<char, 64> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

void expectLikeStandardLibrary(double value) {
    EXPECT_EQ(printed(value), expected(value));
    EXPECT_EQ(printed(-value), expected(-value));
}

}  // namespace

TEST(ShortestDouble, NumbersWithoutDigitsHaveNames) {
    EXPECT_EQ(printed(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(printed(-std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(printed(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(printed(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(printed(0.0), "0");
    EXPECT_EQ(printed(-0.0), "-0");
}

TEST(ShortestDouble, FixedNotationIsTakenWhereItIsNotLonger) {
    EXPECT_EQ(printed(0.032), "0.032");
    EXPECT_EQ(printed(0.001), "0.001");
    EXPECT_EQ(printed(0.0001), "1e-04");
    EXPECT_EQ(printed(0.00012), "0.00012");
    EXPECT_EQ(printed(10000.0), "10000");
    EXPECT_EQ(printed(100000.0), "1e+05");
    EXPECT_EQ(printed(120000.0), "120000");
    EXPECT_EQ(printed(59.99999999999517), "59.99999999999517");
    EXPECT_EQ(printed(1.2345678901234567e-30), "1.2345678901234567e-30");
}

TEST(ShortestDouble, EdgesOfTheFastRangeAndOfAllNumbersAreLikeTheStandardLibrarys) {
    for (const double edge : {1e-36, 0x1p53, 0x1p-119, 1.0, 0.1, 0.5, std::numeric_limits<double>::max(),
                              std::numeric_limits<double>::min(), std::numeric_limits<double>::denorm_min()}) {
        expectLikeStandardLibrary(edge);
        expectLikeStandardLibrary(std::nextafter(edge, 0.0));
        expectLikeStandardLibrary(std::nextafter(edge, std::numeric_limits<double>::max()));
    }
}

TEST(ShortestDouble, PowersOfTwoAndTenAreLikeTheStandardLibrarys) {
    for (int exponent = -200; exponent <= 200; ++exponent) {
        expectLikeStandardLibrary(std::ldexp(1.0, exponent));
        expectLikeStandardLibrary(std::pow(10.0, exponent));
        expectLikeStandardLibrary(7.0 * std::pow(10.0, exponent));
    }
}

TEST(ShortestDouble, RandomNumbersOfAllSizesAreLikeTheStandardLibrarys) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        if (const auto any = std::bit_cast<double>(bits); !std::isnan(any)) {
            expectLikeStandardLibrary(any);
        }
        // The numbers that tables are made of.
        expectLikeStandardLibrary(std::ldexp(static_cast<double>(bits >> 11), -53 - static_cast<int>(bits % 64)));
        expectLikeStandardLibrary(static_cast<double>(bits % 1000000) * 0.016);
        expectLikeStandardLibrary(static_cast<double>(bits >> (bits % 64)));
    }
}

}  // namespace Zantrix::Cli
