#pragma once

#include <murvane/iff/ByteCursor.h>

#include <cstdint>

namespace Zantrix::IFF {

/// How many chunks that seem to follow one another settle whether a byte before them is padding.
inline constexpr unsigned c_uiLookAhead = 4;

/// One chunk as it stands in the bytes around it, before anything in it is looked at.
struct RawChunk {
    enum class Padding { None, Zero, NonZero, Missing, Outside };

    ChunkId id;
    std::uint64_t uiOffset = 0;        // of the header
    std::uint32_t uiDeclaredSize = 0;  // what the header says
    ByteCursor content{{}};            // what is there
    Padding ePadding = Padding::None;  // None: even, or cut off; Outside: beyond the end of the RIFF chunk
    char cPadding = 0;

    bool isCutOff() const { return content.remaining() < uiDeclaredSize; }
    std::uint64_t getContentEnd() const { return content.getOffset() + content.remaining(); }
};

/// Takes the next chunk, its padding byte included. Content that reaches past the end is cut off there.
///
/// @return false, the cursor unmoved, if what follows is no chunk: fewer than 8 bytes, four zero bytes in the place
///         of an identifier (filler), or an unprintable identifier with a size that reaches past the end
bool takeChunk(ByteCursor& bytes, RawChunk& chunk);

/// Whether the bytes are chunks, none of them cut off. Leftover bytes at the end that are no chunk are accepted only
/// if `allowTail`; so are identifiers that are not printable.
bool dividesIntoChunks(ByteCursor bytes, bool allowTail);

}  // namespace Zantrix::IFF
