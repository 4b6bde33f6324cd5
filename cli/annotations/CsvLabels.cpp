#include "annotations/LabelFormat.h"
#include "shell/Text.h"

#include <algorithm>
#include <optional>

/// CSV as RFC 4180 has it, with the columns start_s, stop_s and label among others.
namespace Zantrix::Cli {

namespace {

/// Takes rows from a text, one after the other.
class CsvRows {
public:
    explicit CsvRows(std::string_view text) : m_rest(text) {}

    /// The line that the last row began in.
    std::size_t line() const { return m_uiLine; }

    /// @return false at the end
    bool next(std::vector<std::string>& fields) {
        fields.clear();
        m_uiLine = m_uiNextLine;
        if (m_rest.empty()) {
            return false;
        }
        do {
            fields.push_back(m_rest.starts_with('"') ? takeQuoted() : takePlain());
        } while (takeIf(","));
        if (!takeIf("\r\n") && !takeIf("\n") && !takeIf("\r") && !m_rest.empty()) {
            fail("text follows a closing quote");
        }
        ++m_uiNextLine;
        return true;
    }

private:
    bool takeIf(std::string_view text) {
        const bool isThere = m_rest.starts_with(text);
        m_rest.remove_prefix(isThere ? text.size() : 0);
        return isThere;
    }

    std::string takePlain() {
        const std::string_view field = m_rest.substr(0, m_rest.find_first_of(",\r\n"));
        m_rest.remove_prefix(field.size());
        return std::string(field);
    }

    std::string takeQuoted() {
        std::string field;
        m_rest.remove_prefix(1);
        while (true) {
            const std::size_t quote = m_rest.find('"');
            if (quote == std::string_view::npos) {
                fail("a quote is not closed");
            }
            const std::string_view part = m_rest.substr(0, quote);
            field += part;
            m_uiNextLine += static_cast<std::size_t>(std::count(part.begin(), part.end(), '\n'));
            m_rest.remove_prefix(quote + 1);
            if (!takeIf("\"")) {
                return field;
            }
            field += '"';
        }
    }

    [[noreturn]] void fail(const std::string& what) const {
        throw LabelError("line " + std::to_string(m_uiLine) + ": " + what);
    }

    std::string_view m_rest;
    std::size_t m_uiLine = 1;
    std::size_t m_uiNextLine = 1;
};

std::size_t findColumn(const std::vector<std::string>& header, const std::string& name) {
    const auto found = std::find(header.begin(), header.end(), name);
    if (found == header.end()) {
        throw LabelError("line 1: no column " + name + "; the columns start_s, stop_s and label are needed");
    }
    return static_cast<std::size_t>(found - header.begin());
}

}  // namespace

std::string writeCsvLabels(const Recording& recording) {
    std::string text = "start_s,stop_s,label\n";
    for (const SampledLabel& annotation : recording.annotations) {
        text += timeOfSample(annotation.start, recording.rate) + ',' + timeOfSample(annotation.stop, recording.rate) +
                ',' + csvField(annotation.label) + '\n';
    }
    return text;
}

std::vector<TimedLabel> readCsvLabels(std::string_view bytes, const std::vector<std::string>&) {
    CsvRows rows(withoutByteOrderMark(bytes));
    std::vector<std::string> header;
    rows.next(header);
    const std::size_t start = findColumn(header, "start_s");
    const std::size_t stop = findColumn(header, "stop_s");
    const std::size_t label = findColumn(header, "label");
    const auto file = std::find(header.begin(), header.end(), "file") - header.begin();
    std::optional<std::string> fileName;
    std::vector<TimedLabel> labels;
    for (std::vector<std::string> fields; rows.next(fields);) {
        const std::string where = "line " + std::to_string(rows.line()) + ": ";
        if (fields.size() == 1 && fields.front().empty()) {
            continue;  // an empty line
        }
        if (fields.size() != header.size()) {
            throw LabelError(where + std::to_string(fields.size()) + " fields instead of " +
                             std::to_string(header.size()));
        }
        if (static_cast<std::size_t>(file) < header.size()) {
            const std::string& name = fields[static_cast<std::size_t>(file)];
            if (fileName.value_or(name) != name) {
                throw LabelError(where + "annotations of a second file, " + name);
            }
            fileName = name;
        }
        labels.push_back(
            {fields[label], parseSeconds(fields[start], rows.line()), parseSeconds(fields[stop], rows.line())});
    }
    return labels;
}

}  // namespace Zantrix::Cli
