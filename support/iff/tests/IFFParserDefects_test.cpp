// Files that are not as they should be: what is read, what is noted, and what writing makes of them.
#include "ChunkTrees.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using wav::chunk;
using wav::data;
using wav::file;
using wav::fileOfSize;
using wav::fmt;
using wav::u32;
using wav::zeros;
using Zantrix::IFF::ChunkPos;
using Zantrix::IFF::IFFParser;

// A chunk of three bytes, whose padding byte the tests leave out or replace. 11 bytes.
const std::string c_strOdd = "data" + u32(3) + "abc";

void expectKept(const std::string& bytes, const std::string& outline, const std::string& findings) {
    const IFFParser parser = wav::parse(bytes);
    ASSERT_TRUE(parser.isValid()) << parser.getError();
    EXPECT_EQ(wav::outline(parser), outline);
    EXPECT_EQ(wav::findings(parser), findings);
    EXPECT_TRUE(parser.isExact());
    EXPECT_EQ(wav::written(parser), bytes);
}

void expectNormalised(const std::string& bytes, const std::string& outline, const std::string& findings,
                      const std::string& expected) {
    const IFFParser parser = wav::parse(bytes);
    ASSERT_TRUE(parser.isValid()) << parser.getError();
    EXPECT_EQ(wav::outline(parser), outline);
    EXPECT_EQ(wav::findings(parser), findings);
    EXPECT_FALSE(parser.isExact());
    EXPECT_EQ(wav::written(parser), expected);
    EXPECT_TRUE(wav::parse(expected).isExact());
}

TEST(IFFParserKeeps, WellFormedFiles) {
    expectKept(file(""), "", "");
    expectKept(file(fmt() + data()), "fmt :16 data:4", "");
    expectKept(file(chunk("data", "abc") + fmt()), "data:3 fmt :16", "");
    expectKept(file(chunk("JUNK", "") + fmt() + chunk("LGWV", "a") + chunk("cue ", u32(0)) + chunk("LIST", "adtl")),
               "JUNK:0 fmt :16 LGWV:1 cue :() LIST:adtl()", "");
    expectKept(file(chunk("LIST", "wavl" + chunk("LIST", "adtl" + wav::labl(0, "x")) + data())),
               "LIST:wavl(LIST:adtl(labl:6) data:4)", "");
    expectKept(file(chunk("RIFF", "WAVE" + data())), "RIFF:16", "");
}

TEST(IFFParserKeeps, LowerCaseListsAsTheyAreWritten) {
    expectKept(file(fmt() + chunk("list", "adtl" + wav::labl(1, "ab"))), "fmt :16 list:adtl(labl:7)", "");
}

TEST(IFFParserKeeps, PaddingBytesThatAreNotZero) {
    expectKept(file(c_strOdd + "Q" + fmt()), "data:3 fmt :16",
               "23: the padding byte after chunk \"data\" is 81 instead of 0\n");
    expectKept(file(fmt() + c_strOdd + "\xff"), "fmt :16 data:3",
               "47: the padding byte after chunk \"data\" is 255 instead of 0\n");
    expectKept(file(chunk("LIST",
                          "INFO"
                          "ICOP" +
                              u32(1) + "xYISFT" + u32(2) + "ab")),
               "LIST:INFO(ICOP:1 ISFT:2)", "33: the padding byte after chunk \"ICOP\" is 89 instead of 0\n");
}

TEST(IFFParserKeeps, OddChunksWithoutPadding) {
    expectKept(file(c_strOdd + fmt() + data()), "data:3 fmt :16 data:4",
               "12: chunk \"data\" of 3 bytes lacks its padding byte\n");
    // As above, but read from one byte later this is a chunk, too: "mt \x10", of size 0x01000000 / 0x100.
    expectKept(file(c_strOdd + "fmt " + u32(16) + zeros(16) + data()), "data:3 fmt :16 data:4",
               "12: chunk \"data\" of 3 bytes lacks its padding byte\n");
    // Read from one byte later, "unk4" of size 0 would fit just as well, but nothing after it.
    expectKept(file(c_strOdd + chunk("junk", zeros('4')) + fmt()), "data:3 junk:52 fmt :16",
               "12: chunk \"data\" of 3 bytes lacks its padding byte\n");
    expectKept(file(chunk("LIST", "INFOICOP" + u32(1) + "xISFT" + u32(1) + "yIART" + u32(2) + "ab")),
               "LIST:INFO(ICOP:1 ISFT:1 IART:2)",
               "24: chunk \"ICOP\" of 1 bytes lacks its padding byte\n"
               "33: chunk \"ISFT\" of 1 bytes lacks its padding byte\n");
}

