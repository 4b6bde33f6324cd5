#pragma once

#include <murvane/iff/ChunkId.h>

#include <cstddef>

/// The chunks that the tree itself has to know; every other one is bytes to it.
namespace Zantrix::IFF {

inline constexpr ChunkId kRiffId("RIFF");
inline constexpr ChunkId kWaveType("WAVE");
inline constexpr ChunkId kCueId("cue ");
inline constexpr ChunkId kCueRecordId("cuep");
inline constexpr ChunkId kAnnotationsType("adtl");

inline constexpr std::size_t kHeaderSize = 8;       // identifier, size
inline constexpr std::size_t kRiffHeaderSize = 12;  // the same and the form type
inline constexpr std::size_t kCueRecordSize = 24;

/// Some field recorders write "list".
inline constexpr bool isListId(ChunkId id) {
    return id == ChunkId("LIST") || id == ChunkId("list");
}

}  // namespace Zantrix::IFF
