#include "features/RowComputer.h"

#include "shell/Diagnostics.h"

#include <algorithm>

namespace Zantrix::Cli {

namespace {

// The messages of formulas end with two lines that show the place, for messages that may have several lines.
std::string withoutExcerpt(const std::string& message) {
    const std::size_t caret = message.rfind('\n');
    return caret == std::string::npos || caret == 0 ? message : message.substr(0, message.rfind('\n', caret - 1));
}

}  // namespace

RowComputer::RowComputer(std::vector<Column> columns)
    : m_columns(std::move(columns)), m_formulas(makeFormulas(m_columns)) {
    // The name is bound before the features are added, and to windows only when there are some.
    m_computer.setInputWindows("Amplitude", {});
    for (const Column& column : m_columns) {
        if (column.kind == Column::Kind::Feature) {
            m_computer.addFeature(column.text.c_str());
        }
    }
}

bool RowComputer::compute(std::span<const Math::DoubleVector> windows, std::span<Math::DoubleVector> rows) {
    m_computer.setInputWindows("Amplitude", windows);
    if (!m_computer.computeFeatures(rows)) {
        findFailingFeature(windows);
        return false;
    }
    if (m_formulas.getNames().empty()) {
        return true;
    }
    m_formulas.bind("x", windows);
    if (!m_formulas.evaluate()) {
        findFailingFormula();
        return false;
    }
    for (std::size_t formula = 0; formula < m_formulas.getNames().size(); ++formula) {
        const Math::Xpr::Windows values = m_formulas.getValues(formula);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i].append(values[i]);
        }
    }
    return true;
}

// Each feature is computed alone, since all of them together do not tell.
void RowComputer::findFailingFeature(std::span<const Math::DoubleVector> windows) {
    const QuietLog quiet;
    std::vector<Math::DoubleVector> values(windows.size());
    m_strFailed = "some feature";
    for (const Column& column : m_columns) {
        if (column.kind != Column::Kind::Feature) {
            continue;
        }
        Audio::FeatureComputerWithInputsImpl computer;
        computer.setInputWindows("Amplitude", windows);
        computer.addFeature(column.text.c_str());
        if (!computer.computeFeatures(values)) {
            m_strFailed = describe(column);
            return;
        }
    }
}

void RowComputer::findFailingFormula() {
    m_strFailed = "some formula";
    m_strWhy = withoutExcerpt(m_formulas.getError());
    for (const Column& column : m_columns) {
        const std::string start = "formula \"" + column.name + "\", ";
        if (column.kind == Column::Kind::Formula && m_strWhy.rfind(start, 0) == 0) {
            m_strFailed = describe(column);
            m_strWhy.erase(0, start.size());
            return;
        }
    }
}

std::string RowComputer::describeFailure(const std::string& windows, const std::string& record) const {
    // The record of a failed formula as a whole says the same once more.
    const bool isMore = !record.empty() && (m_strWhy.empty() || record.find(m_strWhy) == std::string::npos);
    return m_strFailed + " cannot be computed of " + windows + (m_strWhy.empty() ? "" : ": " + m_strWhy) +
           (isMore ? " (" + record + ')' : "");
}

}  // namespace Zantrix::Cli
