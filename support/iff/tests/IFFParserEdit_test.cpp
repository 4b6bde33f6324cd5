#include "ChunkTrees.h"

#include <murvane/iff/WavChunks.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Zantrix::IFF;
using wav::chunk;
using wav::file;
using wav::fmt;
using wav::labl;
using wav::u32;

/// The contents of all chunks with this identifier, in the order of the search.
std::string contentsOf(IFFParser& parser, ChunkId id) {
    std::string text;
    ChunkPos position;
    for (bool found = parser.find(id, position); found; found = parser.findNext(position)) {
        EXPECT_EQ(position.getChunk()->getId(), id);
        text += wav::content(*position.getChunk()) + "|";
    }
    EXPECT_FALSE(position.isValid());
    return text;
}

std::string nestedFile() {
    return file(chunk("note", "1") +
                chunk("LIST", "aaaa" + chunk("note", "2") + chunk("LIST", "bbbb" + chunk("note", "3")) +
                                  chunk("LIST", "cccc") + chunk("note", "4")) +
                chunk("LIST", "dddd" + chunk("LIST", "eeee" + chunk("note", "5"))) + chunk("note", "6"));
}

Chunk withData(ChunkId id, const std::string& content) {
    Chunk chunk(id);
    chunk.setData(content.data(), static_cast<unsigned>(content.size()));
    return chunk;
}

TEST(IFFParserFind, GoesDepthFirstInFileOrder) {
    IFFParser parser = wav::parse(nestedFile());
    EXPECT_EQ(contentsOf(parser, "note"), "1|2|3|4|5|6|");
}

TEST(IFFParserFind, VisitsAListBeforeWhatIsInIt) {
    IFFParser parser = wav::parse(nestedFile());
    std::string types;
    ChunkPos position;
    for (bool found = parser.find("LIST", position); found; found = parser.findNext(position)) {
        types += position.getChunk()->getList()->getType().toString() + " ";
    }
    EXPECT_EQ(types, "aaaa bbbb cccc dddd eeee ");
}

TEST(IFFParserFind, PositionTellsChunkListAndOwner) {
    IFFParser parser = wav::parse(wav::annotatedFile());
    ChunkPos position;
    EXPECT_FALSE(position.isValid());
    EXPECT_EQ(position.getChunk(), nullptr);
    EXPECT_EQ(position.getList(), nullptr);
    EXPECT_EQ(position.getOwner(), nullptr);

    ASSERT_TRUE(parser.find("fmt ", position));
    EXPECT_TRUE(position.isValid());
    EXPECT_EQ(position.getList(), &parser.getChunks());
    EXPECT_EQ(position.getOwner(), nullptr);

    ASSERT_TRUE(parser.find("labl", position));
    EXPECT_EQ(wav::content(*position.getChunk()), u32(1) + "SF_440" + wav::zeros(1));
    EXPECT_EQ(position.getOwner()->getId(), ChunkId("LIST"));
    EXPECT_EQ(position.getOwner()->getList(), position.getList());

    ASSERT_TRUE(parser.find("cuep", position));
    EXPECT_EQ(position.getOwner()->getId(), ChunkId("cue "));
    ASSERT_TRUE(parser.findNext(position));
    EXPECT_EQ(wav::content(*position.getChunk()), wav::cueRecord(2, 1));
    EXPECT_FALSE(parser.findNext(position));
    EXPECT_FALSE(position.isValid());
    EXPECT_FALSE(parser.findNext(position)) << "asked again after the end";
}

TEST(IFFParserFind, MissesWhatIsNotThere) {
    IFFParser parser = wav::parse(wav::annotatedFile());
    ChunkPos position;
    EXPECT_FALSE(parser.find("note", position));
    EXPECT_FALSE(parser.find("list", position)) << "case matters";
    EXPECT_FALSE(parser.find("RIFF", position)) << "the file itself is not in the tree";
    EXPECT_FALSE(position.isValid());
    EXPECT_FALSE(parser.findNext(position));
    ChunkPos unused;
    EXPECT_FALSE(parser.findNext(unused));
    IFFParser empty;
    EXPECT_FALSE(empty.find("fmt ", position));
}

