// Input by someone who means harm, and input that is merely large.
#include "ChunkTrees.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace {

using namespace Zantrix::IFF;
using wav::chunk;
using wav::file;
using wav::u32;

/// What holds for any bytes whatever: refused with a reason, or read, and written so that it reads again. Touches every
/// byte of the tree.
void expectSound(const std::string& bytes) {
    IFFParser parser = wav::parse(bytes);
    ASSERT_EQ(parser.isValid(), parser.getError().empty());
    if (!parser.isValid()) {
        ASSERT_EQ(parser.getError().substr(0, 7), "offset ");
        return;
    }
    const std::string output = wav::written(parser);
    if (parser.isExact()) {
        ASSERT_EQ(output, bytes);
    } else {
        ASSERT_NE(output, bytes);
        ASSERT_FALSE(parser.getFindings().empty());
    }
    ASSERT_TRUE(wav::parse(output).isValid());
}

/// `innermost`, of an even size, in that many lists one within the other.
std::string nested(std::uint32_t depth, const std::string& innermost) {
    std::string bytes;
    for (std::uint32_t i = depth; i > 0; --i) {
        bytes += "LIST" + u32(12 * (i - 1) + 4 + static_cast<std::uint32_t>(innermost.size())) + "nest";
    }
    return bytes + innermost;
}

/// Far below what anything but linear work could take at the sizes of these tests, far above what they need.
class Stopwatch {
public:
    ~Stopwatch() { EXPECT_LT(std::chrono::steady_clock::now() - m_start, std::chrono::seconds(60)); }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

TEST(HostileInput, FileCutOffAnywhere) {
    const std::string whole = wav::annotatedFile();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        expectSound(whole.substr(0, size));
        const IFFParser parser = wav::parse(whole.substr(0, size));
        EXPECT_EQ(parser.isValid(), size >= 12);
        EXPECT_FALSE(parser.isExact());
    }
}

TEST(HostileInput, EveryByteChangedToEveryValue) {
    const std::string whole = wav::annotatedFile();
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (int change = 1; change < 256; ++change) {
            std::string bytes = whole;
            bytes[i] = static_cast<char>(bytes[i] ^ change);
            expectSound(bytes);
            if (HasFatalFailure()) {
                FAIL() << "byte " << i << " changed to " << static_cast<int>(static_cast<unsigned char>(bytes[i]));
            }
        }
    }
}

TEST(HostileInput, EverySizeFieldWithSizesAtItsLimits) {
    const std::string whole = wav::annotatedFile();
    for (std::size_t i = 4; i + 4 <= whole.size(); ++i) {
        for (const std::uint32_t size : {0u, 1u, 0x7fffffffu, 0x80000000u, 0xfffffff7u, 0xfffffff8u, 0xffffffffu}) {
            SCOPED_TRACE(testing::Message() << "offset " << i << ", size " << size);
            expectSound(whole.substr(0, i) + u32(size) + whole.substr(i + 4));
        }
    }
}

TEST(HostileInput, NestingUpToTheLimitIsReadAndBeyondItRefused) {
    const std::string deepest = file(nested(64, wav::labl(1, "deep")));
    IFFParser parser = wav::parse(deepest);
    ASSERT_TRUE(parser.isValid()) << parser.getError();
    EXPECT_EQ(wav::written(parser), deepest);
    ChunkPos position;
    EXPECT_TRUE(parser.find("labl", position));
    const IFFParser copy = parser;
    EXPECT_EQ(wav::written(copy), deepest);

    // Each list adds 12 bytes before the next.
    EXPECT_EQ(wav::parse(file(nested(65, ""))).getError(),
              "offset 780: reading a list: lists are nested more than 64 deep");
    EXPECT_EQ(wav::parse(file(nested(1000, ""))).getError(),
              "offset 780: reading a list: lists are nested more than 64 deep");
    EXPECT_EQ(wav::parse(file(nested(100000, ""))).getError(),
              "offset 780: reading a list: lists are nested more than 64 deep");
}

