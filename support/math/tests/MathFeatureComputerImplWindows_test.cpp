#include "ProbeComputer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

using namespace Zantrix;
using namespace Zantrix::Math;
using probecomputer::Computer;
using testing::ElementsAre;

namespace {

class FeatureComputerOverWindows : public testing::Test {
protected:
    const StringVector m_names{"CALLS",  "TEMPORALMEAN_MEAN", "SLIDINGWINDOW(3)", "Amplitude", "MEAN_second",
                               "second", "COUNT_RANGE(0,1)"};
    const std::vector<DoubleVector> m_windows{{1.0, 2.0}, {4.0, 5.0}, {0.5, 0.25}, {7.0, -7.0}, {1e300, 3.0}};
    const std::vector<DoubleVector> m_second{{5.0}, {6.0, 7.0}, {}, {8.0}, {9.0, 9.0, 9.0}};
};

TEST_F(FeatureComputerOverWindows, EqualsOneByOneInAnyBatches) {
    Computer single;
    Computer batch;
    std::vector<DoubleVector> expected;
    for (Computer* pComputer : {&single, &batch}) {
        pComputer->setInput("Amplitude", m_windows[0]);
        pComputer->setInput("second", m_second[0]);
        for (const std::string& name : m_names) {
            EXPECT_TRUE(pComputer->addFeature(name.c_str())) << name;
        }
    }
    for (std::size_t i = 0; i < m_windows.size(); ++i) {
        single.setInput("Amplitude", m_windows[i]);
        single.setInput("second", m_second[i]);
        expected.push_back(single.computed());
    }
    for (const std::vector<std::size_t>& sizes :
         {std::vector<std::size_t>{5}, {1, 4}, {3, 2}, {2, 1, 2}, {0, 5, 0}, {1, 1, 1, 1, 1}}) {
        std::vector<DoubleVector> out(m_windows.size(), DoubleVector{-1.0});
        std::size_t done = 0;
        EXPECT_TRUE(batch.reset());
        for (const std::size_t size : sizes) {
            batch.setInputWindows("Amplitude", std::span(m_windows).subspan(done, size));
            batch.setInputWindows("second", std::span(m_second).subspan(done, size));
            EXPECT_TRUE(batch.computeFeatures(std::span(out).subspan(done, size)));
            done += size;
        }
        EXPECT_EQ(out, expected) << sizes.front();
    }
}

TEST_F(FeatureComputerOverWindows, FailsWithEveryOutputEmptyWhenTheNumbersDiffer) {
    for (const char* name : {"MEAN", "Amplitude", "COUNT_Amplitude", "MEAN_second", "second"}) {
        Computer computer;
        computer.setInputWindows("Amplitude", m_windows);
        computer.setInputWindows("second", m_second);
        ASSERT_TRUE(computer.addFeature(name));
        for (const std::size_t count : {0, 1, 4, 6}) {
            std::vector<DoubleVector> out(count, DoubleVector{-1.0});
            EXPECT_FALSE(computer.computeFeatures(out)) << name << ' ' << count;
            EXPECT_EQ(out, std::vector<DoubleVector>(count)) << name << ' ' << count;
        }
        std::vector<DoubleVector> out(5);
        EXPECT_TRUE(computer.computeFeatures(out)) << name;
    }
}

TEST_F(FeatureComputerOverWindows, FailsWithEveryOutputEmptyWhenOneWindowFails) {
    Computer computer({"CALLS", "RANGE(0,1)"});
    const std::vector<DoubleVector> windows{{1.0}, {}, {2.0}};
    computer.setInputWindows("Amplitude", windows);
    std::vector<DoubleVector> out(3, DoubleVector{-1.0});
    EXPECT_FALSE(computer.computeFeatures(out));
    EXPECT_EQ(out, std::vector<DoubleVector>(3));
}

TEST_F(FeatureComputerOverWindows, SmallBatchesAfterLargeOnesSeeNothingOfThem) {
    Computer computer({"COUNT", "MEAN_COUNT"});
    std::vector<DoubleVector> out(5);
    computer.setInputWindows("Amplitude", m_windows);
    EXPECT_TRUE(computer.computeFeatures(out));
    const DoubleVector window{1.0, 3.0};
    computer.setInput("Amplitude", window);
    EXPECT_THAT(computer.computed(), ElementsAre(2.0, 4.0, 3.0));
}

}  // namespace
