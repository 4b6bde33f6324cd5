#include "batch/Turns.h"

#include "batch/Crew.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

namespace Zantrix::Cli {
namespace {

void sleepMicroseconds(unsigned count) {
    std::this_thread::sleep_for(std::chrono::microseconds(count));
}

const auto doNothing = [] {};

// Notes are not guarded: turns are to be enough.
std::function<void()> note(std::vector<std::size_t>& notes, std::size_t input) {
    return [&notes, input] { notes.push_back(input); };
}

std::vector<std::size_t> firstNumbers(std::size_t count) {
    std::vector<std::size_t> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0U);
    return numbers;
}

TEST(Turns, InputsAreFinishedInTheirOrderWhoeverPassesThemFirst) {
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
            turns.pass(*input, note(notes, *input));
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
            turns.pass(*input, note(notes, *input));
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
        turns.pass(*input, note(notes, *input));
    }
    EXPECT_EQ(notes, firstNumbers(5));
}

TEST(Turns, StoppingEndsAllWaitingAndNothingMoreIsFinished) {
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
        turns.pass(*input, note(notes, *input));
        EXPECT_FALSE(turns.take());
    };
    crew.run(3, work, doNothing, doNothing);
    EXPECT_EQ(refused, 2);
    EXPECT_TRUE(notes.empty());
    EXPECT_TRUE(turns.isStopped());
}

}  // namespace
}  // namespace Zantrix::Cli