TEST(IFFParserFind, SurvivesChangesElsewhere) {
    IFFParser parser = wav::parse(nestedFile());
    ChunkPos position;
    ASSERT_TRUE(parser.find("note", position) && parser.findNext(position) && parser.findNext(position));
    ASSERT_EQ(wav::content(*position.getChunk()), "3");
    parser.getChunks().erase(parser.getChunks().begin());
    parser.getChunks().append(withData("note", "7"));
    position.getList()->append(withData("note", "3b"));
    ASSERT_TRUE(parser.findNext(position));
    EXPECT_EQ(wav::content(*position.getChunk()), "3b");
    EXPECT_EQ(contentsOf(parser, "note"), "2|3|3b|4|5|6|7|");
}

TEST(IFFParserFindOwner, LeadsToTheChunkWithThatList) {
    IFFParser parser = wav::parse(nestedFile());
    ChunkPos note;
    ASSERT_TRUE(parser.find("note", note) && parser.findNext(note) && parser.findNext(note));
    ChunkPos owner;
    ASSERT_TRUE(parser.findOwner(*note.getList(), owner));
    EXPECT_EQ(owner.getChunk(), note.getOwner());
    EXPECT_EQ(owner.getChunk()->getList()->getType(), ChunkId("bbbb"));
    ASSERT_TRUE(parser.findNext(owner));
    EXPECT_EQ(owner.getChunk()->getList()->getType(), ChunkId("cccc")) << "goes on with the owner's identifier";

    EXPECT_FALSE(parser.findOwner(parser.getChunks(), owner));
    EXPECT_FALSE(owner.isValid());
    const Chunk stranger("LIST");
    EXPECT_FALSE(parser.findOwner(*stranger.getList(), owner));
}

TEST(IFFParserRemove, TakesOutOneAndGoesOnBehindIt) {
    IFFParser parser = wav::parse(nestedFile());
    ChunkPos position;
    std::string removed;
    for (bool found = parser.find("note", position); found; found = parser.findNext(position)) {
        removed += wav::content(*position.getChunk());
        parser.remove(position);
        EXPECT_FALSE(position.isValid());
        EXPECT_EQ(position.getChunk(), nullptr);
    }
    EXPECT_EQ(removed, "123456");
    EXPECT_EQ(wav::outline(parser), "LIST:aaaa(LIST:bbbb() LIST:cccc()) LIST:dddd(LIST:eeee())");
}

TEST(IFFParserRemove, OfAListGoesOnBehindItsContents) {
    IFFParser parser = wav::parse(nestedFile());
    ChunkPos position;
    ASSERT_TRUE(parser.find("LIST", position));
    parser.remove(position);
    ASSERT_TRUE(parser.findNext(position));
    EXPECT_EQ(position.getChunk()->getList()->getType(), ChunkId("dddd"));
    EXPECT_EQ(contentsOf(parser, "note"), "1|5|6|");
}

TEST(IFFParserRemove, DoesNothingWithoutAChunk) {
    IFFParser parser = wav::parse(wav::annotatedFile());
    ChunkPos position;
    parser.remove(position);
    ASSERT_TRUE(parser.find("LIST", position));
    parser.remove(position);
    parser.remove(position);
    EXPECT_EQ(wav::outline(parser), "fmt :16 data:4 cue :(cuep:24 cuep:24) LIST:INFO(ISFT:3)");
}

