#include "ChunkTrees.h"

#include <murvane/iff/Chunk.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>

namespace {

using Zantrix::IFF::Chunk;
using Zantrix::IFF::ChunkId;
using Zantrix::IFF::ChunkList;
using Zantrix::IFF::SharedBytes;

TEST(ChunkId, TellsCaseApartAndShowsUnprintableBytes) {
    EXPECT_NE(ChunkId("LIST"), ChunkId("list"));
    EXPECT_EQ(ChunkId("cue ").toString(), "cue ");
    EXPECT_TRUE(ChunkId("cue ").isPrintable());
    EXPECT_FALSE(ChunkId().isPrintable());
    EXPECT_EQ(ChunkId("a\x1f\x7f\xff").toString(), "a\\x1f\\x7f\\xff");
    std::ostringstream os;
    os << ChunkId("fmt ");
    EXPECT_EQ(os.str(), "fmt ");
}

TEST(Chunk, NewOneHasAListWhereItsKindHasOne) {
    for (const ChunkId id : {ChunkId("LIST"), ChunkId("list"), ChunkId("RIFF"), ChunkId("cue ")}) {
        ASSERT_NE(Chunk(id).getList(), nullptr) << id;
        EXPECT_TRUE(Chunk(id).getList()->empty()) << id;
        EXPECT_EQ(Chunk(id).getList()->getType(), ChunkId()) << id;
    }
    const Chunk plain("labl");
    EXPECT_EQ(plain.getList(), nullptr);
    EXPECT_EQ(plain.getData(), nullptr);
    EXPECT_EQ(plain.getSize(), 0u);
    EXPECT_EQ(plain.getFileOffset(), 0u);
}

TEST(Chunk, SetDataCopiesTheBytes) {
    std::string bytes = "text";
    Chunk chunk("labl");
    chunk.setData(bytes.data(), 4);
    bytes = "gone";
    EXPECT_EQ(wav::content(chunk), "text");
}

TEST(Chunk, SetDataTakesAPartOfItsOwnData) {
    Chunk chunk("labl");
    chunk.setData("abcdef", 6);
    chunk.setData(chunk.getData() + 2, 3);
    EXPECT_EQ(wav::content(chunk), "cde");
}

TEST(Chunk, SetDataTakesSharedBytesWithoutACopy) {
    Chunk chunk("LIST");
    const auto pBytes = std::make_shared<const std::string>("shared bytes");
    chunk.setData(Zantrix::IFF::SharedBytes(pBytes, std::string_view(*pBytes).substr(0, 6)));
    EXPECT_EQ(wav::content(chunk), "shared");
    EXPECT_EQ(chunk.getData(), pBytes->data());
    EXPECT_EQ(chunk.getList(), nullptr);
    chunk.setData(Zantrix::IFF::SharedBytes());
    EXPECT_EQ(chunk.getSize(), 0u);
    EXPECT_EQ(pBytes.use_count(), 1);
}

TEST(Chunk, SetDataOfNothingEmptiesTheChunk) {
    Chunk chunk("labl");
    chunk.setData("abc", 3);
    chunk.setData(nullptr, 0);
    EXPECT_EQ(chunk.getData(), nullptr);
    EXPECT_EQ(chunk.getSize(), 0u);
}

TEST(Chunk, SetDataTurnsAListIntoPlainBytes) {
    Chunk chunk("LIST");
    chunk.getList()->append(Chunk("labl"));
    chunk.setData("abc", 3);
    EXPECT_EQ(chunk.getList(), nullptr);
    EXPECT_EQ(wav::content(chunk), "abc");
}

TEST(Chunk, CopyHasAListOfItsOwn) {
    Chunk original("LIST");
    original.getList()->setType("adtl");
    original.getList()->append(Chunk("labl")).setData("one", 3);
    Chunk copy = original;
    original.getList()->begin()->setData("changed", 7);
    original.getList()->append(Chunk("note"));
    EXPECT_EQ(copy.getId(), ChunkId("LIST"));
    EXPECT_EQ(copy.getList()->getType(), ChunkId("adtl"));
    ASSERT_EQ(copy.getList()->size(), 1u);
    EXPECT_EQ(wav::content(*copy.getList()->begin()), "one");
}

TEST(Chunk, CopiesShareTheirBytes) {
    Chunk original("data");
    original.setData("audio", 5);
    const Chunk copy = original;
    EXPECT_EQ(copy.getData(), original.getData());
    original.setData("other", 5);
    EXPECT_EQ(wav::content(copy), "audio");
}

TEST(Chunk, CanBeAssignedWhatStandsBelowIt) {
    Chunk outer("LIST");
    outer.getList()->append(Chunk("LIST")).getList()->append(Chunk("labl")).setData("deep", 4);
    Chunk moved = outer;

    outer = *outer.getList()->begin();
    ASSERT_EQ(outer.getList()->size(), 1u);
    EXPECT_EQ(wav::content(*outer.getList()->begin()), "deep");

    moved = std::move(*moved.getList()->begin());
    ASSERT_EQ(moved.getList()->size(), 1u);
    EXPECT_EQ(wav::content(*moved.getList()->begin()), "deep");

    const Chunk& itself = outer;
    outer = itself;
    EXPECT_EQ(wav::outline(*outer.getList()), "labl:4");
}

TEST(ChunkList, KeepsOrderAndAddressesWhileItChanges) {
    ChunkList list;
    Chunk& first = list.append(Chunk("aaaa"));
    list.append(Chunk("bbbb"));
    Chunk& third = list.append(Chunk("cccc"));
    const ChunkList::iterator next = list.erase(std::next(list.begin()));
    EXPECT_EQ(&*next, &third);
    EXPECT_EQ(&*list.begin(), &first);
    EXPECT_EQ(wav::outline(list), "aaaa:0 cccc:0");
    EXPECT_EQ(list.erase(next), list.end());
    list.erase(list.begin());
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0u);
}

