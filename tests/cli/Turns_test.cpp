#include "batch/Turns.h"

#include "batch/Crew.h"
#include "batch/HeldBytes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Zantrix::Cli {
namespace {

void sleepMicroseconds(unsigned count) {
    std::this_thread::sleep_for(std::chrono::microseconds(count));
}

const auto doNothing = [] {};

class Note : public Parcel {
public:
    Note(std::vector<std::size_t>& notes, std::size_t note) : m_notes(notes), m_uiNote(note) {}
    void deliver() override { m_notes.push_back(m_uiNote); }

private:
    std::vector<std::size_t>& m_notes;  // not guarded: turns are to be enough
    std::size_t m_uiNote;
};

std::vector<std::size_t> firstNumbers(std::size_t count) {
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0U);
    return numbers;
}

TEST(Turns, ParcelsAreDeliveredInTheOrderOfTheInputsWhoeverPassesThemFirst) {
    constexpr std::size_t count = 500;
    Crew crew(4);
    Turns turns(crew, count, 20);
    std::vector<std::size_t> notes;
    std::atomic<unsigned> seed = 1;
    const auto work = [&] {
        std::minstd_rand random(seed++);
        while (const auto input = turns.take()) {
            sleepMicroseconds(random() % 300);
            if (random() % 4 == 0) {
                EXPECT_TRUE(turns.await(*input));
                EXPECT_TRUE(turns.hasCome(*input));
                notes.push_back(*input + count);
            }
            turns.pass(*input, std::make_unique<Note>(notes, *input));
        }
    };
    crew.run(4, work, doNothing, doNothing);
    std::size_t last = 0;
    std::vector<std::size_t> delivered;
    for (const std::size_t note : notes) {
        EXPECT_GE(note % count, last);
        last = note % count;
        if (note < count) {
            delivered.push_back(note);
        }
    }
    EXPECT_EQ(delivered, firstNumbers(count));
    EXPECT_EQ(turns.done(), count);
}

TEST(Turns, NobodyGetsFurtherAheadThanAllowed) {
    constexpr std::size_t ahead = 3;
    Crew crew(3);
    Turns turns(crew, 100, ahead);
    std::vector<std::size_t> notes;
    const auto work = [&] {
        while (const auto input = turns.take()) {
            EXPECT_LE(*input, turns.done() + ahead);
            if (*input % 10 == 0) {
                sleepMicroseconds(2000);
            }
            turns.pass(*input, std::make_unique<Note>(notes, *input));
        }
    };
    crew.run(3, work, doNothing, doNothing);
    EXPECT_EQ(notes, firstNumbers(100));
}

TEST(Turns, AreTakenByOneThreadWithoutACrew) {
    Crew crew(1);
    Turns turns(crew, 5, 1);
    std::vector<std::size_t> notes;
    while (const auto input = turns.take()) {
        EXPECT_TRUE(turns.hasCome(*input));
        turns.pass(*input, std::make_unique<Note>(notes, *input));
    }
    EXPECT_EQ(notes, firstNumbers(5));
}

TEST(Turns, StoppingEndsAllWaitingAndNothingMoreIsDelivered) {
    Crew crew(3);
    Turns turns(crew, 10, 10);
    std::vector<std::size_t> notes;
    std::atomic<int> refused = 0;
    const auto work = [&] {
        const auto input = turns.take();
        ASSERT_TRUE(input);
        if (*input == 0) {
            sleepMicroseconds(20000);
            turns.stop();
        } else {
            refused += turns.await(*input) ? 0 : 1;
        }
        turns.pass(*input, std::make_unique<Note>(notes, *input));
        EXPECT_FALSE(turns.take());
    };
    crew.run(3, work, doNothing, doNothing);
    EXPECT_EQ(refused, 2);
    EXPECT_TRUE(notes.empty());
    EXPECT_TRUE(turns.isStopped());
}

class Parts : public SharedWork {
public:
    explicit Parts(int parts) : m_iLeft(parts) {}
    void doPart() override {
        if (m_iLeft.fetch_sub(1) > 0) {
            ++done;
        }
    }
    std::atomic<int> done = 0;

private:
    std::atomic<int> m_iLeft;
};

TEST(Crew, ThreadsThatWaitDoPartsOfTheWorkOfOthers) {
    Crew crew(3);
    const auto pParts = std::make_shared<Parts>(50);
    EXPECT_EQ(crew.helpers(), 2U);  // none has been started
    while (pParts->done < 50) {
        crew.offer(pParts);
        std::this_thread::yield();
    }
    EXPECT_EQ(pParts->done, 50);
}

TEST(Crew, ThreadsThatHaveEndedTheirWorkHelpTheLastOne) {
    Crew crew(2);
    const auto pParts = std::make_shared<Parts>(10);
    std::atomic<int> started = 0;
    const auto work = [&] {
        if (++started == 2) {
            while (pParts->done < 10) {
                if (crew.helpers() > 0) {
                    crew.offer(pParts);
                }
                std::this_thread::yield();
            }
        }
    };
    crew.run(2, work, doNothing, doNothing);
    EXPECT_EQ(pParts->done, 10);
}

TEST(Crew, OfOneHasNobodyToHelp) {
    Crew crew(1);
    EXPECT_EQ(crew.helpers(), 0U);
    EXPECT_EQ(crew.size(), 1U);
}

TEST(Crew, WhatAThreadThrowsArrivesWhereTheCrewWasStarted) {
    Crew crew(3);
    Turns turns(crew, 3, 3);
    std::atomic<int> watched = 0;
    const auto work = [&] {
        const auto input = turns.take();
        if (*input == 0) {
            while (watched == 0) {
                sleepMicroseconds(1000);
            }
            throw std::runtime_error("broken");
        }
        EXPECT_FALSE(turns.await(*input));
    };
    try {
        crew.run(
            3, work, [&] { ++watched; }, [&] { turns.stop(); });
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "broken");
    }
}

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
