#include "batch/HeldBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace Zantrix::Cli {
namespace {

std::string textOf(const HeldBytes& held) {
    std::string text;
    held.writeTo([&](std::string_view bytes) {
        text += bytes;
        return true;
    });
    return text;
}

TEST(HeldBytes, GiveBackWhatWasAppendedInPiecesOfAnySize) {
    ByteStore store(1 << 20);
    HeldBytes held(store);
    std::string expected;
    for (const std::size_t size : {0, 1, 5, 65536, 100000, 65535, 1}) {
        const std::string piece(size, static_cast<char>('a' + size % 26));
        ASSERT_TRUE(held.append(piece));
        expected += piece;
        EXPECT_EQ(held.size(), expected.size());
        EXPECT_TRUE(textOf(held) == expected);
    }
    held.clear();
    EXPECT_EQ(textOf(held), "");
}

TEST(HeldBytes, TakeNoMoreThanThereIsRoomForUnlessItIsNeeded) {
    ByteStore store(3 * ByteStore::c_uiChunkSize);
    HeldBytes held(store);
    HeldBytes other(store);
    const std::string two(2 * ByteStore::c_uiChunkSize, '2');
    ASSERT_TRUE(held.append(two));
    EXPECT_FALSE(other.append(two));
    EXPECT_EQ(other.size(), 0U);
    EXPECT_TRUE(other.append("1"));  // what was refused has left the room that there was
    EXPECT_FALSE(held.append("1"));
    EXPECT_TRUE(textOf(held) == two);
    EXPECT_TRUE(held.append("1", true));
    EXPECT_TRUE(textOf(held) == two + "1");
    held.clear();
    EXPECT_TRUE(other.append(two));
    EXPECT_TRUE(textOf(other) == "1" + two);
}

TEST(HeldBytes, StopWhereTheWriterStops) {
    ByteStore store(1 << 20);
    HeldBytes held(store);
    held.append(std::string(200000, 'x'));
    int pieces = 0;
    EXPECT_FALSE(held.writeTo([&](std::string_view) { return ++pieces < 2; }));
    EXPECT_EQ(pieces, 2);
}

}  // namespace
}  // namespace Zantrix::Cli
