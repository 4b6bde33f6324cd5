#include "features/PreviousTable.h"

#include "Command.h"
#include "shell/Digest.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace Zantrix::Cli {

namespace {

bool isBefore(const std::timespec& a, const std::timespec& b) {
    return std::tie(a.tv_sec, a.tv_nsec) < std::tie(b.tv_sec, b.tv_nsec);
}

std::string describe(const std::optional<Shard>& shard) {
    return shard ? "shard " + shard->text() : "a whole table";
}

void checkMadeAlike(const TableTarget& target, const ManifestReader::Summary& summary) {
    std::string different = difference(summary.definition, target.definition);
    if (different.empty() && summary.inputs.shard != target.inputs.shard) {
        different = "it is " + describe(summary.inputs.shard) + ", not " + describe(target.inputs.shard);
    }
    if (!different.empty()) {
        throw UsageError("cannot resume " + target.path + ": " + different + "; remove it, or name another --output");
    }
}

}  // namespace

PreviousTable::Key::Key(std::string_view name) {
    Digest digest;
    digest.add(name);
    first = digest.value();
    Digest other;
    other.add("again ");
    other.add(name);
    second = other.value();
}

std::unique_ptr<PreviousTable> PreviousTable::open(const TableTarget& target, Diagnostics& diagnostics) {
    const auto giveUp = [&](const std::string& why) {
        diagnostics.warning(why + "; everything is computed");
        return nullptr;
    };
    if (::access(target.path.c_str(), F_OK) != 0) {
        return nullptr;
    }
    if (::access(target.manifestPath().c_str(), F_OK) != 0) {
        return giveUp(target.path + " has no " + target.manifestPath() + " to resume from");
    }
    try {
        const ManifestReader manifest(target.manifestPath());
        ManifestReader::Summary summary = manifest.summarize();
        checkTable(target.path, summary);
        checkMadeAlike(target, summary);
        return std::unique_ptr<PreviousTable>(new PreviousTable(target.path, manifest, std::move(summary)));
    } catch (const TableError& error) {
        return giveUp(error.what());
    }
}

PreviousTable::PreviousTable(const std::string& path, const ManifestReader& manifest, ManifestReader::Summary summary)
    : m_strPath(path), m_summary(std::move(summary)) {
    std::uint64_t offset = headOf(m_summary).size();
    const std::size_t rowSize =
        m_summary.definition.format == "npy" && m_summary.columns ? m_summary.columns->size() * sizeof(double) : 0;
    manifest.forEach([&](const TableEntry& entry) {
        if (entry.isDone) {
            const std::uint64_t size = rowSize > 0 ? entry.rowCount * rowSize : entry.byteCount;
            m_items.push_back(
                {Key(entry.name), {offset, size, entry.rowCount, entry.rate, entry.firstTime, entry.digest}});
            offset += size;
        }
    });
    std::stable_sort(m_items.begin(), m_items.end(), [](const Item& a, const Item& b) { return a.key < b.key; });
    m_iDescriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (m_iDescriptor < 0 || ::fstat(m_iDescriptor, &status) != 0) {
        throw TableError(path + ": " + std::strerror(errno));
    }
    m_time = status.st_mtim;
}

PreviousTable::~PreviousTable() {
    ::close(m_iDescriptor);
}

bool PreviousTable::holds(const std::string& name) const {
    const Key key(name);
    const auto item = lowerBound(key);
    struct stat status {};
    return item != m_items.end() && item->key == key && ::stat(name.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           isBefore(status.st_mtim, m_time);
}

PreviousTable::Rows PreviousTable::find(const std::string& name, std::uint64_t preferredOffset) const {
    const Key key(name);
    const auto first = lowerBound(key);
    for (auto item = first; item != m_items.end() && item->key == key; ++item) {
        if (item->rows.offset == preferredOffset) {
            return item->rows;
        }
    }
    return first->rows;
}

bool PreviousTable::copy(std::uint64_t offset, std::uint64_t size, Output& output) const {
    std::vector<char> piece(std::min<std::uint64_t>(size, std::size_t(1) << 20));
    while (size > 0) {
        const ssize_t count = ::pread(m_iDescriptor, piece.data(), std::min<std::uint64_t>(size, piece.size()),
                                      static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            throw TableError(m_strPath + ": " + (count < 0 ? std::strerror(errno) : "has become shorter"));
        }
        if (!output.write(piece.data(), static_cast<std::size_t>(count))) {
            return false;
        }
        offset += static_cast<std::uint64_t>(count);
        size -= static_cast<std::uint64_t>(count);
    }
    return true;
}

std::vector<PreviousTable::Item>::const_iterator PreviousTable::lowerBound(const Key& key) const {
    return std::lower_bound(m_items.begin(), m_items.end(), key,
                            [](const Item& item, const Key& wanted) { return item.key < wanted; });
}

}  // namespace Zantrix::Cli
