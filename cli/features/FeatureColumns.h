#pragma once

#include "features/Column.h"

#include <murvane/math/DoubleVector.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Zantrix::Cli {

/// How many values each of a list of features and formulas gives for windows of a certain length, found by trying.
///
/// Most give as many for every window. A sliding window gives more and more until it is full: rows have a
/// column for each value of the full one, and those that do not exist yet are NaN.
class FeatureColumns {
public:
    explicit FeatureColumns(std::vector<Column> columns);

    /// Tries windows of `samples` zeros.
    ///
    /// @return why there is no answer, if so: the message names the feature or formula
    std::optional<std::string> measure(std::size_t samples);

    /// Whether `other` has the same columns.
    bool isAlike(const FeatureColumns& other) const { return m_full == other.m_full; }

    /// The columns' names: NAME for a feature or formula of one value, NAME[0], NAME[1] ... for others.
    std::vector<std::string> names() const;

    /// The features and formulas that give no values, and so no columns.
    std::vector<Column> empty() const;

    /// "NAME gives n values", of the first feature or formula in which `other` differs.
    std::string difference(const FeatureColumns& other) const;

    /// Makes a row of a window's values, in place.
    ///
    /// @param values  in the order in which a `RowComputer` gives them; then in that of the columns
    /// @param index  of the window in its file, from 0
    /// @return false when they are not as many as they should be
    bool arrange(std::uint64_t index, Math::DoubleVector& values) const;

    std::size_t size() const { return m_uiColumns; }

private:
    using Counts = std::vector<std::size_t>;  // values of each column

    bool rearrange(const Counts& counts, Math::DoubleVector& values) const;

    std::vector<Column> m_columns;
    std::vector<std::size_t> m_computed;        // the columns in the order in which they are computed
    Counts m_full;                              // in the end
    std::size_t m_uiColumns = 0;                // their sum
    std::vector<Counts> m_growing;              // of each of the first windows, as long as anything still grows
    bool m_bInOrder = true;                     // of computation
    mutable std::vector<std::size_t> m_starts;  // of the values of each column
    mutable Math::DoubleVector m_vScratch;
};

}  // namespace Zantrix::Cli
