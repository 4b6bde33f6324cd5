#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Builds small WAV files as strings, chunk by chunk.
namespace wav {

inline std::string u16(unsigned value) {
    return {static_cast<char>(value & 0xff), static_cast<char>(value >> 8 & 0xff)};
}

inline std::string u32(std::uint32_t value) {
    return u16(value & 0xffff) + u16(value >> 16);
}

/// Zero bytes, which string literals cannot hold.
inline std::string zeros(std::size_t count) {
    return std::string(count, '\0');
}

/// Identifier, true size, content, and a zero byte after an odd size.
inline std::string chunk(const std::string& id, const std::string& content) {
    return id + u32(static_cast<std::uint32_t>(content.size())) + content + zeros(content.size() % 2);
}

/// A whole file of these chunks, with the true size.
inline std::string file(const std::string& chunks) {
    return "RIFF" + u32(static_cast<std::uint32_t>(chunks.size() + 4)) + "WAVE" + chunks;
}

/// The same where the header says another size.
inline std::string fileOfSize(std::uint32_t size, const std::string& chunks) {
    return "RIFF" + u32(size) + "WAVE" + chunks;
}

/// 24 bytes.
inline std::string fmt() {
    return "fmt " + u32(16)  // identifier, size
           + u16(1)          // PCM
           + u16(1)          // channels
           + u32(8000)       // samples per second
           + u32(16000)      // bytes per second
           + u16(2)          // bytes per block
           + u16(16);        // bits per sample
}

/// 12 bytes.
inline std::string data() {
    return "data" + u32(4)           // identifier, size
           + u16(100) + u16(65436);  // samples 100 and -100
}

inline std::string cueRecord(std::uint32_t id, std::uint32_t sample) {
    return u32(id) + u32(sample)       // identifier, position
           + "data" + u32(0) + u32(0)  // chunk with the sample, chunk start, block start
           + u32(sample);              // sample offset
}

inline std::string ltxt(std::uint32_t id, std::uint32_t length) {
    return "ltxt" + u32(20)         // identifier, size
           + u32(id) + u32(length)  // cue point, sample length
           + "rgn "                 // purpose
           + u16(0) + u16(0)        // country, language
           + u16(0) + u16(0);       // dialect, code page
}

inline std::string labl(std::uint32_t id, const std::string& text) {
    return chunk("labl", u32(id) + text + zeros(1));
}

/// fmt, data, two cue points, LIST/adtl with a labelled text and a label, LIST/INFO with an odd chunk.
inline std::string annotatedFile() {
    return file(fmt() + data() + chunk("cue ", u32(2) + cueRecord(1, 0) + cueRecord(2, 1)) +
                chunk("LIST", "adtl" + ltxt(1, 1) + labl(1, "SF_440")) + chunk("LIST", "INFO" + chunk("ISFT", "abc")));
}

}  // namespace wav
