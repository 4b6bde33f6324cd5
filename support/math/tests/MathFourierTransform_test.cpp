#include <murvane/math/MathFourierTransform.h>
#include <testkit/AllocationCounter.h>
#include <testkit/LogRecorder.h>
#include <testkit/SameBits.h>
#include <testkit/SpecialNumbers.h>
#include <testkit/WavFixture.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <thread>
#include <vector>

namespace {

using Zantrix::Math::realFourierTransform;
using Values = std::vector<double>;
using testkit::sameBytes;
using Terms = std::vector<std::complex<long double>>;

Values noise(std::size_t n, unsigned seed = 1) {
    return testkit::noise(n, seed, 1.0);
}

Values transformed(Values values) {
    realFourierTransform(values);
    return values;
}

std::complex<long double> unitRoot(std::size_t k, std::size_t n) {
    const long double angle =
        -2 * std::numbers::pi_v<long double> * static_cast<long double>(k) / static_cast<long double>(n);
    return {std::cos(angle), std::sin(angle)};
}

/// Terms 0 .. n/2 by the definition.
Terms termsByDefinition(const Values& values) {
    const std::size_t n = values.size();
    Terms roots(n);
    for (std::size_t k = 0; k < n; ++k) {
        roots[k] = unitRoot(k, n);
    }
    Terms terms(n / 2 + 1);
    for (std::size_t k = 0; k < terms.size(); ++k) {
        for (std::size_t i = 0; i < n; ++i) {
            terms[k] += static_cast<long double>(values[i]) * roots[i * k % n];
        }
    }
    return terms;
}

/// All n terms, by halving; for sizes for which the definition takes too long.
Terms termsByHalving(const Terms& values) {
    const std::size_t n = values.size();
    if (n == 1) {
        return values;
    }
    Terms even;
    Terms odd;
    for (std::size_t i = 0; i < n; i += 2) {
        even.push_back(values[i]);
        odd.push_back(values[i + 1]);
    }
    even = termsByHalving(even);
    odd = termsByHalving(odd);
    Terms terms(n);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const std::complex<long double> turned = unitRoot(k, n) * odd[k];
        terms[k] = even[k] + turned;
        terms[k + n / 2] = even[k] - turned;
    }
    return terms;
}

/// Terms 0 .. n/2 from the packed result.
Terms unpacked(const Values& packed) {
    const std::size_t n = packed.size();
    Terms terms(n / 2 + 1);
    terms[0] = packed[0];
    for (std::size_t k = 1; 2 * k + 1 < n; ++k) {
        terms[k] = {packed[2 * k], packed[2 * k + 1]};
    }
    if (n > 1) {
        terms[n / 2] =
            n % 2 == 0 ? std::complex<long double>(packed[1]) : std::complex<long double>(packed[n - 1], packed[1]);
    }
    return terms;
}

/// Root of the summed squares of the errors over that of the terms.
double relativeError(const Terms& actual, const Terms& expected) {
    long double error = 0;
    long double size = 0;
    for (std::size_t k = 0; k < actual.size(); ++k) {
        error += std::norm(actual[k] - expected[k]);
        size += std::norm(expected[k]);
    }
    return static_cast<double>(std::sqrt(error / size));
}

TEST(FourierTransform, PowersOfTwoGiveTheTermsOfTheDefinitionPacked) {
    const testkit::LogRecorder log;
    for (std::size_t n = 2; n <= 4096; n *= 2) {
        const Values values = noise(n);
        EXPECT_LE(relativeError(unpacked(transformed(values)), termsByDefinition(values)), 4e-16) << n;
    }
    EXPECT_TRUE(log.records().empty());
}

TEST(FourierTransform, OtherLengthsAreReportedAndGiveTheTermsOfTheDefinition) {
    for (const std::size_t n : {3, 5, 6, 7, 12, 100}) {
        testkit::LogRecorder log;
        const Values values = noise(n);
        EXPECT_LE(relativeError(unpacked(transformed(values)), termsByDefinition(values)), 1e-15) << n;
        EXPECT_EQ(log.take(), (std::vector{testkit::failedAssertion("isPowerOfTwo(n)", "MathFourierTransform")})) << n;
    }
}

