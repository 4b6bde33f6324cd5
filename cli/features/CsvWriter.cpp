#include "features/TableWriter.h"
#include "shell/Output.h"
#include "shell/Text.h"

namespace Zantrix::Cli {

namespace {

class CsvWriter : public TableWriter {
public:
    explicit CsvWriter(std::string path) : m_strPath(std::move(path)) {}

    bool open() override { return m_output.open(m_strPath); }

    bool begin(const std::vector<std::string>& columns) override {
        std::string header = "file,time";
        for (const std::string& column : columns) {
            header += ',' + csvField(column);
        }
        header += '\n';
        return m_output.write(header.data(), header.size());
    }

    bool beginInput(const std::string&, std::uint64_t) override {
        m_uiInputStart = m_output.position();
        return true;
    }

    bool addRows(std::string_view bytes, std::size_t) override { return m_output.write(bytes.data(), bytes.size()); }

    void endInput(double) override {}

    bool canDrop() const override { return m_output.isFile(); }

    bool dropInput() override { return m_output.withdraw(m_uiInputStart); }

    bool finish() override { return m_output.commit(); }

    void abandon() override { m_output.abandon(); }

    std::string describeError() const override { return m_output.describeError(); }

private:
    std::string m_strPath;
    Output m_output;
    std::uint64_t m_uiInputStart = 0;
};

}  // namespace

std::unique_ptr<TableWriter> makeCsvWriter(const std::string& path) {
    return std::make_unique<CsvWriter>(path);
}

}  // namespace Zantrix::Cli
