#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace Zantrix::Cli {

/// Room for what waits for its turn, shared by all threads of a run. It comes in chunks that are used again: giving
/// memory back to the system and asking for it anew would cost more than filling it.
class ByteStore {
public:
    static constexpr std::size_t c_uiChunkSize = std::size_t(64) * 1024;
    using Chunk = std::array<char, c_uiChunkSize>;

    /// @param limit  how many bytes there is room for
    explicit ByteStore(std::size_t limit) : m_uiLimit(limit / c_uiChunkSize) {}

    /// A chunk; null when as many as there is room for are in use, unless it is `needed`.
    std::unique_ptr<Chunk> take(bool needed);

    void giveBack(std::unique_ptr<Chunk> pChunk);

private:
    const std::size_t m_uiLimit;
    std::mutex m_mutex;  // guards what follows
    std::size_t m_uiUsed = 0;
    std::vector<std::unique_ptr<Chunk>> m_free;
};

/// Bytes that wait for their turn.
class HeldBytes {
public:
    explicit HeldBytes(ByteStore& store) : m_store(store) {}
    ~HeldBytes() { clear(); }
    HeldBytes(const HeldBytes&) = delete;
    HeldBytes& operator=(const HeldBytes&) = delete;

    /// Adds bytes; false, with nothing added, when there is no room for all of them, unless they are `needed`.
    bool append(std::string_view bytes, bool needed = false);

    void clear();

    std::size_t size() const { return m_uiSize; }

    /// Calls `write` with all bytes, piece by piece, until it returns false.
    template <typename Write>
    bool writeTo(Write write) const {
        std::size_t left = m_uiSize;
        for (const auto& pChunk : m_chunks) {
            const std::size_t piece = left < pChunk->size() ? left : pChunk->size();
            if (!write(std::string_view(pChunk->data(), piece))) {
                return false;
            }
            left -= piece;
        }
        return true;
    }

private:
    ByteStore& m_store;
    std::vector<std::unique_ptr<ByteStore::Chunk>> m_chunks;  // all but the last one are full
    std::size_t m_uiSize = 0;
};

}  // namespace Zantrix::Cli