TEST(FourierTransform, AnOddLengthHasItsLastTermInTheLastAndTheSecondPlace) {
    // 1 + 2 w + 3 w^2 with w = exp(-2 pi i / 3).
    const Values packed = transformed({1.0, 2.0, 3.0});
    EXPECT_DOUBLE_EQ(packed[0], 6.0);
    EXPECT_DOUBLE_EQ(packed[2], -1.5);
    EXPECT_DOUBLE_EQ(packed[1], std::sqrt(3.0) / 2);
}

TEST(FourierTransform, NoValueAtAllIsReportedAndNothingElse) {
    testkit::LogRecorder log;
    realFourierTransform({});
    EXPECT_EQ(log.take(), (std::vector{testkit::failedAssertion("isPowerOfTwo(n)", "MathFourierTransform")}));
}

TEST(FourierTransform, ASingleValueIsItsOwnTransform) {
    const testkit::LogRecorder log;
    EXPECT_EQ(transformed({-2.5}), (Values{-2.5}));
    EXPECT_TRUE(log.records().empty());
}

TEST(FourierTransform, HandComputedPairAndFour) {
    EXPECT_EQ(transformed({3.0, 5.0}), (Values{8.0, -2.0}));
    // Terms: 10, (1 - 3) - i (2 - 4), 1 - 2 + 3 - 4.
    EXPECT_EQ(transformed({1.0, 2.0, 3.0, 4.0}), (Values{10.0, -2.0, -2.0, 2.0}));
}

TEST(FourierTransform, AnImpulseHasEveryTermOne) {
    for (std::size_t n = 2; n <= 1024; n *= 2) {
        Values impulse(n, 0.0);
        impulse[0] = 1.0;
        Values expected(n, 0.0);
        expected[0] = expected[1] = 1.0;
        for (std::size_t k = 1; k < n / 2; ++k) {
            expected[2 * k] = 1.0;
        }
        EXPECT_EQ(transformed(impulse), expected) << n;
    }
}

TEST(FourierTransform, ADelayedImpulseTurnsBackwards) {
    for (std::size_t n = 4; n <= 1024; n *= 2) {
        Values impulse(n, 0.0);
        impulse[1] = 1.0;
        const Values packed = transformed(impulse);
        for (std::size_t k = 1; k < n / 2; ++k) {
            EXPECT_NEAR(packed[2 * k], static_cast<double>(unitRoot(k, n).real()), 3e-16);
            EXPECT_NEAR(packed[2 * k + 1], static_cast<double>(unitRoot(k, n).imag()), 3e-16);
        }
    }
}

TEST(FourierTransform, AConstantHasOnlyTheTermOfFrequencyZero) {
    for (std::size_t n = 2; n <= 1024; n *= 2) {
        Values expected(n, 0.0);
        expected[0] = 0.5 * static_cast<double>(n);
        EXPECT_EQ(transformed(Values(n, 0.5)), expected) << n;
    }
}

TEST(FourierTransform, AlternatingSignsHaveOnlyTheTermOfHalfTheRate) {
    for (std::size_t n = 2; n <= 1024; n *= 2) {
        Values alternating(n, 1.0);
        for (std::size_t i = 1; i < n; i += 2) {
            alternating[i] = -1.0;
        }
        Values expected(n, 0.0);
        expected[1] = static_cast<double>(n);
        EXPECT_EQ(transformed(alternating), expected) << n;
    }
}

TEST(FourierTransform, ASineHasOneNegativeImaginaryTerm) {
    const std::size_t n = 256;
    Values sine(n);
    for (std::size_t i = 0; i < n; ++i) {
        sine[i] = static_cast<double>(-unitRoot(5 * i % n, n).imag());
    }
    Values packed = transformed(sine);
    EXPECT_NEAR(packed[11], -128.0, 1e-12);
    packed[11] = 0.0;
    for (const double rest : packed) {
        EXPECT_NEAR(rest, 0.0, 1e-12);
    }
}