TEST(IFFParserWrite, SizesFollowReplacedData) {
    IFFParser parser = wav::parse(file(fmt() + chunk("data", "abcd") + chunk("LIST", "adtl" + labl(1, "a"))));
    ChunkPos position;
    ASSERT_TRUE(parser.find("data", position));
    position.getChunk()->setData("abcde", 5);
    ASSERT_TRUE(parser.find("labl", position));
    const std::string text = u32(1) + "longer than before" + wav::zeros(1);
    position.getChunk()->setData(text.data(), static_cast<unsigned>(text.size()));
    EXPECT_EQ(wav::written(parser),
              file(fmt() + chunk("data", "abcde") + chunk("LIST", "adtl" + labl(1, "longer than before"))));
}

TEST(IFFParserWrite, NewAnnotationsAreWrittenAsCountRecordsAndLists) {
    IFFParser parser = wav::parse(file(fmt() + wav::data()));
    Chunk cue("cue ");
    Chunk list("LIST");
    list.getList()->setType("adtl");
    for (std::uint32_t id = 1; id <= 2; ++id) {
        std::vector<char> bytes;
        WavCuePointChunk point;
        point.m_uiIdentifier = id;
        point.m_uiPosition = point.m_uiSampleOffset = 10 * id;
        point.encode(bytes);
        cue.getList()->append(Chunk("cuep")).setData(bytes.data(), static_cast<unsigned>(bytes.size()));
        WavLabeledTextChunk labeledText;
        labeledText.m_uiIdentifier = id;
        labeledText.m_uiSampleLength = 5;
        labeledText.encode(bytes);
        list.getList()->append(Chunk("ltxt")).setData(bytes.data(), static_cast<unsigned>(bytes.size()));
        WavLabelChunk label;
        label.m_uiIdentifier = id;
        label.m_strText = "SF_440";
        label.encode(bytes);
        list.getList()->append(Chunk("labl")).setData(bytes.data(), static_cast<unsigned>(bytes.size()));
    }
    parser.getChunks().append(std::move(cue));
    parser.getChunks().append(std::move(list));
    const std::string expected =
        file(fmt() + wav::data() + chunk("cue ", u32(2) + wav::cueRecord(1, 10) + wav::cueRecord(2, 20)) +
             chunk("LIST", "adtl" + wav::ltxt(1, 5) + labl(1, "SF_440") + wav::ltxt(2, 5) + labl(2, "SF_440")));
    EXPECT_EQ(wav::written(parser), expected);
    EXPECT_TRUE(wav::parse(expected).isExact());
}

TEST(IFFParserWrite, ChunksAreAddedBeforeBytesThatAreNoChunk) {
    IFFParser parser = wav::parse(file(fmt() + wav::zeros(10)) + "TAG");
    parser.getChunks().append(withData("note", "ab"));
    EXPECT_EQ(wav::written(parser), file(fmt() + chunk("note", "ab") + wav::zeros(10)) + "TAG");
}

TEST(IFFParserWrite, MissingPaddingStaysMissingWhileNothingChanges) {
    const std::string odd = "odd1" + u32(3) + "abc";
    const std::string bytes =
        file(fmt() + odd + odd + "LIST" + u32(15) + "INFO" + "ISFT" + u32(3) + "abc" + "data" + u32(5) + "abcde");
    const IFFParser parser = wav::parse(bytes);
    IFFParser copy = parser;
    EXPECT_EQ(wav::written(copy), bytes);
    IFFParser assigned;
    assigned = parser;
    EXPECT_EQ(wav::written(assigned), bytes);
}

