#pragma once

#include <murvane/math/SignalFeaturePool.h>

#include <optional>
#include <string>

/// What is right and wrong about the name of a feature.
namespace Zantrix::Cli {

/// A feature pool that knows the audio features.
class FeatureNames {
public:
    FeatureNames();

    /// Whether the library builds a feature of this name.
    bool isKnown(const std::string& name) const;

    /// Why a name is refused: in words, with the column; nothing for a name that is known.
    std::optional<std::string> problem(const std::string& name) const;

private:
    std::optional<std::string> elementProblem(const std::string& name, std::size_t start,
                                              const std::string& element) const;

    Math::SignalFeaturePool m_pool;
};

/// Where a name does not follow the grammar, and what was expected there.
struct Malformation {
    std::size_t offset;  ///< in bytes, from 0
    std::string message;
};

/// The first place at which a name is malformed; nothing for a well-formed one.
std::optional<Malformation> findMalformation(const std::string& name);

}  // namespace Zantrix::Cli