TEST(IFFParserKeeps, LastOddChunkWithoutPadding) {
    expectKept(file(fmt() + c_strOdd), "fmt :16 data:3", "36: chunk \"data\" of 3 bytes lacks its padding byte\n");
    // The padding byte stands after the end of the RIFF chunk, which is one byte short.
    expectKept(fileOfSize(4 + 24 + 11, fmt() + c_strOdd + zeros(1)), "fmt :16 data:3",
               "47: the padding byte after chunk \"data\" is outside the RIFF chunk\n");
    // The padding byte of the list serves the last chunk in it.
    expectKept(file(chunk("LIST", "INFOISFT" + u32(3) + "abc") + fmt()), "LIST:INFO(ISFT:3) fmt :16",
               "24: chunk \"ISFT\" of 3 bytes lacks its padding byte\n");
}

TEST(IFFParserKeeps, BytesAfterTheRiffChunk) {
    const IFFParser parser = wav::parse(file(fmt()) + "TAG title");
    EXPECT_EQ(parser.getTrailingBytes().view(), "TAG title");
    expectKept(file(fmt()) + "TAG title", "fmt :16", "36: 9 bytes follow the RIFF chunk\n");
    expectKept(file(fmt()) + zeros(3), "fmt :16", "36: 3 bytes follow the RIFF chunk\n");
    expectKept(file(fmt()) + file(data()), "fmt :16", "36: 24 bytes follow the RIFF chunk\n");
    // Not only chunks: the last one is not whole.
    expectKept(file(fmt()) + data() + data().substr(0, 11), "fmt :16", "36: 23 bytes follow the RIFF chunk\n");
    // After a RIFF chunk of odd size, only a zero byte is taken for its padding.
    expectKept(
        file(fmt() + c_strOdd) + "Tail", "fmt :16 data:3",
        "47: the padding byte after chunk \"data\" is outside the RIFF chunk\n47: 4 bytes follow the RIFF chunk\n");
}

TEST(IFFParserKeeps, BytesInListsThatAreNoChunk) {
    expectKept(file(fmt() + "1234567"), "fmt :16 tail:7", "36: 7 bytes at the end of a list are no chunk\n");
    expectKept(file(fmt() + zeros(1000)), "fmt :16 tail:1000", "36: 1000 bytes at the end of a list are no chunk\n");
    expectKept(file(fmt() + "\x01\x02\x03\x04" + u32(1000) + "abc"), "fmt :16 tail:11",
               "36: 11 bytes at the end of a list are no chunk\n");
    expectKept(file(chunk("LIST", "adtl" + wav::labl(1, "a") + zeros(10)) + fmt()), "LIST:adtl(labl:6 tail:10) fmt :16",
               "38: 10 bytes at the end of a list are no chunk\n");
}

TEST(IFFParserKeeps, RestOfSevenBytesThatItsPaddingWouldMakeTheHeaderOf64BitSizes) {
    expectKept(file(fmt() + "ds64" + zeros(3)) + zeros(1), "fmt :16 tail:7",
               "36: 7 bytes at the end of a list are no chunk\n");
}

TEST(IFFParserKeeps, ChunksWithUnprintableIdentifiersThatFit) {
    expectKept(file(chunk("\x01"
                          "abc",
                          "content") +
                    fmt()),
               "\\x01abc:7 fmt :16", "12: the chunk identifier \"\\x01abc\" is not printable\n");
}

