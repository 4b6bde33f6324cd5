#include "batch/Shard.h"

#include "Command.h"
#include "shell/Digest.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace Zantrix::Cli {
namespace {

TEST(Shard, PartsFollowEachOtherFromTheFirstPositionToTheLast) {
    for (const std::uint64_t count : {1, 2, 3, 7, 1000}) {
        for (const std::uint64_t size : {0, 1, 2, 6, 7, 8, 999, 1000, 1001, 12345}) {
            std::uint64_t next = 0;
            for (std::uint64_t i = 1; i <= count; ++i) {
                const Shard shard{i, count};
                EXPECT_EQ(shard.first(size), next);
                EXPECT_EQ(shard.first(size), (i - 1) * size / count);
                next = shard.end(size);
            }
            EXPECT_EQ(next, size);
        }
    }
}

TEST(Shard, HugeListsDoNotOverflow) {
    constexpr std::uint64_t size = std::uint64_t(1) << 62;
    constexpr std::uint64_t count = 1000000;
    EXPECT_EQ((Shard{count, count}.end(size)), size);
    EXPECT_EQ((Shard{count / 2, count}.end(size)), size / 2);
    EXPECT_EQ((Shard{count / 2 + 1, count}.first(size)), size / 2);
}

TEST(Shard, TextsAreReadAndWritten) {
    EXPECT_EQ(parseShard("2/3"), (Shard{2, 3}));
    EXPECT_EQ(parseShard("1000000/1000000").text(), "1000000/1000000");
    for (const char* text : {"", "/", "1/", "/1", "0/1", "2/1", "1/1000001", "+1/2", "1/2 ", "0x1/2", "1//2"}) {
        EXPECT_THROW(parseShard(text), UsageError) << text;
    }
}

std::string digestOf(const std::string& text) {
    Digest digest;
    digest.add(text);
    return digest.hex();
}

TEST(Digest, DoesNotDependOnHowATextIsCut) {
    const std::string text = "What is cut anywhere stays what it is.";
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        Digest digest;
        digest.add(text.substr(0, cut));
        digest.add(text.substr(cut));
        EXPECT_EQ(digest.hex(), digestOf(text));
    }
}

TEST(Digest, TellsTextsApart) {
    std::set<std::string> digests;
    std::size_t texts = 0;
    std::string text(40, '\0');
    for (std::size_t size = 0; size <= text.size(); ++size, ++texts) {
        digests.insert(digestOf(text.substr(0, size)));
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        for (const char byte : {'\1', 'a', '\x7f', '\x80', '\xff'}) {
            std::string changed = text;
            changed[i] = byte;
            digests.insert(digestOf(changed));
            ++texts;
        }
    }
    for (int i = 0; i < 100000; ++i, ++texts) {
        digests.insert(digestOf("/calls/2026/11/21/" + std::to_string(i) + ".wav"));
    }
    EXPECT_EQ(digests.size(), texts);
    EXPECT_EQ(digestOf("").size(), 16U);
}

// Manifests keep them: they may not change.
TEST(Digest, IsTheSameForEver) {
    // Worked out with whole numbers of any size.
    EXPECT_EQ(digestOf(""), "0000000000000000");
    EXPECT_EQ(digestOf("a.wav"), "13950ededa4a5778");
    EXPECT_EQ(digestOf("The quick brown fox jumps over the lazy dog"), "0f2f51000839ea3e");
}

}  // namespace
}  // namespace Zantrix::Cli
