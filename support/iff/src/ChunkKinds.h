#pragma once

#include <murvane/iff/ChunkId.h>

#include <cstddef>

/// The chunks that the tree itself has to know; every other one is bytes to it.
namespace Zantrix::IFF {

inline constexpr ChunkId c_riffId("RIFF");
inline constexpr ChunkId c_waveType("WAVE");
inline constexpr ChunkId c_cueId("cue ");
inline constexpr ChunkId c_cueRecordId("cuep");
inline constexpr ChunkId c_audioId("data");
inline constexpr ChunkId c_annotationsType("adtl");
inline constexpr ChunkId c_sizes64Id("ds64");

inline constexpr std::size_t c_uiHeaderSize = 8;       // identifier, size
inline constexpr std::size_t c_uiRiffHeaderSize = 12;  // the same and the form type
inline constexpr std::size_t c_uiCueRecordSize = 24;

/// Some field recorders write "list".
inline constexpr bool isListId(ChunkId id) {
    return id == ChunkId("LIST") || id == ChunkId("list");
}

}  // namespace Zantrix::IFF
