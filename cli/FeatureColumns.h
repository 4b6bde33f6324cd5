#pragma once

#include <murvane/math/DoubleVector.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// How many values each of a list of features gives for windows of a certain length, found by trying.
///
/// Most features give as many for every window. A sliding window gives more and more until it is full: rows have a
/// column for each value of the full one, and those that do not exist yet are NaN.
class FeatureColumns {
public:
    explicit FeatureColumns(std::vector<std::string> features) : m_features(std::move(features)) {}

    /// Tries windows of `samples` zeros.
    ///
    /// @return why there is no answer, if so: the message names the feature
    std::optional<std::string> measure(std::size_t samples);

    /// Whether `other` has the same columns.
    bool isAlike(const FeatureColumns& other) const { return m_full == other.m_full; }

    /// The columns' names: NAME for a feature of one value, NAME[0], NAME[1] ... for others.
    std::vector<std::string> names() const;

    /// "FEATURE gives n values", of the first feature in which `other` differs.
    std::string difference(const FeatureColumns& other) const;

    /// Makes a row of a window's values, in place.
    ///
    /// @param index  of the window in its file, from 0
    /// @return false when they are not as many as the features should give
    bool arrange(std::uint64_t index, Math::DoubleVector& values) const;

    std::size_t size() const { return m_uiColumns; }

private:
    std::optional<std::string> measureFeature(const std::string& feature, std::size_t samples,
                                              std::vector<std::size_t>& counts) const;

    std::vector<std::string> m_features;
    std::vector<std::size_t> m_full;  // values of each feature in the end
    std::size_t m_uiColumns = 0;      // their sum
    // For each of the first windows, as long as anything still grows: values of each feature.
    std::vector<std::vector<std::size_t>> m_growing;
    mutable Math::DoubleVector m_vScratch;
};

/// The feature that fails first when each is computed alone of these windows; nothing when none does.
std::optional<std::string> findFailing(const std::vector<std::string>& features,
                                       std::span<const Math::DoubleVector> windows);

}  // namespace Zantrix::Cli
