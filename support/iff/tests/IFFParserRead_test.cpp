#include "ChunkTrees.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <streambuf>
#include <string>

namespace {

using Zantrix::IFF::IFFParser;
using Zantrix::IFF::ReadLimits;

/// The error of a refused file, after checks of everything else that a refusal brings with it.
std::string refusal(const std::string& bytes, const ReadLimits& limits = ReadLimits()) {
    IFFParser parser(limits);
    std::istringstream before(wav::annotatedFile());
    parser.read(before);
    std::istringstream is(bytes);
    EXPECT_EQ(&parser.read(is), &is);
    EXPECT_TRUE(is.fail());
    EXPECT_FALSE(parser.isValid());
    EXPECT_FALSE(parser.isExact());
    EXPECT_TRUE(parser.getChunks().empty());
    EXPECT_TRUE(parser.getTrailingBytes().empty());
    EXPECT_TRUE(parser.getFindings().empty());
    return parser.getError();
}

/// A stream that cannot seek, and gives at most `step` bytes at once, like a pipe.
class PipeBuffer : public std::streambuf {
public:
    PipeBuffer(std::string bytes, std::size_t step) : m_strBytes(std::move(bytes)), m_uiStep(step) {}

protected:
    int_type underflow() override {
        const std::size_t size = std::min(m_uiStep, m_strBytes.size() - m_uiNext);
        if (size == 0) {
            return traits_type::eof();
        }
        setg(m_strBytes.data() + m_uiNext, m_strBytes.data() + m_uiNext, m_strBytes.data() + m_uiNext + size);
        m_uiNext += size;
        return traits_type::to_int_type(*gptr());
    }

private:
    std::string m_strBytes;
    std::size_t m_uiStep;
    std::size_t m_uiNext = 0;
};

/// A file that says it is far larger than what it gives.
class BoastingBuffer : public PipeBuffer {
public:
    BoastingBuffer(std::string bytes, off_type size) : PipeBuffer(std::move(bytes), 16), m_end(size) {}

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode) override {
        if (direction != std::ios_base::cur) {
            m_here = (direction == std::ios_base::end ? m_end : 0) + offset;
        }
        return m_here;
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode) override { return m_here = position; }

private:
    off_type m_end;
    off_type m_here = 12;  // where the header ends, and the size is asked for
};

TEST(IFFParserRead, NewParserHoldsNoFile) {
    IFFParser parser;
    EXPECT_FALSE(parser.isValid());
    EXPECT_TRUE(parser.getChunks().empty());
    EXPECT_TRUE(parser.getError().empty());
    EXPECT_TRUE(parser.getFindings().empty());
}

TEST(IFFParserRead, ChunksListsAndCuePointsBecomeATree) {
    std::istringstream is(wav::annotatedFile());
    IFFParser parser;
    EXPECT_EQ(&parser.read(is), &is);
    EXPECT_TRUE(parser.isValid());
    EXPECT_TRUE(parser.isExact());
    EXPECT_FALSE(is.fail());
    EXPECT_TRUE(is.eof());
    EXPECT_EQ(parser.getError(), "");
    EXPECT_EQ(wav::findings(parser), "");
    EXPECT_EQ(parser.getChunks().getType().toString(), "WAVE");
    EXPECT_EQ(wav::outline(parser),
              "fmt :16 data:4 cue :(cuep:24 cuep:24) LIST:adtl(ltxt:20 labl:11) LIST:INFO(ISFT:3)");
}

TEST(IFFParserRead, ChunksKnowTheirContentAndPlace) {
    const IFFParser parser = wav::parse(wav::annotatedFile());
    auto it = parser.getChunks().begin();
    EXPECT_EQ(it->getFileOffset(), 12u);  // after "RIFF", size, "WAVE"
    EXPECT_EQ(wav::content(*it), wav::fmt().substr(8));
    ++it;
    EXPECT_EQ(it->getFileOffset(), 36u);
    EXPECT_EQ(wav::content(*it), wav::data().substr(8));
    ++it;
    EXPECT_EQ(it->getFileOffset(), 48u);
    EXPECT_EQ(it->getSize(), 0u);
    EXPECT_EQ(it->getData(), nullptr);
    const auto record = std::next(it->getList()->begin());
    EXPECT_EQ(record->getFileOffset(), 84u);  // 48, header 8, count 4, first record 24
    EXPECT_EQ(wav::content(*record), wav::cueRecord(2, 1));
}

