#include "features/RowPrinter.h"
#include "features/TableWriter.h"
#include "shell/Output.h"
#include "shell/Text.h"

namespace Zantrix::Cli {

namespace {

class CsvWriter : public TableWriter {
public:
    explicit CsvWriter(std::string path) : m_strPath(std::move(path)), m_printer(m_output) {}

    bool open() override { return m_output.open(m_strPath); }

    bool begin(const std::vector<std::string>& columns) override {
        std::string header = "file,time";
        for (const std::string& column : columns) {
            header += ',' + csvField(column);
        }
        header += '\n';
        return m_output.write(header.data(), header.size());
    }

    bool beginInput(const std::string& name, std::uint64_t) override {
        const bool isWritten = m_printer.setRowStart(csvField(name) + ',');
        m_uiInputStart = m_output.position();
        return isWritten;
    }

    bool addRows(std::span<const double> times, std::span<const Math::DoubleVector> rows) override {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (!m_printer.add(times[i], rows[i])) {
                return false;
            }
        }
        return true;
    }

    void endInput() override {}

    bool dropInput() override {
        m_printer.forget();
        return m_output.withdraw(m_uiInputStart);
    }

    bool finish() override { return m_printer.drain() && m_output.commit(); }

    void abandon() override {
        if (m_printer.drain()) {
            m_output.abandon();
        }
    }

    std::string describeError() const override { return m_output.describeError(); }

private:
    std::string m_strPath;
    Output m_output;
    RowPrinter m_printer;
    std::uint64_t m_uiInputStart = 0;
};

}  // namespace

std::unique_ptr<TableWriter> makeCsvWriter(const std::string& path) {
    return std::make_unique<CsvWriter>(path);
}

}  // namespace Zantrix::Cli