// Some padding there and some missing: what was kept and what was added would be read as something else.
TEST(IFFParserWrite, AChangeSuppliesAllMissingPadding) {
    const std::string list = "LIST" + u32(15) + "INFO" + "ISFT" + u32(3) + "abc";
    const std::string bytes = file(fmt() + list + "odd1" + u32(3) + "abc" + "data" + u32(5) + "abcde" + "odd2" +
                                   u32(1) + "x" + chunk("note", "ab"));
    const std::string start = fmt() + chunk("LIST", "INFO" + chunk("ISFT", "abc")) + chunk("odd1", "abc");
    const std::string audio = chunk("data", "abcde");

    IFFParser parser = wav::parse(bytes);
    parser.getChunks().append(withData("cart", "xyz"));
    EXPECT_EQ(wav::written(parser),
              file(start + audio + chunk("odd2", "x") + chunk("note", "ab") + chunk("cart", "xyz")));

    parser = wav::parse(bytes);
    ChunkPos position;
    ASSERT_TRUE(parser.find("note", position));
    parser.remove(position);
    EXPECT_EQ(wav::written(parser), file(start + audio + chunk("odd2", "x")));

    parser = wav::parse(bytes);
    ASSERT_TRUE(parser.find("ISFT", position));
    position.getChunk()->setData("ABC", 3);
    EXPECT_EQ(wav::written(parser), file(fmt() + chunk("LIST", "INFO" + chunk("ISFT", "ABC")) + chunk("odd1", "abc") +
                                         audio + chunk("odd2", "x") + chunk("note", "ab")));

    parser = wav::parse(bytes);
    ASSERT_TRUE(parser.find("odd2", position));
    *position.getChunk() = *wav::parse(file("new " + u32(1) + "y")).getChunks().begin();
    EXPECT_EQ(wav::written(parser), file(start + audio + chunk("new ", "y") + chunk("note", "ab")));
}

TEST(IFFParserWrite, MissingPaddingIsSuppliedWhereANeighbourIsAdded) {
    const std::string odd = "data" + u32(3) + "abc";
    IFFParser parser = wav::parse(file(fmt() + odd));
    parser.getChunks().append(withData("note", "xy"));
    EXPECT_EQ(wav::written(parser), file(fmt() + odd + wav::zeros(1) + chunk("note", "xy")));

    // Here the padding byte stood after the end of the RIFF chunk: it must not be there twice.
    parser = wav::parse(file(fmt() + odd) + wav::zeros(1));
    parser.getChunks().append(withData("note", "xy"));
    EXPECT_EQ(wav::written(parser), file(fmt() + odd + wav::zeros(1) + chunk("note", "xy")));

    // A chunk without padding is added itself, with its copy.
    const Chunk unpadded = *std::next(wav::parse(file(fmt() + odd)).getChunks().begin());
    parser = wav::parse(file(fmt()));
    parser.getChunks().append(unpadded);
    EXPECT_EQ(wav::written(parser), file(fmt() + odd + wav::zeros(1)));
}

TEST(IFFParserWrite, MissingPaddingIsSuppliedWhereANeighbourIsRemoved) {
    const std::string odd = "data" + u32(3) + "abc";
    IFFParser parser = wav::parse(file(odd + chunk("note", "xy") + fmt()));
    ChunkPos position;
    ASSERT_TRUE(parser.find("note", position));
    parser.remove(position);
    EXPECT_EQ(wav::written(parser), file(odd + wav::zeros(1) + fmt()));
}

TEST(IFFParserWrite, ReplacedDataIsPaddedWithZero) {
    for (const std::string padding : {"Q", ""}) {
        IFFParser parser = wav::parse(file("data" + u32(3) + "abc" + padding + fmt()));
        ChunkPos position;
        ASSERT_TRUE(parser.find("data", position));
        position.getChunk()->setData("xyz", 3);
        EXPECT_EQ(wav::written(parser), file(chunk("data", "xyz") + fmt()));
    }
}

TEST(IFFParserWrite, OtherPaddingStaysWhenTheTreeChanges) {
    IFFParser parser = wav::parse(file("data" + u32(3) + "abcQ" + fmt()));
    parser.getChunks().append(withData("note", "xy"));
    EXPECT_EQ(wav::written(parser), file("data" + u32(3) + "abcQ" + fmt() + chunk("note", "xy")));
}

