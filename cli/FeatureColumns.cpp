#include "FeatureColumns.h"

#include "Diagnostics.h"
#include "Text.h"

#include <murvane/audio/computation/AudioFeatureComputerImpl.h>
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

// After how many windows a feature can grow no more: each one brings the sliding windows within it a value, if any.
std::uint64_t growingWindows(const std::string& feature) {
    StringVector elements;
    Math::SignalFeatureFactory::splitElements(feature.c_str(), elements);
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

}  // namespace

std::optional<std::string> FeatureColumns::measure(std::size_t samples) {
    std::vector<std::vector<std::size_t>> counts(m_features.size());
    m_full.clear();
    std::size_t windows = 0;
    for (std::size_t i = 0; i < m_features.size(); ++i) {
        if (auto problem = measureFeature(m_features[i], samples, counts[i])) {
            return problem;
        }
        m_full.push_back(counts[i].back());
        windows = std::max(windows, counts[i].size() - 1);
    }
    m_uiColumns = std::accumulate(m_full.begin(), m_full.end(), std::size_t(0));
    m_growing.assign(windows, std::vector<std::size_t>(m_features.size()));
    for (std::size_t window = 0; window < windows; ++window) {
        for (std::size_t i = 0; i < m_features.size(); ++i) {
            m_growing[window][i] = counts[i][std::min(window, counts[i].size() - 1)];
        }
    }
    return std::nullopt;
}

// The counts of the first windows; the last one is that of all further windows.
std::optional<std::string> FeatureColumns::measureFeature(const std::string& feature, std::size_t samples,
                                                          std::vector<std::size_t>& counts) const {
    const QuietLog quiet;
    const Math::DoubleVector silence(samples, 0.0);
    Math::DoubleVector values;
    Audio::FeatureComputerWithInputsImpl computer;
    computer.setInput("Amplitude", silence);
    computer.addFeature(feature.c_str());
    const std::uint64_t windows = growingWindows(feature);
    std::uint64_t moved = 0;
    for (std::uint64_t window = 0; window <= windows; ++window) {
        if (!computer.computeFeatures(values)) {
            return "the feature " + feature + " cannot be computed of a window of " + std::to_string(samples) +
                   " samples";
        }
        counts.push_back(values.size());
        moved += values.size() + samples;
        if (moved > c_uiMaxTrialValues && window < windows) {
            return "the feature " + feature + " gives too many values to be a row of a table";
        }
    }
    while (counts.size() > 1 && counts[counts.size() - 2] == counts.back()) {
        counts.pop_back();
    }
    return std::nullopt;
}

std::vector<std::string> FeatureColumns::names() const {
    std::vector<std::string> names;
    names.reserve(m_uiColumns);
    for (std::size_t i = 0; i < m_features.size(); ++i) {
        if (m_full[i] == 1) {
            names.push_back(m_features[i]);
            continue;
        }
        for (std::size_t k = 0; k < m_full[i]; ++k) {
            names.push_back(m_features[i] + '[' + std::to_string(k) + ']');
        }
    }
    return names;
}

std::string FeatureColumns::difference(const FeatureColumns& other) const {
    for (std::size_t i = 0; i < m_features.size(); ++i) {
        if (m_full[i] != other.m_full[i]) {
            return m_features[i] + " gives " + std::to_string(m_full[i]) + " values";
        }
    }
    return {};
}

bool FeatureColumns::arrange(std::uint64_t index, Math::DoubleVector& values) const {
    if (index >= m_growing.size()) {
        return values.size() == m_uiColumns;
    }
    const std::vector<std::size_t>& counts = m_growing[static_cast<std::size_t>(index)];
    if (std::accumulate(counts.begin(), counts.end(), std::size_t(0)) != values.size()) {
        return false;
    }
    m_vScratch.clear();
    auto next = values.begin();
    for (std::size_t i = 0; i < counts.size(); ++i) {
        // The newest value keeps its place: the missing ones are the oldest.
        m_vScratch.insert(m_vScratch.end(), m_full[i] - std::min(m_full[i], counts[i]),
                          std::numeric_limits<double>::quiet_NaN());
        m_vScratch.append(next, next + static_cast<std::ptrdiff_t>(counts[i]));
        next += static_cast<std::ptrdiff_t>(counts[i]);
    }
    values.swap(m_vScratch);
    return values.size() == m_uiColumns;
}

std::optional<std::string> findFailing(const std::vector<std::string>& features,
                                       std::span<const Math::DoubleVector> windows) {
    const QuietLog quiet;
    Math::DoubleVector values;
    for (const std::string& feature : features) {
        Audio::FeatureComputerWithInputsImpl computer;
        computer.setInput("Amplitude", windows.front());
        computer.addFeature(feature.c_str());
        for (const Math::DoubleVector& window : windows) {
            computer.setInput("Amplitude", window);
            if (!computer.computeFeatures(values)) {
                return feature;
            }
        }
    }
    return std::nullopt;
}

}  // namespace Zantrix::Cli