TEST(FourierTransform, TheTransformOfASumIsTheSumOfTheTransforms) {
    const std::size_t n = 512;
    const Values a = noise(n, 2);
    const Values b = noise(n, 3);
    Values sum(n);
    for (std::size_t i = 0; i < n; ++i) {
        sum[i] = 3.0 * a[i] - 0.25 * b[i];
    }
    const Values ofA = transformed(a);
    const Values ofB = transformed(b);
    const Values ofSum = transformed(sum);
    for (std::size_t i = 0; i < n; ++i) {
        EXPECT_NEAR(ofSum[i], 3.0 * ofA[i] - 0.25 * ofB[i], 1e-13);
    }
}

TEST(FourierTransform, TheEnergyOfTheTermsIsThatOfTheValuesTimesTheirNumber) {
    for (std::size_t n = 2; n <= 4096; n *= 2) {
        const Values values = noise(n, 4);
        long double energy = 0;
        for (const double value : values) {
            energy += static_cast<long double>(value) * value;
        }
        const Terms terms = unpacked(transformed(values));
        long double ofTerms = std::norm(terms.front()) + std::norm(terms.back());
        for (std::size_t k = 1; k < n / 2; ++k) {
            ofTerms += 2 * std::norm(terms[k]);
        }
        EXPECT_NEAR(static_cast<double>(ofTerms / (static_cast<long double>(n) * energy)), 1.0, 1e-15) << n;
    }
}

TEST(FourierTransform, ErrorOf256PointsIsBelowThreeInTenToTheSixteenth) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        const Values values = noise(256, seed);
        EXPECT_LE(relativeError(unpacked(transformed(values)), termsByDefinition(values)), 3e-16);
    }
}

TEST(FourierTransform, ErrorOf65536PointsIsBelowSixInTenToTheSixteenth) {
    const Values values = noise(65536);
    Terms expected = termsByHalving(Terms(values.begin(), values.end()));
    expected.resize(65536 / 2 + 1);
    EXPECT_LE(relativeError(unpacked(transformed(values)), expected), 6e-16);
}

TEST(FourierTransform, EqualValuesGiveEqualBytesWhereverTheyStand) {
    const Values values = noise(256);
    const Values first = transformed(values);
    for (const std::size_t offset : {0, 1, 2, 3, 5}) {
        Values moved(offset + values.size());
        std::copy(values.begin(), values.end(), moved.begin() + static_cast<std::ptrdiff_t>(offset));
        realFourierTransform(std::span<double>(moved).subspan(offset));
        EXPECT_TRUE(sameBytes(Values(moved.begin() + static_cast<std::ptrdiff_t>(offset), moved.end()), first));
    }
}

TEST(FourierTransform, ThreadsThatMeetAtANewSizeGetEqualBytes) {
    for (const std::size_t n : {8192, 16384, 32768}) {
        const Values values = noise(n);
        std::vector<Values> results(4);
        std::vector<std::thread> threads;
        for (Values& result : results) {
            threads.emplace_back([&] { result = transformed(values); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const Values& result : results) {
            EXPECT_TRUE(sameBytes(result, results[0])) << n;
        }
    }
}

TEST(FourierTransform, OnlyTheFirstTransformOfASizeAllocates) {
    // Sizes that no other test uses.
    for (const std::size_t n : {std::size_t{1} << 17, std::size_t{1} << 18}) {
        Values values = noise(n);
        const testkit::AllocationCounter first;
        realFourierTransform(values);
        EXPECT_GT(first.count(), 0u);
        values = noise(n);
        const testkit::AllocationCounter later;
        realFourierTransform(values);
        EXPECT_EQ(later.count(), 0u);
    }
}

TEST(FourierTransform, ANotANumberOrAnInfinitySpreadsOverEveryTerm) {
    for (const double odd : {testkit::c_dNaN, testkit::c_dInfinity}) {
        Values values = noise(256);
        values[100] = odd;
        // One part of a term may stay finite: that of frequency n/4 has its imaginary part from odd places alone.
        for (const std::complex<long double>& term : unpacked(transformed(values))) {
            EXPECT_FALSE(std::isfinite(term.real()) && std::isfinite(term.imag()));
        }
    }
}

TEST(FourierTransform, TheSmallestValuesKeepTheirSums) {
    const double smallest = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(transformed(Values(256, smallest))[0], 256 * smallest);
}

}  // namespace