TEST(IFFParserReadme, ItsExampleWorksAsShown) {
    std::istringstream is(wav::annotatedFile());
    IFFParser parser;
    ASSERT_TRUE(parser.read(is)) << parser.getError();
    std::ostringstream shown;
    ChunkPos position;
    for (bool found = parser.find("labl", position); found; found = parser.findNext(position)) {
        WavLabelChunk label;
        if (label.decode(position.getChunk()->getData(), position.getChunk()->getSize())) {
            shown << label.m_uiIdentifier << ' ' << label.m_strText << '\n';
        }
    }
    EXPECT_EQ(shown.str(), "1 SF_440\n");
    parser.getChunks().append(Chunk("note")).setData("hello", 5);
    std::ostringstream os;
    parser.write(os);
    EXPECT_EQ(wav::outline(wav::parse(os.str())), wav::outline(wav::parse(wav::annotatedFile())) + " note:5");
}

TEST(IFFParserWrite, CanBeRepeated) {
    IFFParser parser = wav::parse(wav::annotatedFile());
    std::ostringstream os;
    EXPECT_EQ(&parser.write(os), &os);
    parser.write(os);
    EXPECT_EQ(os.str(), wav::annotatedFile() + wav::annotatedFile());
}

TEST(IFFParserWrite, WithoutAFileFails) {
    IFFParser parser;
    std::ostringstream os;
    parser.write(os);
    EXPECT_TRUE(os.fail());
    EXPECT_EQ(os.str(), "");
    EXPECT_EQ(parser.getError(), "writing the file: no file has been read");
}

TEST(IFFParserWrite, WrongRecordsInACueChunkAreRefusedBeforeAnythingIsWritten) {
    const auto errorWith = [](Chunk record) {
        IFFParser parser = wav::parse(file(fmt()));
        parser.getChunks().append(Chunk("cue ")).getList()->append(std::move(record));
        std::ostringstream os;
        parser.write(os);
        EXPECT_TRUE(os.fail());
        EXPECT_EQ(os.str(), "");
        return parser.getError();
    };
    EXPECT_EQ(errorWith(withData("cuep", std::string(23, 'x'))),
              "writing chunk \"cue \": \"cuep\" of 23 bytes in it is not a cue point of 24 bytes");
    EXPECT_EQ(errorWith(withData("labl", std::string(24, 'x'))),
              "writing chunk \"cue \": \"labl\" of 24 bytes in it is not a cue point of 24 bytes");
    EXPECT_EQ(errorWith(Chunk("LIST")),
              "writing chunk \"cue \": \"LIST\" of 0 bytes in it is not a cue point of 24 bytes");
}

TEST(IFFParserWrite, SizesBeyond32BitsAreRefusedBeforeAnythingIsWritten) {
    IFFParser parser = wav::parse(file(fmt()));
    const Chunk block = withData("note", std::string(std::size_t{1} << 24, 'x'));
    Chunk& list = parser.getChunks().append(Chunk("LIST"));
    // The copies share their bytes, so this is four gigabytes only when written.
    for (int i = 0; i < 256; ++i) {
        list.getList()->append(block);
    }
    std::ostringstream os;
    parser.write(os);
    EXPECT_TRUE(os.fail());
    EXPECT_EQ(os.str(), "");
    EXPECT_EQ(parser.getError(), "writing chunk \"LIST\": its 4294969348 bytes exceed 32 bits");

    ChunkPos position;
    ASSERT_TRUE(parser.findOwner(*list.getList(), position));
    parser.remove(position);
    std::ostringstream again;
    parser.write(again);
    EXPECT_EQ(parser.getError(), "") << "of the write before";
    EXPECT_EQ(again.str(), file(fmt()));
}

TEST(IFFParserWrite, FailureOfTheStreamIsTheStreamsToTell) {
    IFFParser parser = wav::parse(wav::annotatedFile());
    std::ostream os(nullptr);
    parser.write(os);
    EXPECT_TRUE(os.bad());
    EXPECT_EQ(parser.getError(), "");
}

}  // namespace
