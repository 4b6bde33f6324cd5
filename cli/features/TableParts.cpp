#include "features/TableParts.h"

#include "shell/Digest.h"
#include "shell/Interrupt.h"
#include "shell/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

constexpr std::size_t c_uiPieceSize = std::size_t(1) << 20;

[[noreturn]] void refuse(const TablePart& part, const std::string& why) {
    throw TableError(part.path + ": " + why);
}

// The rows of a part, from the first on.
class RowReader {
public:
    explicit RowReader(const TablePart& part)
        : m_part(part), m_iDescriptor(::open(part.path.c_str(), O_RDONLY | O_CLOEXEC)), m_piece(c_uiPieceSize) {
        if (m_iDescriptor < 0) {
            refuse(part, std::strerror(errno));
        }
        ::lseek(m_iDescriptor, static_cast<off_t>(headOf(part.summary).size()), SEEK_SET);
    }

    ~RowReader() { ::close(m_iDescriptor); }
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    // Copies the next bytes, those of all rows of an input, which must be what the manifest says.
    bool copy(const TableEntry& entry, std::uint64_t size, Output& output) {
        Digest digest;
        while (size > 0) {
            if (m_rest.empty() && !fill()) {
                return false;
            }
            const std::string_view bytes = m_rest.substr(0, size);
            digest.add(bytes);
            if (!output.write(bytes.data(), bytes.size())) {
                return false;
            }
            m_rest.remove_prefix(bytes.size());
            size -= bytes.size();
        }
        if (entry.digest != c_uiNoDigest && entry.digest != digest.value()) {
            refuse(m_part, "the rows of " + entry.name + " are not those that its manifest tells of");
        }
        return true;
    }

private:
    // False when the run is to end.
    bool fill() {
        ssize_t count = -1;
        do {
            count = Interrupt::requested() ? -1 : ::read(m_iDescriptor, m_piece.data(), m_piece.size());
        } while (count < 0 && errno == EINTR && !Interrupt::requested());
        if (Interrupt::requested()) {
            return false;
        }
        if (count <= 0) {
            refuse(m_part, count < 0 ? std::strerror(errno) : "has become shorter");
        }
        m_rest = {m_piece.data(), static_cast<std::size_t>(count)};
        return true;
    }

    const TablePart& m_part;
    int m_iDescriptor;
    std::vector<char> m_piece;
    std::string_view m_rest;  // of the piece
};

}  // namespace

TableParts::TableParts(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        ManifestReader manifest(manifestPathOf(path));
        ManifestReader::Summary summary = manifest.summarize();
        checkTable(path, summary);
        m_parts.push_back({path, std::move(manifest), std::move(summary)});
        checkBelongTogether(m_parts.back());
    }
    std::sort(m_parts.begin(), m_parts.end(), [](const TablePart& a, const TablePart& b) {
        return a.summary.inputs.shard->index < b.summary.inputs.shard->index;
    });
    checkAllThere();
    addUp();
}

void TableParts::checkBelongTogether(const TablePart& part) const {
    const TableInputs& inputs = part.summary.inputs;
    if (!inputs.shard) {
        refuse(part, "is a whole table, not a part made with --shard");
    }
    const TablePart& first = m_parts.front();
    const TableInputs& expected = first.summary.inputs;
    if (inputs.shard->count != expected.shard->count) {
        refuse(part,
               "is shard " + inputs.shard->text() + ", but " + first.path + " is shard " + expected.shard->text());
    }
    if (inputs.list != expected.list) {
        refuse(part, "is made of another list of inputs than " + first.path);
    }
    if (const std::string different = difference(part.summary.definition, first.summary.definition);
        !different.empty()) {
        refuse(part, "does not fit to " + first.path + ": " + different);
    }
    const std::uint64_t size = inputs.shard->end(inputs.list.count) - inputs.shard->first(inputs.list.count);
    if (part.summary.entryCount != size) {
        refuse(part, "tells of " + std::to_string(part.summary.entryCount) + " inputs, but shard " +
                         inputs.shard->text() + " of " + std::to_string(inputs.list.count) + " has " +
                         std::to_string(size));
    }
}

void TableParts::checkAllThere() const {
    const std::uint64_t count = m_parts.front().summary.inputs.shard->count;
    std::uint64_t next = 1;
    for (const TablePart& part : m_parts) {
        const Shard& shard = *part.summary.inputs.shard;
        if (shard.index < next) {
            refuse(part, "is shard " + shard.text() + ", and so is " + (&part - 1)->path);
        }
        if (shard.index > next) {
            break;
        }
        ++next;
    }
    if (next <= count) {
        throw TableError("shard " + Shard{next, count}.text() + " is missing");
    }
}

void TableParts::addUp() {
    m_whole.definition = m_parts.front().summary.definition;
    m_whole.inputs.list = m_parts.front().summary.inputs.list;
    const TablePart* pDecides = nullptr;  // the columns: the first with rows, or else the first with an input done
    for (const TablePart& part : m_parts) {
        const ManifestReader::Summary& summary = part.summary;
        m_whole.entryCount += summary.doneCount;
        m_whole.doneCount += summary.doneCount;
        m_whole.rowCount += summary.rowCount;
        if (summary.columns && (pDecides == nullptr || (pDecides->summary.rowCount == 0 && summary.rowCount > 0))) {
            pDecides = &part;
        }
    }
    for (const TablePart& part : m_parts) {
        if (part.summary.rowCount > 0 && part.summary.columns != pDecides->summary.columns) {
            refuse(part, "has other columns than " + pDecides->path + ": the rates of its inputs are others");
        }
    }
    m_whole.columns = pDecides == nullptr ? std::nullopt : pDecides->summary.columns;
}

bool TableParts::writeTable(Output& output) const {
    const std::string head = headOf(m_whole);
    bool isWritten = output.write(head.data(), head.size());
    const bool isNpy = m_whole.definition.format == "npy";
    for (const TablePart& part : m_parts) {
        RowReader rows(part);
        const std::uint64_t rowSize = part.summary.columns ? part.summary.columns->size() * sizeof(double) : 0;
        part.manifest.forEach([&](const TableEntry& entry) {
            isWritten = isWritten && rows.copy(entry, isNpy ? entry.rowCount * rowSize : entry.byteCount, output);
        });
    }
    return isWritten;
}

bool TableParts::writeManifest(ManifestWriter& writer) const {
    bool isWritten = writer.setColumns(m_whole.columns.value_or(std::vector<std::string>()));
    std::uint64_t rows = 0;
    for (const TablePart& part : m_parts) {
        part.manifest.forEach([&](TableEntry entry) {
            if (entry.isDone) {
                entry.firstRow = rows;
                rows += entry.rowCount;
                isWritten = isWritten && writer.add(entry);
            }
        });
    }
    return isWritten;
}

std::timespec TableParts::time() const {
    std::timespec oldest{};
    for (const TablePart& part : m_parts) {
        struct stat status {};
        const bool isThere = ::stat(part.path.c_str(), &status) == 0;
        const auto key = [](const std::timespec& time) { return std::pair(time.tv_sec, time.tv_nsec); };
        if (isThere && (oldest.tv_sec == 0 || key(status.st_mtim) < key(oldest))) {
            oldest = status.st_mtim;
        }
    }
    return oldest;
}

}  // namespace Zantrix::Cli