TEST(IFFParserKeeps, ListsThatDoNotDivideIntoChunks) {
    expectKept(file(chunk("LIST",
                          "misc"
                          "just text in a list") +
                    fmt()),
               "LIST:23 fmt :16", "12: the list \"misc\" does not divide into chunks; it is kept as plain bytes\n");
    expectKept(file(chunk("LIST", "INFOISFT" + u32(100) + "abcd") + fmt()), "LIST:16 fmt :16",
               "12: the list \"INFO\" does not divide into chunks; it is kept as plain bytes\n");
    expectKept(file(chunk("LIST", "abc") + fmt()), "LIST:3 fmt :16", "12: the list of 3 bytes has no type\n");
    expectKept(file(chunk("LIST", "")), "LIST:0", "12: the list of 0 bytes has no type\n");
}

TEST(IFFParserKeeps, CueChunksWithBytesBehindTheRecords) {
    expectKept(file(chunk("cue ", u32(1) + wav::cueRecord(1, 5) + wav::cueRecord(2, 6)) + fmt()),
               "cue :(cuep:24 tail:24) fmt :16", "48: 24 bytes at the end of a list are no chunk\n");
    expectKept(file(chunk("cue ", u32(0) + "ab")), "cue :( tail:2)", "24: 2 bytes at the end of a list are no chunk\n");
    for (std::size_t size = 0; size < 4; ++size) {
        expectKept(file(chunk("cue ", zeros(size))), "cue :" + std::to_string(size),
                   "12: the cue chunk of " + std::to_string(size) + " bytes has no count of its points\n");
    }
}

TEST(IFFParserNormalises, CueCountLargerThanTheRecordsPresent) {
    const std::string records = wav::cueRecord(1, 5) + wav::cueRecord(2, 6);
    for (const std::uint32_t count : {3u, 0x10000000u, 0xffffffffu}) {
        expectNormalised(file(fmt() + chunk("cue ", u32(count) + records)), "fmt :16 cue :(cuep:24 cuep:24)",
                         "36: the cue chunk says " + std::to_string(count) + " points, 2 are there\n",
                         file(fmt() + chunk("cue ", u32(2) + records)));
    }
    // The beginning of a third record stays where it is.
    expectNormalised(file(chunk("cue ", u32(3) + records + "12345")), "cue :(cuep:24 cuep:24 tail:5)",
                     "12: the cue chunk says 3 points, 2 are there\n72: 5 bytes at the end of a list are no chunk\n",
                     file(chunk("cue ", u32(2) + records + "12345")));
}

TEST(IFFParserNormalises, TruncatedLastChunk) {
    expectNormalised(file(fmt() + chunk("data", "abcdef")).substr(0, 48), "fmt :16 data:4",
                     "4: the RIFF chunk says 42 bytes, 40 are there\n36: chunk \"data\" says 6 bytes, 4 are there\n",
                     file(fmt() + chunk("data", "abcd")));
    // What is left may be odd; then it is padded.
    expectNormalised(file(fmt() + chunk("data", "abcdef")).substr(0, 47), "fmt :16 data:3",
                     "4: the RIFF chunk says 42 bytes, 39 are there\n36: chunk \"data\" says 6 bytes, 3 are there\n",
                     file(fmt() + chunk("data", "abc")));
    // Only the padding byte is cut off.
    expectNormalised(file(fmt() + chunk("data", "abc")).substr(0, 47), "fmt :16 data:3",
                     "4: the RIFF chunk says 40 bytes, 39 are there\n"
                     "36: chunk \"data\" of 3 bytes lacks its padding byte\n",
                     file(fmt() + chunk("data", "abc")));
}

TEST(IFFParserNormalises, TruncatedListWithItsLastChunk) {
    const std::string whole = file(fmt() + chunk("LIST", "adtl" + wav::labl(1, "first") + wav::labl(2, "second")));
    expectNormalised(whole.substr(0, whole.size() - 5), "fmt :16 LIST:adtl(labl:10 labl:7)",
                     "4: the RIFF chunk says 78 bytes, 73 are there\n36: chunk \"LIST\" says 42 bytes, 37 are there\n"
                     "66: chunk \"labl\" says 11 bytes, 7 are there\n",
                     file(fmt() + chunk("LIST", "adtl" + wav::labl(1, "first") + chunk("labl", u32(2) + "sec"))));
}

