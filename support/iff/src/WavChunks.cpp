#include <murvane/iff/ByteCursor.h>
#include <murvane/iff/WavChunks.h>

#include <string_view>
#include <utility>

namespace Zantrix::IFF {

namespace {

ByteCursor cursorOver(const char* data, std::size_t size) {
    return ByteCursor(data == nullptr ? std::string_view() : std::string_view(data, size));
}

// Reads fields one after the other; false as soon as one is missing.
template <typename... Fields>
bool readAll(ByteCursor& bytes, Fields&... fields) {
    return (bytes.read(fields) && ...);
}

void append(std::vector<char>& data, ChunkId id) {
    appendId(data, id);
}

template <std::unsigned_integral T>
void append(std::vector<char>& data, T value) {
    appendLittleEndian(data, value);
}

template <typename... Fields>
void writeAll(std::vector<char>& data, const Fields&... fields) {
    data.clear();
    data.reserve((sizeof(Fields) + ...));
    (append(data, fields), ...);
}

std::vector<char> toVector(std::string_view bytes) {
    return {bytes.begin(), bytes.end()};
}

}  // namespace

bool WavFmtChunk::decode(const char* data, std::size_t size) {
    ByteCursor bytes = cursorOver(data, size);
    WavFmtChunk result;
    if (!readAll(bytes, result.m_usCompressionCode, result.m_usNbOfChannels, result.m_uiSampleRate,
                 result.m_uiAverageBytesPerSecond, result.m_usBlockAlign, result.m_usSignBitsPerSample)) {
        return false;
    }
    result.m_vExtra = toVector(bytes.getRest());
    *this = std::move(result);
    return true;
}

void WavFmtChunk::encode(std::vector<char>& data) const {
    writeAll(data, m_usCompressionCode, m_usNbOfChannels, m_uiSampleRate, m_uiAverageBytesPerSecond, m_usBlockAlign,
             m_usSignBitsPerSample);
    data.insert(data.end(), m_vExtra.begin(), m_vExtra.end());
}

bool WavCuePointChunk::decode(const char* data, std::size_t size) {
    ByteCursor bytes = cursorOver(data, size);
    WavCuePointChunk result;
    if (!readAll(bytes, result.m_uiIdentifier, result.m_uiPosition, result.m_dataChunkId, result.m_uiChunkStart,
                 result.m_uiBlockStart, result.m_uiSampleOffset)) {
        return false;
    }
    *this = result;
    return true;
}

void WavCuePointChunk::encode(std::vector<char>& data) const {
    writeAll(data, m_uiIdentifier, m_uiPosition, m_dataChunkId, m_uiChunkStart, m_uiBlockStart, m_uiSampleOffset);
}

bool WavLabelChunk::decode(const char* data, std::size_t size) {
    ByteCursor bytes = cursorOver(data, size);
    std::uint32_t identifier = 0;
    if (!bytes.read(identifier)) {
        return false;
    }
    const std::string_view text = bytes.getRest();
    m_uiIdentifier = identifier;
    m_strText = text.substr(0, text.find('\0'));
    return true;
}

void WavLabelChunk::encode(std::vector<char>& data) const {
    writeAll(data, m_uiIdentifier);
    const std::string_view text = std::string_view(m_strText).substr(0, m_strText.find('\0'));
    data.insert(data.end(), text.begin(), text.end());
    data.push_back('\0');
}

bool WavLabeledTextChunk::decode(const char* data, std::size_t size) {
    ByteCursor bytes = cursorOver(data, size);
    WavLabeledTextChunk result;
    if (!readAll(bytes, result.m_uiIdentifier, result.m_uiSampleLength, result.m_purpose, result.m_usCountry,
                 result.m_usLanguage, result.m_usDialect, result.m_usCodePage)) {
        return false;
    }
    result.m_vText = toVector(bytes.getRest());
    *this = std::move(result);
    return true;
}

void WavLabeledTextChunk::encode(std::vector<char>& data) const {
    writeAll(data, m_uiIdentifier, m_uiSampleLength, m_purpose, m_usCountry, m_usLanguage, m_usDialect, m_usCodePage);
    data.insert(data.end(), m_vText.begin(), m_vText.end());
}

}  // namespace Zantrix::IFF
