#pragma once

#include <optional>
#include <string>
#include <unordered_map>

namespace Zantrix::Cli {

/// What a label says of a tone.
struct ToneKind {
    const char* name = "other";           ///< or "single frequency", "amplitude modulated"
    std::optional<long long> frequency;   ///< in Hz, of a single frequency
    std::optional<long long> carrier;     ///< in Hz, of an amplitude-modulated tone
    std::optional<long long> modulation;  ///< in Hz, of an amplitude-modulated tone
};

/// Asks the library's annotation builder for the types of labels, and each label once.
class ToneKinds {
public:
    ToneKinds();

    const ToneKind& of(const std::string& label);

private:
    std::unordered_map<std::string, ToneKind> m_known;
};

}  // namespace Zantrix::Cli