TEST(HostileInput, MillionChunksAreReadInLinearTime) {
    const Stopwatch stopwatch;
    std::string chunks;
    for (int i = 0; i < 1000000; ++i) {
        chunks += "JUNK" + wav::zeros(4);
    }
    const std::string bytes = file(chunks);
    const IFFParser parser = wav::parse(bytes);
    ASSERT_TRUE(parser.isValid()) << parser.getError();
    EXPECT_EQ(parser.getChunks().size(), 1000000u);
    EXPECT_EQ(wav::written(parser), bytes);
}

TEST(HostileInput, ChunksBeyondTheCapAreRefused) {
    const Stopwatch stopwatch;
    const std::uint32_t count = (std::uint32_t{1} << 22) + 1;
    std::string bytes = "RIFF" + u32(4 + 8 * count) + "WAVE";
    bytes.reserve(12 + std::size_t{8} * count);
    const std::string empty = "JUNK" + wav::zeros(4);
    for (std::uint32_t i = 0; i < count; ++i) {
        bytes += empty;
    }
    EXPECT_EQ(wav::parse(bytes).getError(), "offset 33554444: reading a chunk header: more than 4194304 chunks");
}

TEST(HostileInput, DoubtfulPaddingOfManyChunksIsDecidedInLinearTime) {
    const Stopwatch stopwatch;
    std::string padded;
    std::string unpadded;
    for (int i = 0; i < 200000; ++i) {
        padded += "odd " + u32(1) + "xQ";
        unpadded += "odd " + u32(1) + "x";
    }
    for (const std::string& chunks : {padded, unpadded}) {
        const IFFParser parser = wav::parse(file(chunks));
        EXPECT_EQ(parser.getChunks().size(), 200000u);
        EXPECT_EQ(wav::written(parser), file(chunks));
    }
}

TEST(LargeInput, HundredThousandAnnotationsAreFoundRemovedAndAddedInLinearTime) {
    const Stopwatch stopwatch;
    constexpr std::uint32_t c_uiCount = 100000;
    std::string records = u32(c_uiCount);
    std::string texts = "adtl";
    for (std::uint32_t id = 1; id <= c_uiCount; ++id) {
        records += wav::cueRecord(id, id);
        texts += wav::ltxt(id, 1) + wav::labl(id, "SF_440");
    }
    const std::string bytes = file(wav::fmt() + wav::data() + chunk("cue ", records) + chunk("LIST", texts));
    IFFParser parser = wav::parse(bytes);
    ASSERT_TRUE(parser.isExact());
    EXPECT_EQ(wav::written(parser), bytes);

    ChunkPos position;
    std::uint32_t points = 0;
    for (bool found = parser.find("cuep", position); found; found = parser.findNext(position)) {
        ++points;
    }
    EXPECT_EQ(points, c_uiCount);

    ChunkList* list = nullptr;
    std::uint32_t removed = 0;
    for (const ChunkId id : {ChunkId("cue "), ChunkId("ltxt"), ChunkId("labl"), ChunkId("note")}) {
        for (bool found = parser.find(id, position); found; found = parser.findNext(position)) {
            list = position.getList();
            parser.remove(position);
            ++removed;
        }
    }
    EXPECT_EQ(removed, 1 + 2 * c_uiCount);
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(list->empty());
    EXPECT_EQ(wav::outline(parser), "fmt :16 data:4 LIST:adtl()");

    Chunk& cue = parser.getChunks().append(Chunk("cue "));
    for (std::uint32_t id = 1; id <= c_uiCount; ++id) {
        const std::string record = wav::cueRecord(id, id);
        cue.getList()->append(Chunk("cuep")).setData(record.data(), 24);
        list->append(Chunk("ltxt")).setData(wav::ltxt(id, 1).substr(8).data(), 20);
        list->append(Chunk("labl")).setData(wav::labl(id, "SF_440").substr(8).data(), 11);
    }
    EXPECT_EQ(wav::written(parser), file(wav::fmt() + wav::data() + chunk("LIST", texts) + chunk("cue ", records)));
}

}  // namespace
