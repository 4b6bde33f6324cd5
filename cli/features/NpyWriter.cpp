#include "Command.h"
#include "features/RowEncoder.h"
#include "features/TableWriter.h"
#include "shell/Output.h"
#include "shell/Text.h"

#include <bit>

namespace Zantrix::Cli {

namespace {

static_assert(std::endian::native == std::endian::little, "the matrix is written as it stands in memory");

// Enough for the numbers of rows and columns whatever they are, and a multiple of 64, so that the values are aligned
// when the file is mapped.
constexpr std::size_t c_uiHeaderSize = 128;

// Rows leave in pieces of about this size: large beside the cost of handing one over, small for the cache.
constexpr std::size_t c_uiPieceNumbers = 8192;

std::string npyHeader(std::uint64_t rows, std::size_t columns) {
    std::string header("\x93NUMPY\x01\x00", 8);
    header += static_cast<char>(c_uiHeaderSize - 10);
    header += '\0';
    header += "{'descr': '<f8', 'fortran_order': False, 'shape': (" + std::to_string(rows) + ", " +
              std::to_string(columns) + "), }";
    header.resize(c_uiHeaderSize - 1, ' ');
    return header + '\n';
}

struct InputRows {
    std::string name;
    std::uint64_t rate;
    std::uint64_t firstRow;
    std::uint64_t rowCount = 0;
    double firstTime = 0.0;
};

class NpyEncoder : public RowEncoder {
public:
    void begin(const std::string&, RowSink& sink) override {
        m_pSink = &sink;
        forget();
    }

    bool add(double, const Math::DoubleVector& values) override {
        m_numbers.append(values);
        ++m_uiRows;
        return m_numbers.size() < c_uiPieceNumbers || drain();
    }

    bool drain() override {
        const auto* const bytes = reinterpret_cast<const char*>(m_numbers.data());
        const bool isTaken = m_uiRows == 0 || m_pSink->take({bytes, m_numbers.size() * sizeof(double)}, m_uiRows);
        forget();
        return isTaken;
    }

    void forget() override {
        m_numbers.clear();
        m_uiRows = 0;
    }

private:
    RowSink* m_pSink = nullptr;
    Math::DoubleVector m_numbers;
    std::size_t m_uiRows = 0;
};

class NpyWriter : public TableWriter {
public:
    NpyWriter(std::string path, const Audio::LinearAudioWindower::Config& config)
        : m_strPath(std::move(path)), m_config(config) {}

    bool open() override {
        if (!m_matrix.open(m_strPath)) {
            return false;
        }
        if (!m_matrix.isFile()) {
            throw UsageError("--format npy needs a file to write, which " + m_strPath + " is not");
        }
        return m_description.open(m_strPath + ".json");
    }

    bool begin(const std::vector<std::string>& columns) override {
        m_columns = columns;
        const std::string header = npyHeader(0, m_columns.size());
        return m_matrix.write(header.data(), header.size());
    }

    bool beginInput(const std::string& name, std::uint64_t rate) override {
        m_inputs.push_back({name, rate, m_uiRows});
        m_uiInputStart = m_matrix.position();
        return true;
    }

    bool addRows(std::string_view bytes, std::size_t rows) override {
        m_inputs.back().rowCount += rows;
        return m_matrix.write(bytes.data(), bytes.size());
    }

    void endInput(double firstTime) override {
        m_inputs.back().firstTime = firstTime;
        m_uiRows += m_inputs.back().rowCount;
    }

    bool canDrop() const override { return true; }

    bool dropInput() override {
        m_inputs.pop_back();
        return m_matrix.withdraw(m_uiInputStart);
    }

    bool finish() override {
        const std::string header = npyHeader(m_uiRows, m_columns.size());
        const std::string text = description();
        // The description appears first: whoever sees the matrix finds it complete.
        return m_matrix.overwrite(0, header.data(), header.size()) && m_description.write(text.data(), text.size()) &&
               m_description.commit() && m_matrix.commit();
    }

    void abandon() override {}

    std::string describeError() const override {
        return m_matrix.getError().empty() ? m_description.describeError() : m_matrix.describeError();
    }

private:
    std::string description() const {
        std::string json = "{\n  \"columns\": [";
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            json += (i == 0 ? "" : ", ") + jsonString(m_columns[i]);
        }
        json += "],\n  \"window\": {\"size_ms\": " + std::to_string(m_config.m_uiWindowSizeMs) +
                ", \"overlap_ms\": " + std::to_string(m_config.m_uiWindowOverlapMs) +
                ", \"suppress_dc\": " + (m_config.m_bSuppressDCOffset ? "true" : "false") + "},\n  \"inputs\": [";
        for (std::size_t i = 0; i < m_inputs.size(); ++i) {
            json += (i == 0 ? "\n    " : ",\n    ") + describe(m_inputs[i]);
        }
        return json + "\n  ]\n}\n";
    }

    static std::string describe(const InputRows& input) {
        std::string json = "{\"name\": " + jsonString(input.name);
        if (!isUtf8(input.name)) {
            json += ", \"name_bytes_hex\": \"" + hexBytes(input.name) + '"';
        }
        return json + ", \"rate_hz\": " + std::to_string(input.rate) +
               ", \"first_row\": " + std::to_string(input.firstRow) +
               ", \"row_count\": " + std::to_string(input.rowCount) +
               ", \"first_time_s\": " + (input.rowCount == 0 ? "null" : jsonNumber(input.firstTime)) + '}';
    }

    std::string m_strPath;
    Audio::LinearAudioWindower::Config m_config;
    Output m_matrix;
    Output m_description;
    std::vector<std::string> m_columns;
    std::vector<InputRows> m_inputs;
    std::uint64_t m_uiRows = 0;
    std::uint64_t m_uiInputStart = 0;
};

}  // namespace

std::unique_ptr<RowEncoder> makeNpyEncoder() {
    return std::make_unique<NpyEncoder>();
}

std::unique_ptr<TableWriter> makeNpyWriter(const std::string& path, const Audio::LinearAudioWindower::Config& config) {
    return std::make_unique<NpyWriter>(path, config);
}

}  // namespace Zantrix::Cli
