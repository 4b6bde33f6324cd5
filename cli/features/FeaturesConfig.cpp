#include "features/FeaturesConfig.h"

#include "Command.h"
#include "shell/SmallFile.h"
#include "shell/Text.h"

#include <murvane/infra/ParameterTrie.h>

#include <algorithm>
#include <charconv>
#include <functional>
#include <map>
#include <optional>
#include <sstream>

namespace Zantrix::Cli {

namespace {

constexpr const char* c_szWindow = "features.window-ms";
constexpr const char* c_szOverlap = "features.overlap-ms";
constexpr const char* c_szSuppressDc = "features.suppress-dc";
constexpr const char* c_szFormat = "features.format";
constexpr std::string_view c_strColumn = "features.column.";
constexpr std::string_view c_strFeature = ".feature";
constexpr std::string_view c_strFormula = ".expr";

struct ColumnKey {
    unsigned number = 0;
    Column::Kind kind = Column::Kind::Feature;
};

// "features.column.2.expr"; nothing for other keys.
std::optional<ColumnKey> parseColumnKey(const std::string& key) {
    ColumnKey result;
    const char* const end = key.data() + key.size();
    if (key.rfind(c_strColumn, 0) != 0) {
        return std::nullopt;
    }
    const auto [rest, error] = std::from_chars(key.data() + c_strColumn.size(), end, result.number);
    const std::string_view kind(rest, static_cast<std::size_t>(end - rest));
    if (error != std::errc() || (kind != c_strFeature && kind != c_strFormula)) {
        return std::nullopt;
    }
    result.kind = kind == c_strFeature ? Column::Kind::Feature : Column::Kind::Formula;
    return result;
}

// Where each key stands; of one given twice, the line that holds.
std::map<std::string, std::size_t> findKeys(const std::string& text) {
    std::map<std::string, std::size_t> lines;
    std::istringstream stream(text);
    std::string line;
    for (std::size_t number = 1; std::getline(stream, line); ++number) {
        constexpr const char* blanks = " \t\r\f\v";
        const std::size_t first = line.find_first_not_of(blanks);
        const std::size_t equals = line.find('=');
        if (first != std::string::npos && line[first] != '#' && equals != std::string::npos) {
            lines[line.substr(first, line.find_last_not_of(blanks, equals - 1) + 1 - first)] = number;
        }
    }
    return lines;
}

class ConfigReader {
public:
    ConfigReader(const std::string& path, const FeatureNames& featureNames, FeaturesOptions& options)
        : m_strPath(path), m_featureNames(featureNames), m_options(options) {}

    void read() {
        const std::string text = readSmallFile(m_strPath);
        std::istringstream stream(text);
        std::string error;
        if (!m_values.read(stream, error)) {
            throw UsageError(m_strPath + ": " + error);
        }
        m_lines = findKeys(text);
        for (const auto& [key, line] : m_lines) {
            readKey(key);
        }
        for (auto& [number, column] : m_columns) {
            m_options.columns.push_back(std::move(column));
        }
    }

private:
    [[noreturn]] void refuse(const std::string& key, const std::string& why) const {
        throw UsageError(m_strPath + ": line " + std::to_string(m_lines.at(key)) + ": " + key + ": " + why);
    }

    // What is wrong is wrong at this key.
    void check(const std::string& key, const std::function<void()>& checkValue) const {
        try {
            checkValue();
        } catch (const UsageError& error) {
            refuse(key, error.what());
        }
    }

    void readKey(const std::string& key) {
        if (key == c_szWindow) {
            readMilliseconds(key, m_options.windowMs);
            check(key, [this] { checkMilliseconds("window", m_options.windowMs, 1); });
        } else if (key == c_szOverlap) {
            readMilliseconds(key, m_options.overlapMs);
            if (m_options.overlapMs < 0) {
                refuse(key, "expected 0 or more");
            }
        } else if (key == c_szSuppressDc) {
            if (!m_values.getBoolParameter(c_szSuppressDc, m_options.suppressDc)) {
                refuse(key, "expected true or false");
            }
        } else if (key == c_szFormat) {
            m_values.getStringParameter(c_szFormat, m_options.format);
            check(key, [this] { checkFormat(m_options.format); });
        } else if (const auto columnKey = parseColumnKey(key)) {
            readColumn(key, *columnKey);
        } else {
            const std::vector<std::string> near =
                nearWords(key, {c_szWindow, c_szOverlap, c_szSuppressDc, c_szFormat, "features.column.1.feature",
                                "features.column.1.expr"});
            refuse(key, "unknown key" + (near.empty() ? "" : "; keys that come close: " + join(near, ", ")));
        }
    }

    void readMilliseconds(const std::string& key, std::int64_t& milliseconds) const {
        int value = 0;
        if (!m_values.getIntParameter(key.c_str(), value)) {
            refuse(key, "expected a whole number");
        }
        milliseconds = value;
    }

    void readColumn(const std::string& key, const ColumnKey& columnKey) {
        std::string text;
        m_values.getStringParameter(key.c_str(), text);
        const Column column =
            columnKey.kind == Column::Kind::Feature ? makeFeatureColumn(text) : makeFormulaColumn(text);
        check(key, [&] { checkColumn(column, m_featureNames); });
        if (!m_columns.emplace(columnKey.number, column).second) {
            refuse(key, "there is another column of this number");
        }
    }

    std::string m_strPath;
    const FeatureNames& m_featureNames;
    FeaturesOptions& m_options;
    ParameterTrie m_values;
    std::map<std::string, std::size_t> m_lines;
    std::map<unsigned, Column> m_columns;
};

// The keys of columns, which are written in the order of the alphabet, with numbers of one length.
std::string columnKey(std::size_t number, std::size_t count, Column::Kind kind) {
    std::string digits = std::to_string(number);
    digits.insert(0, std::to_string(count).size() - digits.size(), '0');
    return std::string(c_strColumn).append(digits).append(kind == Column::Kind::Feature ? c_strFeature : c_strFormula);
}

}  // namespace

void readConfig(const std::string& path, const FeatureNames& featureNames, FeaturesOptions& options) {
    ConfigReader(path, featureNames, options).read();
}

std::string writeConfig(const FeaturesOptions& options) {
    ParameterTrie values;
    values.setIntParameter(c_szWindow, static_cast<int>(options.windowMs));
    values.setIntParameter(c_szOverlap, static_cast<int>(options.overlapMs));
    values.setBoolParameter(c_szSuppressDc, options.suppressDc);
    values.setStringParameter(c_szFormat, options.format);
    for (std::size_t i = 0; i < options.columns.size(); ++i) {
        const Column& column = options.columns[i];
        values.setStringParameter(columnKey(i + 1, options.columns.size(), column.kind).c_str(),
                                  column.kind == Column::Kind::Feature ? column.text : formulaArgument(column));
    }
    std::ostringstream text;
    values.write(text);
    return text.str();
}

}  // namespace Zantrix::Cli
