#include "shell/ShortestDouble.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace Zantrix::Cli {

namespace {

__extension__ using UInt128 = unsigned __int128;

constexpr int c_iExponentBias = 1075;  // of the significand taken as an integer
constexpr std::uint64_t c_uiHiddenBit = std::uint64_t(1) << 52;
constexpr double c_dSmallest = 1e-36;
constexpr double c_dLimit = 0x1p53;

struct Power {
    std::uint64_t high;
    std::uint64_t low;
};

// 10^i, scaled by a power of two to 128 bits with the topmost set. Up to 10^55 that is exact, so that no rounding has
// to be thought of; the numbers done here need no more.
constexpr std::array<Power, 56> makePowersOfTen() {
    std::array<Power, 56> powers{};
    Power power{std::uint64_t(1) << 63, 0};
    for (Power& entry : powers) {
        entry = power;
        // times 10/16, and times 2 when the topmost bit has gone
        const UInt128 value = (UInt128(power.high) << 64) | power.low;
        const UInt128 eighth = (value >> 3) * 5;  // times 5/8, with room above
        const UInt128 next = (eighth >> 127) != 0 ? eighth : (value >> 2) * 5;
        power = {static_cast<std::uint64_t>(next >> 64), static_cast<std::uint64_t>(next)};
    }
    return powers;
}

constexpr std::array<Power, 56> c_powersOfTen = makePowersOfTen();

constexpr std::array<char, 200> makeDigitPairs() {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr std::array<char, 200> c_digitPairs = makeDigitPairs();

// significand * 10^exponent
struct Decimal {
    std::uint64_t significand;
    int exponent;
};

// The upper 64 bits of power * factor, their lowest bit set if anything below them is not zero.
std::uint64_t multiplyRoundingToOdd(const Power& power, std::uint64_t factor) {
    const UInt128 low = UInt128(power.low) * factor;
    const UInt128 high = UInt128(power.high) * factor + static_cast<std::uint64_t>(low >> 64);
    const auto below = static_cast<std::uint64_t>(high);
    return static_cast<std::uint64_t>(high >> 64) | (below > 1 ? 1U : 0U);
}

// The shortest decimal within the rounding interval of c * 2^q, and of those the one nearest to it; for numbers with
// an exponent k of -55 to 0.
Decimal shortestDecimal(std::uint64_t c, int q, bool isPowerOfTwo) {
    const bool isOdd = (c & 1) != 0;
    // k = floor(log10(2^q)), or of 3/4 of it where the interval is narrower below.
    const int k = (q * 1262611 - (isPowerOfTwo ? 524031 : 0)) >> 22;
    const int h = q + ((-k * 1741647) >> 19) + 1;
    const Power& power = c_powersOfTen[static_cast<std::size_t>(-k)];
    const std::uint64_t vLow = multiplyRoundingToOdd(power, (4 * c - 2 + (isPowerOfTwo ? 1 : 0)) << h);
    const std::uint64_t v = multiplyRoundingToOdd(power, (4 * c) << h);
    const std::uint64_t vHigh = multiplyRoundingToOdd(power, (4 * c + 2) << h);
    const std::uint64_t lower = vLow + (isOdd ? 1 : 0);
    const std::uint64_t upper = vHigh - (isOdd ? 1 : 0);

    // Which of the candidates wins is as good as random: chosen without branches.
    const std::uint64_t s = v / 4;
    const std::uint64_t sTenth = s / 10;
    const bool shorterBelow = lower <= 40 * sTenth;
    const bool shorterAbove = 40 * sTenth + 40 <= upper;
    const bool below = lower <= 4 * s;
    const bool above = 4 * s + 4 <= upper;
    const std::uint64_t middle = 4 * s + 2;
    const bool nearerAbove = (v > middle) | ((v == middle) & ((s & 1) != 0));
    const std::uint64_t full = s + (below != above ? above : nearerAbove);
    const bool isShorter = shorterBelow != shorterAbove;
    return {isShorter ? sTenth + shorterAbove : full, k + isShorter};
}

void removeTrailingZeros(Decimal& decimal) {
    while (decimal.significand % 10 == 0) {
        decimal.significand /= 10;
        ++decimal.exponent;
    }
}

constexpr std::array<std::uint64_t, 18> makeDigitLimits() {
    std::array<std::uint64_t, 18> limits{};
    std::uint64_t limit = 1;
    for (std::uint64_t& entry : limits) {
        entry = limit;
        limit *= 10;
    }
    return limits;
}

constexpr std::array<std::uint64_t, 18> c_digitLimits = makeDigitLimits();

// Of a number from 1 to 10^17 or little more.
int countDigits(std::uint64_t value) {
    const auto atMost = static_cast<std::size_t>(std::bit_width(value) * 1233 >> 12);  // log10(2) is about 1233/4096
    return static_cast<int>(atMost) + (value >= c_digitLimits[atMost] ? 1 : 0);
}

// Eight digits, with leading zeros, so that the divisions do not wait for each other.
void writeEightDigits(char* out, std::uint32_t value) {
    const std::uint32_t upper = value / 10000;
    const std::uint32_t lower = value % 10000;
    std::memcpy(out, &c_digitPairs[std::size_t(2) * (upper / 100)], 2);
    std::memcpy(out + 2, &c_digitPairs[std::size_t(2) * (upper % 100)], 2);
    std::memcpy(out + 4, &c_digitPairs[std::size_t(2) * (lower / 100)], 2);
    std::memcpy(out + 6, &c_digitPairs[std::size_t(2) * (lower % 100)], 2);
}

// The digits of a number, found without branches: pieces of a fixed size are copied, what is too much is overwritten
// or cut off later.
class Digits {
public:
    explicit Digits(std::uint64_t value) : m_iCount(countDigits(value)) {
        const std::uint64_t upper = value / 100000000;
        std::memcpy(m_text.data(), &c_digitPairs[2 * (upper / 100000000)], 2);
        writeEightDigits(m_text.data() + 2, static_cast<std::uint32_t>(upper % 100000000));
        writeEightDigits(m_text.data() + 10, static_cast<std::uint32_t>(value % 100000000));
    }

    int count() const { return m_iCount; }

    /// Copies the digits from `first` on, and what follows, to 18 places.
    void copy(char* out, int first) const {
        std::memcpy(out, m_text.data() + (c_iDigits - m_iCount + first), c_iDigits);
    }

private:
    static constexpr int c_iDigits = 18;

    std::array<char, 2 * c_iDigits> m_text{};
    int m_iCount;
};

char* writeScientific(char* out, const Digits& digits, int decimalExponent) {
    const int count = digits.count();
    digits.copy(out, 0);
    digits.copy(out + 2, 1);
    out[1] = '.';
    out += count > 1 ? count + 1 : 1;
    const int exponent = decimalExponent + count - 1;
    const int magnitude = exponent < 0 ? -exponent : exponent;  // below 100 for all numbers done here
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    std::memcpy(out, &c_digitPairs[std::size_t(2) * static_cast<std::size_t>(magnitude)], 2);
    return out + 2;
}

char* writeFixed(char* out, const Digits& digits, int decimalExponent) {
    const int count = digits.count();
    const int point = count + decimalExponent;  // digits in front of the decimal point
    if (point <= 0) {
        std::memcpy(out, "0.000", 5);  // more zeros would be longer than an exponent
        digits.copy(out + 2 - point, 0);
        return out + 2 - decimalExponent;
    }
    digits.copy(out, 0);
    if (decimalExponent >= 0) {
        std::memcpy(out + count, "00000", 5);
        return out + point;
    }
    digits.copy(out + point + 1, point);
    out[point] = '.';
    return out + count + 1;
}

}  // namespace

char* writeShortest(char* out, double value) {
    const double magnitude = std::fabs(value);
    // Written so that NaN fails.
    if (!(magnitude >= c_dSmallest && magnitude < c_dLimit)) {
        return std::to_chars(out, out + c_iMaxNumberLength, std::isnan(value) ? magnitude : value).ptr;
    }
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const std::uint64_t fraction = bits & (c_uiHiddenBit - 1);
    const std::uint64_t c = fraction | c_uiHiddenBit;
    const int q = static_cast<int>(bits >> 52) - c_iExponentBias;
    Decimal decimal{};
    if (-q < 53 && (c & ((std::uint64_t(1) << -q) - 1)) == 0) {
        decimal = {c >> -q, 0};  // a whole number
    } else {
        decimal = shortestDecimal(c, q, fraction == 0);
    }
    removeTrailingZeros(decimal);

    if (std::signbit(value)) {
        *out++ = '-';
    }
    const Digits digits(decimal.significand);
    // Where fixed notation is not longer than scientific, which needs no point after a single digit.
    const int slack = digits.count() == 1 ? 1 : 0;
    const bool isFixed = decimal.exponent >= -(digits.count() + 3) + slack && decimal.exponent <= 5 - slack;
    return isFixed ? writeFixed(out, digits, decimal.exponent) : writeScientific(out, digits, decimal.exponent);
}

}  // namespace Zantrix::Cli