TEST(IFFParserRead, ReadsFromWhereTheStreamStands) {
    std::istringstream is("skipped" + wav::annotatedFile());
    is.seekg(7);
    IFFParser parser;
    parser.read(is);
    EXPECT_TRUE(parser.isValid());
    EXPECT_TRUE(parser.isExact());
    EXPECT_EQ(wav::written(parser), wav::annotatedFile());
}

TEST(IFFParserRead, StreamsThatCannotSeekAreReadWhole) {
    const std::string big = wav::file(wav::fmt() + wav::chunk("data", std::string(300000, 'x')));
    for (const std::size_t step : {1, 7, 4096}) {
        PipeBuffer buffer(big, step);
        std::istream is(&buffer);
        IFFParser parser;
        parser.read(is);
        EXPECT_FALSE(is.fail());
        EXPECT_EQ(wav::written(parser), big) << step;
    }
}

TEST(IFFParserRead, FlagsAndExceptionMaskOfTheStreamAreRespected) {
    std::istringstream is(wav::file(wav::fmt()));
    is.exceptions(std::ios::failbit | std::ios::badbit);
    IFFParser parser;
    EXPECT_NO_THROW(parser.read(is));
    EXPECT_TRUE(parser.isValid());
    std::istringstream refused("RIFF");
    refused.exceptions(std::ios::failbit);
    EXPECT_THROW(parser.read(refused), std::ios::failure);
    EXPECT_FALSE(parser.isValid());
    EXPECT_NE(parser.getError(), "");
}

TEST(IFFParserRead, StreamThatHasFailedOrEndedBeforeIsRefused) {
    const std::string expected = "offset 0: reading the RIFF header: the stream has failed or ended before";
    for (const std::ios::iostate state : {std::ios::failbit, std::ios::badbit, std::ios::eofbit}) {
        std::istringstream is(wav::annotatedFile());
        is.setstate(state);
        IFFParser parser;
        parser.read(is);
        EXPECT_TRUE(is.fail());
        EXPECT_FALSE(parser.isValid());
        EXPECT_EQ(parser.getError(), expected);
    }
}

TEST(IFFParserRead, FolderOpenedAsAFileIsRefused) {
    std::ifstream is("/", std::ios::binary);
    IFFParser parser;
    parser.read(is);
    EXPECT_TRUE(is.fail());
    EXPECT_FALSE(parser.isValid());
    EXPECT_EQ(parser.getError(), "offset 0: reading the RIFF header: the stream reported an error");
}

TEST(IFFParserRead, StreamWithoutABufferIsRefused) {
    std::istream is(nullptr);
    IFFParser parser;
    parser.read(is);
    EXPECT_TRUE(is.fail());
    EXPECT_FALSE(parser.isValid());
}

TEST(IFFParserRead, EveryIncompleteHeaderIsRefused) {
    const std::string header = wav::file("");
    ASSERT_EQ(header.size(), 12u);
    for (std::size_t size = 0; size < header.size(); ++size) {
        EXPECT_EQ(refusal(header.substr(0, size)),
                  "offset 0: reading the RIFF header: " + std::to_string(size) + " bytes present, 12 needed");
    }
    EXPECT_TRUE(wav::parse(header).isValid());
}

TEST(IFFParserRead, OtherFilesAreRefusedByWhatTheyAre) {
    const std::string rest = wav::u32(4) + "WAVE";
    EXPECT_EQ(refusal("RF64" + rest),
              "offset 0: reading the RIFF header: \"RF64\": files with 64-bit sizes are not supported");
    EXPECT_EQ(refusal("BW64" + rest),
              "offset 0: reading the RIFF header: \"BW64\": files with 64-bit sizes are not supported");
    EXPECT_EQ(refusal("RIFX" + rest),
              "offset 0: reading the RIFF header: \"RIFX\": files with big-endian sizes are not supported");
    EXPECT_EQ(refusal("riff" + rest), "offset 0: reading the RIFF header: \"riff\" instead of \"RIFF\"");
    EXPECT_EQ(refusal("\x7f"
                      "ELF" +
                      rest),
              "offset 0: reading the RIFF header: \"\\x7fELF\" instead of \"RIFF\"");
    EXPECT_EQ(refusal("RIFF" + wav::u32(4) + "AVI "), "offset 8: reading the form type: \"AVI \" instead of \"WAVE\"");
}

TEST(IFFParserRead, SizeChunkOf64BitFilesIsRefusedInARiffFileToo) {
    EXPECT_EQ(refusal(wav::file(wav::fmt() + wav::chunk("ds64", wav::zeros(28)))),
              "offset 36: reading a chunk header: \"ds64\": files with 64-bit sizes are not supported");
}

