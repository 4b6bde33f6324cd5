#include "features/ManifestReader.h"

#include "Command.h"
#include "features/TableHead.h"
#include "shell/Digest.h"
#include "shell/JsonCursor.h"
#include "shell/Text.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

constexpr std::string_view c_strStart = "{\n  \"version\": ";

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw TableError(path + ": " + why);
}

// Whole numbers that a double holds exactly.
std::uint64_t readCount(JsonCursor& cursor) {
    constexpr double limit = 9007199254740992.0;
    const double value = cursor.readNumber();
    if (!(value >= 0.0 && value <= limit) || std::floor(value) != value) {
        cursor.fail("a whole number is needed here");
    }
    return static_cast<std::uint64_t>(value);
}

bool readBool(JsonCursor& cursor) {
    const char first = cursor.peek();
    if (first != 't' && first != 'f') {
        cursor.fail("true or false is needed here");
    }
    cursor.skipValue();
    return first == 't';
}

std::string bytesOfHex(JsonCursor& cursor) {
    const std::string hex = cursor.readString();
    std::string bytes;
    for (std::size_t i = 0; i + 2 <= hex.size(); i += 2) {
        bytes += static_cast<char>(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
    }
    if (hexBytes(bytes) != hex) {
        cursor.fail("pairs of hexadecimal digits are needed here");
    }
    return bytes;
}

// Calls `read` for each member of an object; what it does not know, it has to skip.
template <typename Read>
void readObject(JsonCursor& cursor, Read read) {
    cursor.beginObject();
    for (std::string key; cursor.nextMember(key);) {
        read(key);
    }
}

std::vector<std::string> readColumns(JsonCursor& cursor) {
    std::vector<std::string> columns;
    cursor.beginArray();
    while (cursor.nextItem()) {
        columns.push_back(cursor.readString());
    }
    return columns;
}

std::vector<Column> readComputed(JsonCursor& cursor) {
    std::vector<Column> columns;
    cursor.beginArray();
    while (cursor.nextItem()) {
        readObject(cursor, [&](const std::string& key) {
            const std::string text = cursor.readString();
            columns.push_back(key == "feature" ? makeFeatureColumn(text) : makeFormulaColumn(text));
        });
    }
    return columns;
}

void readWindow(JsonCursor& cursor, TableDefinition& definition) {
    readObject(cursor, [&](const std::string& key) {
        if (key == "size_ms") {
            definition.windowMs = readCount(cursor);
        } else if (key == "overlap_ms") {
            definition.overlapMs = readCount(cursor);
        } else if (key == "suppress_dc") {
            definition.suppressDc = readBool(cursor);
        } else {
            cursor.skipValue();
        }
    });
}

void readList(JsonCursor& cursor, ListIdentity& list) {
    readObject(cursor, [&](const std::string& key) {
        if (key == "count") {
            list.count = readCount(cursor);
        } else if (key == "digest") {
            list.digest = cursor.readString();
        } else {
            cursor.skipValue();
        }
    });
}

Shard readShard(JsonCursor& cursor) {
    Shard shard{0, 0};
    readObject(cursor, [&](const std::string& key) {
        const std::uint64_t number = readCount(cursor);
        (key == "index" ? shard.index : shard.count) = number;
    });
    if (shard.index < 1 || shard.index > shard.count) {
        cursor.fail("there is no shard " + shard.text());
    }
    return shard;
}

std::uint64_t readDigest(JsonCursor& cursor) {
    const std::string hex = cursor.readString();
    std::uint64_t digest = 0;
    const auto [end, error] = std::from_chars(hex.data(), hex.data() + hex.size(), digest, 16);
    if (error != std::errc() || Digest::hexOf(digest) != hex) {
        cursor.fail("sixteen hexadecimal digits are needed here");
    }
    return digest;
}

TableEntry readEntry(JsonCursor& cursor) {
    TableEntry entry;
    readObject(cursor, [&](const std::string& key) {
        if (key == "name") {
            entry.name = cursor.readString();
        } else if (key == "name_bytes_hex") {
            entry.name = bytesOfHex(cursor);
        } else if (key == "status") {
            entry.isDone = cursor.readString() == "ok";
        } else if (key == "rate_hz") {
            entry.rate = readCount(cursor);
        } else if (key == "first_row") {
            entry.firstRow = readCount(cursor);
        } else if (key == "row_count") {
            entry.rowCount = readCount(cursor);
        } else if (key == "byte_count") {
            entry.byteCount = readCount(cursor);
        } else if (key == "first_time_s" && cursor.peek() != 'n') {
            entry.firstTime = cursor.readNumber();
        } else if (key == "rows_digest") {
            entry.digest = readDigest(cursor);
        } else {
            cursor.skipValue();
        }
    });
    return entry;
}

// Calls `readInputs` where the inputs stand.
template <typename ReadInputs>
ManifestReader::Summary readManifest(JsonCursor& cursor, ReadInputs readInputs) {
    ManifestReader::Summary summary;
    std::uint64_t version = 0;
    readObject(cursor, [&](const std::string& key) {
        if (key == "version") {
            version = readCount(cursor);
        } else if (key == "format") {
            summary.definition.format = cursor.readString();
        } else if (key == "columns" && cursor.peek() == '[') {
            summary.columns = readColumns(cursor);
        } else if (key == "computed") {
            summary.definition.columns = readComputed(cursor);
        } else if (key == "window") {
            readWindow(cursor, summary.definition);
        } else if (key == "list") {
            readList(cursor, summary.inputs.list);
        } else if (key == "shard") {
            summary.inputs.shard = readShard(cursor);
        } else if (key == "inputs") {
            cursor.beginArray();
            while (cursor.nextItem()) {
                readInputs(summary, readEntry(cursor));
            }
        } else if (key == "row_count") {
            summary.rowCount = readCount(cursor);
        } else if (key == "byte_count") {
            summary.byteCount = readCount(cursor);
        } else {
            cursor.skipValue();
        }
    });
    cursor.expectEnd();
    if (version != c_uiManifestVersion) {
        throw JsonError("its format has version " + std::to_string(version) + "; this program knows version " +
                        std::to_string(c_uiManifestVersion));
    }
    return summary;
}

}  // namespace

