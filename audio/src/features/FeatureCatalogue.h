#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// Everything known about a feature type is one row of one table: the enumeration, both directions of its names and the
/// factory read it.
namespace Zantrix::Audio {

/// How many parameters a feature name takes.
enum class ParameterRule { None, NoneOrOne, NoneOrTwo, AtLeastOne };

struct CatalogueEntry {
    AudioFeature::FeatureType type;
    const char* typeString;  ///< parsed without regard to case; null: the type has no name
    ParameterRule parameters;
    /// Makes a feature from its parameters, whose number fits the rule; null: the factory does not build this type.
    Math::SignalFeature* (*build)(std::span<const std::uint64_t> parameters);
};

inline constexpr std::size_t c_uiNbOfFeatureTypes = 27;

/// Row i is that of the type with the value i.
extern const std::array<CatalogueEntry, c_uiNbOfFeatureTypes> c_featureCatalogue;

}  // namespace Zantrix::Audio