TEST(IFFParserNormalises, SizesOfStreamsThatWereNeverPatched) {
    const std::string expected = file(fmt() + chunk("data", "abcd"));
    expectNormalised(fileOfSize(0xffffffff, fmt() + "data" + u32(0xffffffff) + "abcd"), "fmt :16 data:4",
                     "4: the RIFF chunk says 4294967295 bytes, 40 are there\n"
                     "36: chunk \"data\" says 4294967295 bytes, 4 are there\n",
                     expected);
    expectNormalised(fileOfSize(0, fmt() + chunk("data", "abcd")), "fmt :16 data:4",
                     "4: the RIFF chunk says 0 bytes, 40 are there\n", expected);
    expectNormalised(fileOfSize(3, fmt() + chunk("data", "abcd")), "fmt :16 data:4",
                     "4: the RIFF chunk says 3 bytes, 40 are there\n", expected);
    // The header was written before the samples, and never again.
    expectNormalised(fileOfSize(36, fmt() + "data" + u32(0xffffffff) + "abcd"), "fmt :16 data:4",
                     "4: the RIFF chunk says 36 bytes, its chunks take 40\n"
                     "36: chunk \"data\" says 4294967295 bytes, 4 are there\n",
                     expected);
}

TEST(IFFParserNormalises, OtherPaddingBecomesZeroWhereAChangeWouldMakeItPartOfAnIdentifier) {
    const std::string unprintable = chunk("ata\x08", "");
    IFFParser parser = wav::parse(file(c_strOdd + "l" + chunk("ltxt", "wxyz") + unprintable + fmt()));
    EXPECT_EQ(wav::outline(parser), "data:3 ltxt:4 ata\\x08:0 fmt :16");
    ChunkPos position;
    ASSERT_TRUE(parser.find("ltxt", position));
    parser.remove(position);
    EXPECT_EQ(wav::written(parser), file(c_strOdd + zeros(1) + unprintable + fmt()));

    const std::string tail = "ata\x08" + u32(100);
    parser = wav::parse(file(c_strOdd + "l" + chunk("ltxt", "wxyz") + tail));
    EXPECT_EQ(wav::outline(parser), "data:3 ltxt:4 tail:8");
    ASSERT_TRUE(parser.find("ltxt", position));
    parser.remove(position);
    EXPECT_EQ(wav::written(parser), file(c_strOdd + zeros(1) + tail));
}

TEST(IFFParserNormalises, RiffSizeThatLies) {
    const std::string chunks = fmt() + data();  // 36 bytes
    const std::string expected = file(chunks);
    for (const std::uint32_t size : {41u, 42u, 1000u}) {
        expectNormalised(fileOfSize(size, chunks), "fmt :16 data:4",
                         "4: the RIFF chunk says " + std::to_string(size) + " bytes, 40 are there\n", expected);
    }
    // Ends inside the last chunk's content or header, inside the first chunk, and between them.
    for (const std::uint32_t size : {39u, 36u, 33u, 29u, 28u, 12u, 5u, 4u}) {
        const IFFParser parser = wav::parse(fileOfSize(size, chunks));
        EXPECT_EQ(wav::outline(parser), "fmt :16 data:4") << size;
        EXPECT_FALSE(parser.isExact()) << size;
        EXPECT_EQ(wav::written(parser), expected) << size;
    }
}

TEST(IFFParserNormalises, ChunksAppendedWithoutPatchingTheRiffSize) {
    const std::string added = chunk("cue ", u32(1) + wav::cueRecord(1, 0)) + chunk("LIST", "adtl" + wav::labl(1, "ab"));
    expectNormalised(file(fmt() + data()) + added, "fmt :16 data:4 cue :(cuep:24) LIST:adtl(labl:7)",
                     "4: the RIFF chunk says 40 bytes, its chunks take 104\n", file(fmt() + data() + added));
    // The same after a padding byte that the RIFF chunk does not count.
    expectNormalised(fileOfSize(4 + 24 + 11, fmt() + c_strOdd + zeros(1)) + added,
                     "fmt :16 data:3 cue :(cuep:24) LIST:adtl(labl:7)",
                     "4: the RIFF chunk says 39 bytes, its chunks take 40\n"
                     "4: the RIFF chunk says 40 bytes, its chunks take 104\n",
                     file(fmt() + chunk("data", "abc") + added));
}