ManifestReader::ManifestReader(std::string path) : m_strPath(std::move(path)) {
    const int descriptor = ::open(m_strPath.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0) {
        const int error = errno;
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        refuse(m_strPath, std::strerror(error));
    }
    const auto size = static_cast<std::size_t>(S_ISREG(status.st_mode) ? status.st_size : 0);
    void* const pMapped = size == 0 ? MAP_FAILED : ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
    ::close(descriptor);
    if (pMapped == MAP_FAILED) {
        refuse(m_strPath, size == 0 ? "is empty, or no file" : std::strerror(errno));
    }
    m_text = {static_cast<const char*>(pMapped), size};
}

ManifestReader::~ManifestReader() {
    if (!m_text.empty()) {
        ::munmap(const_cast<char*>(m_text.data()), m_text.size());
    }
}

ManifestReader::ManifestReader(ManifestReader&& other) noexcept
    : m_strPath(std::move(other.m_strPath)), m_text(std::exchange(other.m_text, {})) {}

ManifestReader& ManifestReader::operator=(ManifestReader&& other) noexcept {
    std::swap(m_strPath, other.m_strPath);
    std::swap(m_text, other.m_text);
    return *this;
}

ManifestReader::Summary ManifestReader::summarize() const {
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0;
    const auto add = [&](Summary& summary, const TableEntry& entry) {
        if (entry.isDone && entry.firstRow != rows) {
            throw JsonError("the rows of " + entry.name + " do not follow those before");
        }
        ++summary.entryCount;
        summary.doneCount += entry.isDone ? 1 : 0;
        rows += entry.rowCount;
        bytes += entry.byteCount;
    };
    try {
        JsonCursor cursor(m_text);
        Summary summary = readManifest(cursor, add);
        const bool isNpy = summary.definition.format == "npy";
        if (isNpy && summary.columns) {
            bytes = rows * summary.columns->size() * sizeof(double);
        }
        const std::uint64_t headSize = headOf(summary).size();
        if (rows != summary.rowCount || headSize + bytes != summary.byteCount ||
            summary.columns.has_value() != (summary.doneCount > 0)) {
            throw JsonError("its numbers do not agree with each other");
        }
        return summary;
    } catch (const JsonError& error) {
        refuse(m_strPath, std::string("damaged, or not the manifest of a table: ") + error.what());
    }
}

void ManifestReader::forEach(const std::function<void(const TableEntry& entry)>& take) const {
    try {
        JsonCursor cursor(m_text);
        readManifest(cursor, [&](const Summary&, const TableEntry& entry) { take(entry); });
    } catch (const JsonError& error) {
        refuse(m_strPath, error.what());
    }
}

bool looksLikeManifest(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    std::string start(c_strStart.size(), '\0');
    std::ifstream(path, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
    return start == c_strStart;
}

void refuseToReplaceOther(const std::string& manifestPath) {
    struct stat status {};
    if (::stat(manifestPath.c_str(), &status) == 0 && S_ISREG(status.st_mode) && !looksLikeManifest(manifestPath)) {
        throw UsageError(manifestPath +
                         " is in the way of the manifest, and is none; move it, or name another --output");
    }
}

std::string headOf(const ManifestReader::Summary& summary) {
    const std::vector<std::string> columns = summary.columns.value_or(std::vector<std::string>());
    return summary.definition.format == "npy" ? npyHead(summary.rowCount, columns.size()) : csvHead(columns);
}

void checkTable(const std::string& path, const ManifestReader::Summary& summary) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        refuse(path, std::strerror(errno));
    }
    if (static_cast<std::uint64_t>(status.st_size) != summary.byteCount) {
        refuse(path, "has " + std::to_string(status.st_size) + " bytes, but its manifest says " +
                         std::to_string(summary.byteCount));
    }
    const std::string head = headOf(summary);
    std::string start(head.size(), '\0');
    std::ifstream(path, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
    if (start != head) {
        refuse(path, "does not begin as its manifest says");
    }
}

}  // namespace Zantrix::Cli
