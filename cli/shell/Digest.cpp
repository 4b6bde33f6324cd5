#include "shell/Digest.h"

#include "shell/Text.h"

namespace Zantrix::Cli {

namespace {

__extension__ using UInt128 = unsigned __int128;

constexpr std::uint64_t c_uiPrime = (std::uint64_t(1) << 61) - 1;
constexpr std::uint64_t c_uiPlace = 0x0f5b9c3e61d74a85;  // any number below the prime with bits all over it
constexpr unsigned c_uiWordBytes = 7;                    // below the prime whatever they are

static_assert(c_uiPlace < c_uiPrime);

}  // namespace

void Digest::add(std::string_view bytes) {
    m_uiLength += bytes.size();
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

std::string Digest::hex() const {
    const std::uint64_t number = value();
    std::string bytes;
    for (int shift = 56; shift >= 0; shift -= 8) {
        bytes += static_cast<char>((number >> shift) & 0xff);
    }
    return hexBytes(bytes);
}

// Twice 61 bits: the upper half counts as much as the lower one, modulo the prime.
void Digest::addWord(std::uint64_t word) {
    const UInt128 product = UInt128(m_uiValue) * c_uiPlace + word;
    std::uint64_t value = (static_cast<std::uint64_t>(product) & c_uiPrime) + static_cast<std::uint64_t>(product >> 61);
    value = (value & c_uiPrime) + (value >> 61);
    m_uiValue = value == c_uiPrime ? 0 : value;
}

}  // namespace Zantrix::Cli
