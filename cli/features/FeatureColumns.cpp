#include "features/FeatureColumns.h"

#include "features/RowComputer.h"
#include "shell/Diagnostics.h"
#include "shell/Text.h"

#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeatureFactory.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <numeric>

namespace Zantrix::Cli {

namespace {

// How many values may be moved to find out where growing ends: some tenths of a second.
constexpr std::uint64_t c_uiMaxTrialValues = std::uint64_t(1) << 28;

// After how many windows a column can grow no more: each one brings the sliding windows within a feature a value, if
// any. No function of formulas grows.
std::uint64_t growingWindows(const Column& column) {
    if (column.kind == Column::Kind::Formula) {
        return 0;
    }
    StringVector elements;
    Math::SignalFeatureFactory::splitElements(column.text.c_str(), elements);
    std::uint64_t windows = 0;
    for (const std::string& element : elements) {
        std::string base;
        StringVector parameters;
        Math::SignalFeatureFactory::splitParams(element.c_str(), base, parameters);
        if (upperCase(base) == "SLIDINGWINDOW" && !parameters.empty()) {
            windows +=
                std::min<std::uint64_t>(std::strtoull(parameters.front().c_str(), nullptr, 10), c_uiMaxTrialValues);
        }
    }
    return windows;
}

// The counts of the first windows; the last one is that of all further windows.
std::optional<std::string> measureColumn(const Column& column, std::size_t samples, std::vector<std::size_t>& counts) {
    const QuietLog quiet;
    const Math::DoubleVector silence(samples, 0.0);
    Math::DoubleVector values;
    RowComputer computer({column});
    const std::uint64_t windows = growingWindows(column);
    std::uint64_t moved = 0;
    for (std::uint64_t window = 0; window <= windows; ++window) {
        if (!computer.compute(std::span(&silence, 1), std::span(&values, 1))) {
            return computer.describeFailure("a window of " + std::to_string(samples) + " samples", quiet.firstError());
        }
        counts.push_back(values.size());
        moved += values.size() + samples;
        if (moved > c_uiMaxTrialValues && window < windows) {
            return describe(column) + " gives too many values to be a row of a table";
        }
    }
    while (counts.size() > 1 && counts[counts.size() - 2] == counts.back()) {
        counts.pop_back();
    }
    return std::nullopt;
}

}  // namespace

FeatureColumns::FeatureColumns(std::vector<Column> columns)
    : m_columns(std::move(columns)), m_starts(m_columns.size()) {
    for (const Column::Kind kind : {Column::Kind::Feature, Column::Kind::Formula}) {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            if (m_columns[i].kind == kind) {
                m_computed.push_back(i);
            }
        }
    }
    m_bInOrder = std::is_sorted(m_computed.begin(), m_computed.end());
}

std::optional<std::string> FeatureColumns::measure(std::size_t samples) {
    std::vector<std::vector<std::size_t>> counts(m_columns.size());
    m_full.clear();
    std::size_t windows = 0;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (auto problem = measureColumn(m_columns[i], samples, counts[i])) {
            return problem;
        }
        m_full.push_back(counts[i].back());
        windows = std::max(windows, counts[i].size() - 1);
    }
    m_uiColumns = std::accumulate(m_full.begin(), m_full.end(), std::size_t(0));
    m_growing.assign(windows, Counts(m_columns.size()));
    for (std::size_t window = 0; window < windows; ++window) {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            m_growing[window][i] = counts[i][std::min(window, counts[i].size() - 1)];
        }
    }
    return std::nullopt;
}

std::vector<std::string> FeatureColumns::names() const {
    std::vector<std::string> names;
    names.reserve(m_uiColumns);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (m_full[i] == 1) {
            names.push_back(m_columns[i].name);
            continue;
        }
        for (std::size_t k = 0; k < m_full[i]; ++k) {
            names.push_back(m_columns[i].name + '[' + std::to_string(k) + ']');
        }
    }
    return names;
}

std::vector<Column> FeatureColumns::empty() const {
    std::vector<Column> columns;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (m_full[i] == 0) {
            columns.push_back(m_columns[i]);
        }
    }
    return columns;
}

std::string FeatureColumns::difference(const FeatureColumns& other) const {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        if (m_full[i] != other.m_full[i]) {
            return m_columns[i].name + " gives " + std::to_string(m_full[i]) + " values";
        }
    }
    return {};
}

bool FeatureColumns::arrange(std::uint64_t index, Math::DoubleVector& values) const {
    if (index < m_growing.size()) {
        return rearrange(m_growing[static_cast<std::size_t>(index)], values);
    }
    return m_bInOrder ? values.size() == m_uiColumns : rearrange(m_full, values);
}

bool FeatureColumns::rearrange(const Counts& counts, Math::DoubleVector& values) const {
    std::size_t start = 0;
    for (const std::size_t column : m_computed) {
        m_starts[column] = start;
        start += counts[column];
    }
    if (start != values.size()) {
        return false;
    }
    m_vScratch.clear();
    for (std::size_t i = 0; i < counts.size(); ++i) {
        // The newest value keeps its place: the missing ones are the oldest.
        m_vScratch.insert(m_vScratch.end(), m_full[i] - std::min(m_full[i], counts[i]),
                          std::numeric_limits<double>::quiet_NaN());
        const auto first = values.begin() + static_cast<std::ptrdiff_t>(m_starts[i]);
        m_vScratch.append(first, first + static_cast<std::ptrdiff_t>(counts[i]));
    }
    values.swap(m_vScratch);
    return values.size() == m_uiColumns;
}

}  // namespace Zantrix::Cli
