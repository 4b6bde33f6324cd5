#include "RawChunk.h"

namespace Zantrix::IFF {

namespace {

// How many chunks seem to follow one another from here on, at most c_uiLookAhead; an exact end counts as that many.
// Constant time, so that asking at every chunk of a file stays linear.
unsigned countPlausibleChunks(ByteCursor bytes, bool padded) {
    for (unsigned count = 0; count < c_uiLookAhead; ++count) {
        if (bytes.isAtEnd()) {
            break;
        }
        ChunkId id;
        std::uint32_t size = 0;
        if (!bytes.read(id) || !id.isPrintable() || !bytes.read(size) || !bytes.skip(size)) {
            return count;
        }
        if (padded && size % 2 != 0) {
            bytes.skip(1);
        }
    }
    return c_uiLookAhead;
}

// Takes the padding byte after content of an odd size. Some writers forget it, others leave rubbish in it. No
// identifier begins with a zero byte, so a zero is padding; for anything else what follows decides, and padding is
// preferred.
void takePadding(ByteCursor& bytes, RawChunk& chunk) {
    ByteCursor afterPadding = bytes;
    std::string_view byte;
    if (!afterPadding.read(1, byte)) {
        chunk.ePadding = RawChunk::Padding::Missing;
        return;
    }
    if (byte[0] != 0 && countPlausibleChunks(bytes, false) > countPlausibleChunks(afterPadding, true)) {
        chunk.ePadding = RawChunk::Padding::Missing;
        return;
    }
    chunk.ePadding = byte[0] == 0 ? RawChunk::Padding::Zero : RawChunk::Padding::NonZero;
    chunk.cPadding = byte[0];
    bytes = afterPadding;
}

}  // namespace

bool takeChunk(ByteCursor& bytes, RawChunk& chunk) {
    ByteCursor cursor = bytes;
    RawChunk result;
    result.uiOffset = bytes.getOffset();
    if (!cursor.read(result.id) || !cursor.read(result.uiDeclaredSize) || result.id == ChunkId()) {
        return false;
    }
    if (!cursor.narrow(result.uiDeclaredSize, result.content)) {
        if (!result.id.isPrintable()) {
            return false;
        }
        cursor.narrow(cursor.remaining(), result.content);
    } else if (result.uiDeclaredSize % 2 != 0) {
        takePadding(cursor, result);
    }
    chunk = result;
    bytes = cursor;
    return true;
}

bool dividesIntoChunks(ByteCursor bytes, bool allowTail) {
    RawChunk chunk;
    while (takeChunk(bytes, chunk)) {
        if (chunk.isCutOff() || (!allowTail && !chunk.id.isPrintable())) {
            return false;
        }
    }
    return allowTail || bytes.isAtEnd();
}

}  // namespace Zantrix::IFF
