#include "ChunkTrees.h"

#include <murvane/iff/WavChunks.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Zantrix::IFF;

std::string text(const std::vector<char>& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// What `encode` leaves in a vector that held something else before.
template <typename T>
std::string encoded(const T& chunk) {
    std::vector<char> bytes{'o', 'l', 'd'};
    chunk.encode(bytes);
    return text(bytes);
}

template <typename T>
bool decode(T& chunk, const std::string& bytes) {
    return chunk.decode(bytes.data(), bytes.size());
}

/// All contents shorter than `bytes` are refused and leave the object as it was.
template <typename T>
void expectShorterOnesRefused(const T& original, const std::string& bytes) {
    const std::string before = encoded(original);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        T chunk = original;
        EXPECT_FALSE(decode(chunk, bytes.substr(0, size))) << size;
        EXPECT_EQ(encoded(chunk), before) << size;
    }
    T chunk = original;
    EXPECT_FALSE(chunk.decode(nullptr, bytes.size()));
    EXPECT_EQ(encoded(chunk), before);
}

TEST(WavFmtChunk, FieldsAreWhereTheyBelong) {
    const std::string bytes = wav::u16(0xfffe)    // compression code
                              + wav::u16(2)       // channels
                              + wav::u32(44100)   // samples per second
                              + wav::u32(176400)  // bytes per second
                              + wav::u16(4)       // bytes per block
                              + wav::u16(16);     // bits per sample
    WavFmtChunk fmt;
    ASSERT_TRUE(decode(fmt, bytes));
    EXPECT_EQ(fmt.m_usCompressionCode, 0xfffe);
    EXPECT_EQ(fmt.m_usNbOfChannels, 2);
    EXPECT_EQ(fmt.m_uiSampleRate, 44100u);
    EXPECT_EQ(fmt.m_uiAverageBytesPerSecond, 176400u);
    EXPECT_EQ(fmt.m_usBlockAlign, 4);
    EXPECT_EQ(fmt.m_usSignBitsPerSample, 16);
    EXPECT_TRUE(fmt.m_vExtra.empty());
    EXPECT_EQ(encoded(fmt), bytes);
    expectShorterOnesRefused(fmt, bytes);
}

TEST(WavFmtChunk, ExtraBytesAreKept) {
    const std::string bytes = wav::fmt().substr(8) + wav::u16(3) + "xyz";
    WavFmtChunk fmt;
    ASSERT_TRUE(decode(fmt, bytes));
    EXPECT_EQ(text(fmt.m_vExtra), wav::u16(3) + "xyz");
    fmt.m_usNbOfChannels = 5;
    EXPECT_EQ(encoded(fmt), bytes.substr(0, 2) + wav::u16(5) + bytes.substr(4));
    ASSERT_TRUE(decode(fmt, wav::fmt().substr(8)));
    EXPECT_TRUE(fmt.m_vExtra.empty()) << "of the content decoded before";
}

TEST(WavCuePointChunk, FieldsAreWhereTheyBelong) {
    const std::string bytes = wav::u32(1)              // identifier
                              + wav::u32(2)            // position
                              + "slnt"                 // chunk with the sample
                              + wav::u32(3)            // chunk start
                              + wav::u32(4)            // block start
                              + wav::u32(0xfffffffb);  // sample offset
    WavCuePointChunk cue;
    ASSERT_TRUE(decode(cue, bytes));
    EXPECT_EQ(cue.m_uiIdentifier, 1u);
    EXPECT_EQ(cue.m_uiPosition, 2u);
    EXPECT_EQ(cue.m_dataChunkId, ChunkId("slnt"));
    EXPECT_EQ(cue.m_uiChunkStart, 3u);
    EXPECT_EQ(cue.m_uiBlockStart, 4u);
    EXPECT_EQ(cue.m_uiSampleOffset, 0xfffffffbu);
    EXPECT_EQ(encoded(cue), bytes);
    expectShorterOnesRefused(cue, bytes);
}

TEST(WavCuePointChunk, NewOneRefersToTheDataChunkAndIsOtherwiseZero) {
    EXPECT_EQ(encoded(WavCuePointChunk()), wav::zeros(8) + "data" + wav::zeros(12));
}

TEST(WavLabelChunk, TextEndsAtTheFirstZeroOrWithTheContent) {
    WavLabelChunk label;
    ASSERT_TRUE(decode(label, wav::u32(9) + "SF_440" + wav::zeros(2)));
    EXPECT_EQ(label.m_uiIdentifier, 9u);
    EXPECT_EQ(label.m_strText, "SF_440");
    ASSERT_TRUE(decode(label, wav::u32(10) + "open"));
    EXPECT_EQ(label.m_strText, "open");
    ASSERT_TRUE(decode(label, wav::u32(11)));
    EXPECT_EQ(label.m_strText, "");
    EXPECT_EQ(label.m_uiIdentifier, 11u);
    expectShorterOnesRefused(label, wav::u32(12));
}

TEST(WavLabelChunk, TextIsWrittenWithOneZero) {
    WavLabelChunk label;
    label.m_uiIdentifier = 3;
    label.m_strText = "AM_1000x50";
    EXPECT_EQ(encoded(label), wav::u32(3) + "AM_1000x50" + wav::zeros(1));
    label.m_strText = "cut" + wav::zeros(1) + "here";
    EXPECT_EQ(encoded(label), wav::u32(3) + "cut" + wav::zeros(1));
    label.m_strText.clear();
    EXPECT_EQ(encoded(label), wav::u32(3) + wav::zeros(1));
}

TEST(WavLabeledTextChunk, FieldsAreWhereTheyBelong) {
    const std::string bytes = wav::u32(1)        // cue point
                              + wav::u32(4000)   // sample length
                              + "beat"           // purpose
                              + wav::u16(33)     // country
                              + wav::u16(12)     // language
                              + wav::u16(1)      // dialect
                              + wav::u16(1252);  // code page
    WavLabeledTextChunk labeledText;
    ASSERT_TRUE(decode(labeledText, bytes));
    EXPECT_EQ(labeledText.m_uiIdentifier, 1u);
    EXPECT_EQ(labeledText.m_uiSampleLength, 4000u);
    EXPECT_EQ(labeledText.m_purpose, ChunkId("beat"));
    EXPECT_EQ(labeledText.m_usCountry, 33);
    EXPECT_EQ(labeledText.m_usLanguage, 12);
    EXPECT_EQ(labeledText.m_usDialect, 1);
    EXPECT_EQ(labeledText.m_usCodePage, 1252);
    EXPECT_EQ(encoded(labeledText), bytes);
    expectShorterOnesRefused(labeledText, bytes);

    ASSERT_TRUE(decode(labeledText, bytes + "text" + wav::zeros(1)));
    EXPECT_EQ(text(labeledText.m_vText), "text" + wav::zeros(1));
    EXPECT_EQ(encoded(labeledText), bytes + "text" + wav::zeros(1));
}

TEST(WavLabeledTextChunk, NewOneIsARegionAndOtherwiseZero) {
    EXPECT_EQ(encoded(WavLabeledTextChunk()), wav::zeros(8) + "rgn " + wav::zeros(8));
}

}  // namespace
