#include <murvane/core/Text.h>
#include <murvane/iff/ChunkId.h>

#include <algorithm>
#include <ostream>

namespace Zantrix::IFF {

bool ChunkId::isPrintable() const {
    return std::all_of(m_code.begin(), m_code.end(), Text::isPrintable);
}

std::string ChunkId::toString() const {
    static constexpr char c_szDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : m_code) {
        if (Text::isPrintable(c)) {
            text += c;
        } else {
            const auto value = static_cast<unsigned char>(c);
            text += {'\\', 'x', c_szDigits[value >> 4], c_szDigits[value & 0xf]};
        }
    }
    return text;
}

std::ostream& operator<<(std::ostream& os, const ChunkId& id) {
    return os << id.toString();
}

}  // namespace Zantrix::IFF
