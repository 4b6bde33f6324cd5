#include "shell/Digest.h"

#include "shell/Text.h"

#include <algorithm>
#include <cstddef>

namespace Zantrix::Cli {

namespace {

__extension__ using UInt128 = unsigned __int128;

constexpr std::uint64_t c_uiPrime = (std::uint64_t(1) << 61) - 1;
constexpr std::uint64_t c_uiPlace = 0x0f5b9c3e61d74a85;  // any number below the prime with bits all over it
constexpr unsigned c_uiWordBytes = 7;                    // below the prime whatever they are

static_assert(c_uiPlace < c_uiPrime);

// Twice 61 bits and a few more: the upper half counts as much as the lower one, modulo the prime.
constexpr std::uint64_t reduced(UInt128 number) {
    std::uint64_t value = (static_cast<std::uint64_t>(number) & c_uiPrime) + static_cast<std::uint64_t>(number >> 61);
    value = (value & c_uiPrime) + (value >> 61);
    return value >= c_uiPrime ? value - c_uiPrime : value;
}

constexpr std::uint64_t c_uiPlace2 = reduced(UInt128(c_uiPlace) * c_uiPlace);
constexpr std::uint64_t c_uiPlace3 = reduced(UInt128(c_uiPlace2) * c_uiPlace);
constexpr std::uint64_t c_uiPlace4 = reduced(UInt128(c_uiPlace3) * c_uiPlace);

constexpr std::size_t c_uiBlockBytes = 4 * c_uiWordBytes;

std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word = 0;
    for (unsigned i = 0; i < c_uiWordBytes; ++i) {
        word = (word << 8) | static_cast<unsigned char>(bytes[i]);
    }
    return word;
}

}  // namespace

void Digest::add(std::string_view bytes) {
    m_uiLength += bytes.size();
    const std::size_t toNextWord = (c_uiWordBytes - m_uiPendingBytes) % c_uiWordBytes;
    addSlowly(bytes.substr(0, toNextWord));
    bytes.remove_prefix(std::min(toNextWord, bytes.size()));
    // Four words at a time need one reduction, and their products do not wait for each other.
    for (; bytes.size() >= c_uiBlockBytes; bytes.remove_prefix(c_uiBlockBytes)) {
        const char* const block = bytes.data();
        m_uiValue = reduced(UInt128(m_uiValue) * c_uiPlace4 + UInt128(wordAt(block)) * c_uiPlace3 +
                            UInt128(wordAt(block + c_uiWordBytes)) * c_uiPlace2 +
                            UInt128(wordAt(block + 2 * c_uiWordBytes)) * c_uiPlace + wordAt(block + 3 * c_uiWordBytes));
    }
    addSlowly(bytes);
}

void Digest::addSlowly(std::string_view bytes) {
    for (const char byte : bytes) {
        m_uiPending = (m_uiPending << 8) | static_cast<unsigned char>(byte);
        if (++m_uiPendingBytes == c_uiWordBytes) {
            addWord(m_uiPending);
            m_uiPending = 0;
            m_uiPendingBytes = 0;
        }
    }
}

std::uint64_t Digest::value() const {
    Digest whole = *this;
    whole.addWord(m_uiPending);
    whole.addWord(m_uiLength);
    return whole.m_uiValue;
}

std::string Digest::hexOf(std::uint64_t value) {
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes += static_cast<char>((value >> shift) & 0xff);
    }
    return hexBytes(bytes);
}

void Digest::addWord(std::uint64_t word) {
    m_uiValue = reduced(UInt128(m_uiValue) * c_uiPlace + word);
}

}  // namespace Zantrix::Cli