TEST(IFFParserNormalises, ChunkLargerThanTheFileEndsWithTheRiffChunk) {
    expectNormalised(fileOfSize(40, fmt() + "cart" + u32(0xffffffff) + "abcd") + "TAG title", "fmt :16 cart:4",
                     "36: chunk \"cart\" says 4294967295 bytes, 4 are there\n48: 9 bytes follow the RIFF chunk\n",
                     file(fmt() + chunk("cart", "abcd")) + "TAG title");
    // The zero after an odd end may be padding, but it is there once before and after.
    expectNormalised(fileOfSize(39, fmt() + "cart" + u32(0xffffffff) + "abc") + zeros(1) + "TAG title",
                     "fmt :16 cart:3",
                     "36: chunk \"cart\" says 4294967295 bytes, 3 are there\n"
                     "47: the padding byte after chunk \"cart\" is outside the RIFF chunk\n"
                     "48: 9 bytes follow the RIFF chunk\n",
                     fileOfSize(39, fmt() + "cart" + u32(3) + "abc") + zeros(1) + "TAG title");
    // Whole chunks after it belong to the file.
    expectNormalised(fileOfSize(39, fmt() + "cart" + u32(0xffffffff) + "abc") + zeros(1) + chunk("note", "xy"),
                     "fmt :16 cart:3 note:2",
                     "4: the RIFF chunk says 39 bytes, its chunks take 40\n"
                     "36: chunk \"cart\" says 4294967295 bytes, 3 are there\n"
                     "4: the RIFF chunk says 40 bytes, its chunks take 50\n",
                     file(fmt() + chunk("cart", "abc") + chunk("note", "xy")));
}

// As players take it: nothing that they play may be lost when such a file is edited.
TEST(IFFParserNormalises, AudioLargerThanTheFileGoesOnToItsEnd) {
    expectNormalised(fileOfSize(40, fmt() + "data" + u32(0xffffffff) + "abcd") + "efgh", "fmt :16 data:8",
                     "4: the RIFF chunk says 40 bytes, its chunks take 44\n"
                     "36: chunk \"data\" says 4294967295 bytes, 8 are there\n",
                     file(fmt() + chunk("data", "abcdefgh")));
    expectNormalised(fileOfSize(0, fmt() + "data" + u32(5) + "abcd"), "fmt :16 data:4",
                     "4: the RIFF chunk says 0 bytes, 40 are there\n"
                     "36: chunk \"data\" says 5 bytes, 4 are there\n",
                     file(fmt() + chunk("data", "abcd")));
}

TEST(IFFParserNormalises, LabelThatReachesPastItsList) {
    const std::string list = "LIST" + u32(4 + 8 + 6) + "adtl" + "labl" + u32(600) + u32(1) + "ab";
    expectNormalised(file(list + fmt()), "LIST:adtl(labl:6) fmt :16",
                     "24: chunk \"labl\" says 600 bytes, 6 are there\n",
                     file(chunk("LIST", "adtl" + chunk("labl", u32(1) + "ab")) + fmt()));
}

TEST(IFFParserFindings, AreCapped) {
    std::string chunks;
    for (int i = 0; i < 1500; ++i) {
        chunks += "odd " + u32(1) + "xQ";
    }
    const IFFParser parser = wav::parse(file(chunks));
    EXPECT_EQ(parser.getChunks().size(), 1500u);
    EXPECT_EQ(parser.getFindings().size(), 1000u);
    EXPECT_TRUE(parser.isExact());
    EXPECT_EQ(wav::written(parser), file(chunks));
}

}  // namespace
