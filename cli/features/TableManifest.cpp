#include "features/TableManifest.h"

#include "shell/Digest.h"
#include "shell/Text.h"

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

std::string list(const std::vector<std::string>& items) {
    return '[' + join(items, ", ") + ']';
}

std::string definitionOf(const Column& column) {
    return column.kind == Column::Kind::Feature ? "{\"feature\": " + jsonString(column.text) + '}'
                                                : "{\"expr\": " + jsonString(formulaArgument(column)) + '}';
}

// What is gone from it is safely gone.
void flushFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

std::string textOf(const std::vector<Column>& columns) {
    std::vector<std::string> texts;
    for (const Column& column : columns) {
        texts.push_back(column.kind == Column::Kind::Feature ? column.text : formulaArgument(column));
    }
    return join(texts, " ");
}

std::string windowOf(const TableDefinition& definition) {
    return "windows of " + std::to_string(definition.windowMs) + " ms that overlap by " +
           std::to_string(definition.overlapMs) + " ms" + (definition.suppressDc ? ", without DC" : "");
}

}  // namespace

std::string difference(const TableDefinition& a, const TableDefinition& b) {
    if (a.format != b.format) {
        return "its format is " + a.format + ", not " + b.format;
    }
    if (a.columns != b.columns) {
        return "it holds " + textOf(a.columns) + ", not " + textOf(b.columns);
    }
    return a == b ? "" : "it is made of " + windowOf(a) + ", not of " + windowOf(b);
}

bool ManifestWriter::setColumns(const std::vector<std::string>& columns) {
    std::vector<std::string> names;
    for (const std::string& column : columns) {
        names.push_back(jsonString(column));
    }
    return m_bBegun || begin(list(names));
}

bool ManifestWriter::add(const TableEntry& entry) {
    const std::string text = (std::exchange(m_bAny, true) ? ",\n    " : "\n    ") + textOf(entry);
    if (!m_bBegun) {
        m_strKept += text;
        return true;
    }
    return write(text);
}

bool ManifestWriter::finish(std::uint64_t rows, std::uint64_t bytes) {
    return (m_bBegun || begin("null")) && write("\n  ],\n  \"row_count\": " + std::to_string(rows) +
                                                ",\n  \"byte_count\": " + std::to_string(bytes) + "\n}\n");
}

bool ManifestWriter::begin(const std::string& columns) {
    m_bBegun = true;
    std::vector<std::string> definitions;
    for (const Column& column : m_definition.columns) {
        definitions.push_back(definitionOf(column));
    }
    std::string text = "{\n  \"version\": " + std::to_string(c_uiManifestVersion) + ",\n  \"format\": \"" +
                       m_definition.format + "\",\n  \"columns\": " + columns +
                       ",\n  \"computed\": " + list(definitions) +
                       ",\n  \"window\": {\"size_ms\": " + std::to_string(m_definition.windowMs) +
                       ", \"overlap_ms\": " + std::to_string(m_definition.overlapMs) +
                       ", \"suppress_dc\": " + (m_definition.suppressDc ? "true" : "false") +
                       "},\n  \"list\": {\"count\": " + std::to_string(m_inputs.list.count) + ", \"digest\": \"" +
                       m_inputs.list.digest + "\"},\n  ";
    if (m_inputs.shard) {
        text += "\"shard\": {\"index\": " + std::to_string(m_inputs.shard->index) +
                ", \"count\": " + std::to_string(m_inputs.shard->count) + "},\n  ";
    }
    return write(text + "\"inputs\": [" + std::exchange(m_strKept, {}));
}

std::string ManifestWriter::textOf(const TableEntry& entry) const {
    std::string text = "{\"name\": " + jsonString(entry.name);
    if (!isUtf8(entry.name)) {
        text += ", \"name_bytes_hex\": \"" + hexBytes(entry.name) + '"';
    }
    if (m_inputs.shard) {
        text += std::string(", \"status\": \"") + (entry.isDone ? "ok" : "failed") + '"';
    }
    if (!entry.isDone) {
        return text + '}';
    }
    text += ", \"rate_hz\": " + std::to_string(entry.rate) + ", \"first_row\": " + std::to_string(entry.firstRow) +
            ", \"row_count\": " + std::to_string(entry.rowCount) +
            ", \"first_time_s\": " + (entry.rowCount == 0 ? "null" : jsonNumber(entry.firstTime));
    if (m_definition.format == "csv") {
        text += ", \"byte_count\": " + std::to_string(entry.byteCount);
    }
    if (entry.rowCount > 0 && entry.digest != c_uiNoDigest) {
        text += ", \"rows_digest\": \"" + Digest::hexOf(entry.digest) + '"';
    }
    return text + '}';
}

bool commitTable(Output& table, Output& manifest, const std::string& tablePath, const std::string& manifestPath) {
    // A full disk shows now.
    if (!table.flush() || !manifest.flush()) {
        return false;
    }
    if (::access(tablePath.c_str(), F_OK) != 0) {
        // Whoever sees the table finds it described.
        return manifest.commit() && table.commit();
    }
    // Never an old table with a new description, nor the reverse.
    if (::unlink(manifestPath.c_str()) == 0) {
        flushFolderOf(manifestPath);
    }
    return table.commit() && manifest.commit();
}

}  // namespace Zantrix::Cli