TEST(IFFParserRead, FilesBeyondFourGigabytesAreRefusedBeforeTheyAreRead) {
    BoastingBuffer buffer(wav::annotatedFile(), (std::streamoff{1} << 32) + 1);
    std::istream is(&buffer);
    IFFParser parser;
    parser.read(is);
    EXPECT_TRUE(is.fail());
    EXPECT_EQ(parser.getError(),
              "offset 0: reading the file: 4294967297 bytes and more, at most 4294967296 are accepted; files beyond 4 "
              "GiB are not supported");
}

TEST(IFFParserRead, StreamThatPromisesTooMuchIsReadAsFarAsItGoes) {
    BoastingBuffer buffer(wav::annotatedFile(), 50 * 1024 * 1024);
    std::istream is(&buffer);
    IFFParser parser;
    parser.read(is);
    EXPECT_FALSE(is.fail());
    EXPECT_EQ(wav::written(parser), wav::annotatedFile());
}

TEST(IFFParserRead, ByteLimitHoldsForStreamsThatCannotTellTheirSize) {
    ReadLimits limits;
    limits.uiMaxBytes = wav::annotatedFile().size();
    for (const int extra : {0, 1}) {
        PipeBuffer buffer(wav::annotatedFile() + wav::zeros(extra), 10);
        std::istream is(&buffer);
        IFFParser parser(limits);
        parser.read(is);
        EXPECT_EQ(parser.isValid(), extra == 0);
        EXPECT_EQ(is.fail(), extra == 1);
    }
}

TEST(IFFParserRead, MoreThanFourGigabytesCannotBeAllowed) {
    ReadLimits limits;
    limits.uiMaxBytes = std::numeric_limits<std::uint64_t>::max();
    BoastingBuffer buffer(wav::annotatedFile(), (std::streamoff{1} << 32) + 1);
    std::istream is(&buffer);
    IFFParser parser(limits);
    parser.read(is);
    EXPECT_FALSE(parser.isValid());
}

TEST(IFFParserRead, ChunkLimitCountsChunksAndCueRecords) {
    // 2 + 1 + 2 records + LIST with 2 + LIST with 1
    ReadLimits limits;
    limits.uiMaxChunks = 10;
    std::istringstream is(wav::annotatedFile());
    IFFParser parser(limits);
    parser.read(is);
    EXPECT_TRUE(parser.isValid());
    limits.uiMaxChunks = 9;
    EXPECT_EQ(refusal(wav::annotatedFile(), limits), "offset 180: reading a chunk header: more than 9 chunks");
    limits.uiMaxChunks = 4;
    EXPECT_EQ(refusal(wav::annotatedFile(), limits), "offset 84: reading a chunk header: more than 4 chunks");
}

TEST(IFFParserRead, ReadingAgainReplacesEverything) {
    IFFParser parser = wav::parse(wav::fileOfSize(99, wav::fmt()) + "x");
    ASSERT_FALSE(parser.getFindings().empty());
    std::istringstream is(wav::file(wav::data()));
    parser.read(is);
    EXPECT_TRUE(parser.isValid());
    EXPECT_TRUE(parser.isExact());
    EXPECT_EQ(wav::findings(parser), "");
    EXPECT_EQ(wav::outline(parser), "data:4");
}

TEST(IFFParserRead, ParserThatWasMovedFromStillHoldsItsFile) {
    std::istringstream is(wav::annotatedFile());
    IFFParser parser;
    parser.read(is);
    const IFFParser taken = std::move(parser);
    for (const IFFParser* pEither : {&taken, static_cast<const IFFParser*>(&parser)}) {
        EXPECT_TRUE(pEither->isValid());
        EXPECT_FALSE(pEither->getChunks().empty());
    }
    std::ostringstream os;
    parser.write(os);
    EXPECT_EQ(os.str(), wav::annotatedFile());
}

TEST(IFFParserRead, CopyIsAFileOfItsOwn) {
    IFFParser original = wav::parse(wav::annotatedFile());
    const IFFParser copy = original;
    original.getChunks().erase(original.getChunks().begin());
    std::istringstream nothing;
    IFFParser assigned;
    assigned = original;
    original.read(nothing);
    EXPECT_FALSE(original.isValid());
    EXPECT_EQ(wav::written(copy), wav::annotatedFile());
    EXPECT_EQ(wav::outline(assigned), wav::outline(copy).substr(8));
}

}  // namespace
