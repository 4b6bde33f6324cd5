#include "shell/WavHeader.h"

#include <array>
#include <cstring>
#include <fstream>

namespace Zantrix::Cli {

namespace {

// More chunks than any sound program writes; a file of nothing but empty chunks is not worth more time.
constexpr int c_iMaxChunks = 4096;

// The smallest of the sizes that programs put in when they cannot come back: 0x7FFFF000, 0x80000000, 0xFFFFFFFF, ...
constexpr std::uint64_t c_uiSmallestStreamedSize = 0x7FFFF000;

constexpr std::size_t c_uiRiffHeaderSize = 12;
constexpr std::size_t c_uiChunkHeaderSize = 8;

struct ChunkHeader {
    std::array<char, 4> id{};
    std::uint64_t size = 0;

    bool is(const char* name) const { return std::memcmp(id.data(), name, id.size()) == 0; }

    bool isPrintable() const {
        for (const char c : id) {
            if (c < ' ' || c > '~') {
                return false;
            }
        }
        return true;
    }
};

// Reads within a file of a known size.
class ChunkWalker {
public:
    explicit ChunkWalker(const std::string& path) : m_file(path, std::ios::binary | std::ios::ate) {
        m_uiFileSize = m_file ? static_cast<std::uint64_t>(m_file.tellg()) : 0;
    }

    std::uint64_t fileSize() const { return m_uiFileSize; }

    bool read(std::uint64_t offset, char* bytes, std::size_t size) {
        if (offset > m_uiFileSize || size > m_uiFileSize - offset) {
            return false;
        }
        m_file.seekg(static_cast<std::streamoff>(offset));
        return static_cast<bool>(m_file.read(bytes, static_cast<std::streamsize>(size)));
    }

    bool readHeader(std::uint64_t offset, ChunkHeader& header) {
        std::array<unsigned char, c_uiChunkHeaderSize> bytes{};
        if (!read(offset, reinterpret_cast<char*>(bytes.data()), bytes.size())) {
            return false;
        }
        std::memcpy(header.id.data(), bytes.data(), header.id.size());
        header.size = bytes[4] | (bytes[5] << 8) | (bytes[6] << 16) | (std::uint64_t(bytes[7]) << 24);
        return true;
    }

    // Whether nothing but whole chunks stands between `offset` and the end.
    bool isChunksToTheEnd(std::uint64_t offset) {
        ChunkHeader header;
        for (int i = 0; i < c_iMaxChunks && offset < m_uiFileSize; ++i) {
            if (!readHeader(offset, header) || !header.isPrintable() || header.size > m_uiFileSize - offset - 8) {
                return false;
            }
            offset += 8 + header.size + header.size % 2;
        }
        return offset >= m_uiFileSize;
    }

private:
    std::ifstream m_file;
    std::uint64_t m_uiFileSize = 0;
};

WavHeader judge(ChunkWalker& walker, std::uint64_t dataOffset, std::uint64_t claimed) {
    WavHeader header;
    header.claimedBytes = claimed;
    header.presentBytes = walker.fileSize() - dataOffset;
    if (claimed > header.presentBytes) {
        header.size = claimed >= c_uiSmallestStreamedSize ? WavHeader::Size::Streamed : WavHeader::Size::Cut;
    } else if (claimed == 0 && !walker.isChunksToTheEnd(dataOffset)) {
        header.size = WavHeader::Size::NeverSet;
    }
    return header;
}

bool isWav(ChunkWalker& walker) {
    std::array<char, c_uiRiffHeaderSize> start{};
    return walker.read(0, start.data(), start.size()) && std::memcmp(start.data(), "RIFF", 4) == 0 &&
           std::memcmp(start.data() + 8, "WAVE", 4) == 0;
}

std::optional<WavHeader::Format> readFormat(ChunkWalker& walker, std::uint64_t offset, std::uint64_t size) {
    std::array<unsigned char, 16> bytes{};
    if (size < bytes.size() || !walker.read(offset, reinterpret_cast<char*>(bytes.data()), bytes.size())) {
        return std::nullopt;
    }
    WavHeader::Format format;
    format.rate = bytes[4] | (bytes[5] << 8) | (bytes[6] << 16) | (std::uint32_t(bytes[7]) << 24);
    format.bitsPerSample = static_cast<std::uint16_t>(bytes[14] | (bytes[15] << 8));
    return format;
}

}  // namespace

std::string WavHeader::describe() const {
    const std::string claimed = std::to_string(claimedBytes) + " bytes of audio";
    const std::string present = std::to_string(presentBytes);
    switch (size) {
        case Size::Fits:
            break;
        case Size::Cut:
            return "is cut short: its header promises " + claimed + ", the file holds " + present;
        case Size::Streamed:
            return "its header gives no true length: it says " + claimed + ", the file holds " + present;
        case Size::NeverSet:
            return "its header was never completed: it says " + claimed + " though " + present + " follow";
    }
    return {};
}

std::optional<WavHeader> readWavHeader(const std::string& path) {
    ChunkWalker walker(path);
    if (!isWav(walker)) {
        return std::nullopt;
    }
    std::optional<WavHeader::Format> format;
    std::uint64_t offset = c_uiRiffHeaderSize;
    ChunkHeader chunk;
    for (int i = 0; i < c_iMaxChunks && walker.readHeader(offset, chunk); ++i) {
        offset += c_uiChunkHeaderSize;
        if (chunk.is("data")) {
            WavHeader header = judge(walker, offset, chunk.size);
            header.format = format;
            return header;
        }
        if (chunk.is("fmt ")) {
            format = readFormat(walker, offset, chunk.size);
        }
        offset += chunk.size + chunk.size % 2;  // sums of 32-bit sizes: far from wrapping
    }
    return std::nullopt;
}

std::optional<WavHeader> readWavHeader(const std::string& path, std::uint64_t dataChunk) {
    ChunkWalker walker(path);
    ChunkHeader chunk;
    return walker.readHeader(dataChunk, chunk) ? std::optional(judge(walker, dataChunk + 8, chunk.size)) : std::nullopt;
}

std::optional<WavChunkCounts> countWavChunks(const std::string& path) {
    ChunkWalker walker(path);
    if (!isWav(walker)) {
        return std::nullopt;
    }
    WavChunkCounts counts;
    ChunkHeader chunk;
    std::uint64_t offset = c_uiRiffHeaderSize;
    for (int i = 0; walker.readHeader(offset, chunk); ++i) {
        if (i == c_iMaxChunks) {
            counts.areAllCounted = false;
            break;
        }
        counts.data += chunk.is("data") ? 1 : 0;
        counts.lists += chunk.is("LIST") ? 1 : 0;
        offset += c_uiChunkHeaderSize + chunk.size + chunk.size % 2;
    }
    return counts;
}

}  // namespace Zantrix::Cli