TEST(ChunkList, WhatIsAddedAfterARemovalHasNothingOfWhatWasRemoved) {
    ChunkList list;
    list.append(Chunk("LIST")).getList()->append(Chunk("labl"));
    list.append("note", SharedBytes::copyOf("odd", 3));
    list.erase(list.begin());
    list.erase(list.begin());

    const Chunk& empty = list.append(Chunk("aaaa"));
    EXPECT_EQ(empty.getId(), ChunkId("aaaa"));
    EXPECT_EQ(empty.getSize(), 0u);
    EXPECT_EQ(empty.getList(), nullptr);
    Chunk& outer = list.append(Chunk("LIST"));
    EXPECT_EQ(outer.getSize(), 0u);
    ASSERT_NE(outer.getList(), nullptr);
    EXPECT_TRUE(outer.getList()->empty());
    EXPECT_EQ(list.size(), 2u);
}

TEST(ChunkList, KeepsNoMemoryForRemovalsBeyondTheMostThatItHeld) {
    ChunkList list;
    std::set<const Chunk*> places;
    for (int i = 0; i < 1000; ++i) {
        places.insert(&list.append("labl", SharedBytes::copyOf("x", 1)));
        places.insert(&list.append("ltxt", SharedBytes::copyOf("y", 1)));
        list.erase(list.begin());
        list.erase(list.begin());
    }
    EXPECT_EQ(places.size(), 2u);
}

TEST(ChunkList, AssignmentTakesWhatTheOtherHoldsEvenFromBelow) {
    ChunkList list;
    list.setType("adtl");
    list.append("old ", SharedBytes::copyOf("old", 3));
    Chunk& outer = list.append(Chunk("LIST"));
    outer.getList()->setType("INFO");
    outer.getList()->append("ICMT", SharedBytes::copyOf("text", 4));

    list = *outer.getList();
    EXPECT_EQ(list.getType(), ChunkId("INFO"));
    EXPECT_EQ(wav::outline(list), "ICMT:4");
    EXPECT_EQ(wav::content(*list.begin()), "text");

    const ChunkList& same = list;
    list = same;
    EXPECT_EQ(wav::outline(list), "ICMT:4");
}

}  // namespace
