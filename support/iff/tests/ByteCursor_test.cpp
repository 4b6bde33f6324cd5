#include <murvane/iff/ByteCursor.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Zantrix::IFF::ByteCursor;
using Zantrix::IFF::ChunkId;

TEST(ByteCursor, ReadsIntegersLeastSignificantByteFirst) {
    const std::string bytes("\x01\xfe\x02\x03\x04\xff\x80", 7);
    ByteCursor cursor(bytes);
    std::uint16_t first = 0;
    std::uint32_t second = 0;
    std::uint8_t third = 0;
    ASSERT_TRUE(cursor.read(first) && cursor.read(second) && cursor.read(third));
    EXPECT_EQ(first, 0xfe01);
    EXPECT_EQ(second, 0xff040302u);
    EXPECT_EQ(third, 0x80);
    EXPECT_TRUE(cursor.isAtEnd());
}

TEST(ByteCursor, RefusedReadNeitherMovesNorTouchesTheOutput) {
    ByteCursor cursor("abc", 100);
    std::uint32_t number = 7;
    ChunkId id("keep");
    std::string_view view = "keep";
    ByteCursor child("keep");
    EXPECT_FALSE(cursor.read(number));
    EXPECT_FALSE(cursor.read(id));
    EXPECT_FALSE(cursor.read(4, view));
    EXPECT_FALSE(cursor.narrow(4, child));
    EXPECT_FALSE(cursor.skip(4));
    EXPECT_EQ(number, 7u);
    EXPECT_EQ(id, ChunkId("keep"));
    EXPECT_EQ(view, "keep");
    EXPECT_EQ(child.getRest(), "keep");
    EXPECT_EQ(cursor.getRest(), "abc");
    EXPECT_EQ(cursor.getOffset(), 100u);
}

TEST(ByteCursor, HugeSizesAreRefusedWithoutOverflow) {
    ByteCursor cursor("abcdef");
    ASSERT_TRUE(cursor.skip(3));
    EXPECT_FALSE(cursor.skip(std::numeric_limits<std::size_t>::max()));
    EXPECT_FALSE(cursor.skip(std::numeric_limits<std::size_t>::max() - 2));
    EXPECT_EQ(cursor.getRest(), "def");
}

TEST(ByteCursor, NarrowedCursorSeesItsOwnBytesOnlyAndTheParentStepsOverThem) {
    ByteCursor parent("headBODYtail", 50);
    ASSERT_TRUE(parent.skip(4));
    ByteCursor child("");
    ASSERT_TRUE(parent.narrow(4, child));
    EXPECT_EQ(child.getRest(), "BODY");
    EXPECT_EQ(child.getOffset(), 54u);
    EXPECT_FALSE(child.skip(5));
    ASSERT_TRUE(child.skip(4));
    EXPECT_TRUE(child.isAtEnd());
    EXPECT_EQ(child.getOffset(), 58u);
    EXPECT_EQ(parent.getRest(), "tail");
    EXPECT_EQ(parent.getOffset(), 58u);
}

TEST(ByteCursor, ReadingNothingSucceedsAtTheEnd) {
    ByteCursor cursor("");
    std::string_view view = "old";
    EXPECT_TRUE(cursor.read(0, view));
    EXPECT_TRUE(view.empty());
    std::uint8_t byte = 0;
    EXPECT_FALSE(cursor.read(byte));
}

TEST(ByteCursor, WhatIsAppendedReadsBack) {
    std::vector<char> bytes;
    Zantrix::IFF::appendLittleEndian(bytes, std::uint16_t{0xbeef});
    Zantrix::IFF::appendLittleEndian(bytes, std::uint32_t{0x01020384});
    Zantrix::IFF::appendId(bytes, "cue ");
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
              "\xef\xbe\x84\x03\x02\x01"
              "cue ");
}

}  // namespace
