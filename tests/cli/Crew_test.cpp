#include "batch/Crew.h"

#include "batch/Turns.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <thread>

namespace Zantrix::Cli {
namespace {

std::size_t threadsOfThisProcess() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}

// The kernel lists a thread for a moment after it was joined.
std::size_t threadsLeft(std::size_t expected) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (threadsOfThisProcess() != expected && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    return threadsOfThisProcess();
}

const auto doNothing = [] {};

// A thread that still runs while the process ends uses what is being destroyed.
TEST(Crew, LeavesNoThreadBehind) {
    const std::size_t before = threadsOfThisProcess();
    for (int run = 0; run < 20; ++run) {
        std::atomic<unsigned> worked = 0;
        {
            Crew crew(7);
            crew.run(
                3, [&] { ++worked; }, doNothing, doNothing);
        }
        EXPECT_EQ(worked, 3U);
        ASSERT_EQ(threadsLeft(before), before) << "run " << run;
    }
}

TEST(Crew, StartsNoThreadWithoutWork) {
    const std::size_t before = threadsOfThisProcess();
    const Crew crew(7);
    EXPECT_EQ(threadsOfThisProcess(), before);
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
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
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

}  // namespace
}  // namespace Zantrix::Cli
