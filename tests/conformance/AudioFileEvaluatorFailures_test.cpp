// What the file evaluator refuses, what it says then, and that no output file comes of it.
#include "EvaluatorFixture.h"

#include <testkit/Stream.h>

#include <sys/stat.h>

namespace {

using namespace evaluator_test;

class AudioFileEvaluatorFailures : public AudioFileEvaluatorTest {
protected:
    // Evaluates the input, which must fail without leaving anything, and hands out what was logged at INFO and above,
    // the banner left out.
    LogRecords refusal(AudioFileEvaluator::Strategy& strategy, unsigned long long window = 4) {
        AudioFileEvaluator evaluator = evaluatorWith(strategy, window);
        const std::string before = std::filesystem::is_regular_file(m_input) ? readBytes(m_input) : "";
        LogRecorder log(log4cplus::INFO_LOG_LEVEL);
        EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
        LogRecords records = log.take();
        if (std::filesystem::is_regular_file(m_input)) {
            EXPECT_EQ(readBytes(m_input), before);
        }
        EXPECT_THAT(namesIn("out"), IsEmpty());
        EXPECT_FALSE(records.empty());
        EXPECT_EQ(records.front(), banner(m_input));
        records.erase(records.begin());
        return records;
    }

    LogRecords refusalOf(const std::string& bytes) {
        writeBytes(m_input, bytes);
        FunctionStrategy strategy = constant(0.5);
        LogRecords records = refusal(strategy);
        m_asked = strategy.m_asked;
        return records;
    }

    std::vector<std::size_t> m_asked;  // of the strategy of refusalOf
};

// --- configuration ---

TEST_F(AudioFileEvaluatorFailures, ConfigureRefusesNullPointers) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator;
    LogRecorder log;
    EXPECT_FALSE(evaluator.configure(4, nullptr, nullptr, nullptr));
    EXPECT_EQ(log.take(), LogRecords{failed("!in_pStrategy.isNull()")});
    EXPECT_FALSE(evaluator.configure(4, &strategy, nullptr, nullptr));
    EXPECT_EQ(log.take(), LogRecords{failed("0 != in_szOutputFileSuffix")});
    EXPECT_FALSE(evaluator.configure(4, &strategy, "prob", nullptr));
    EXPECT_EQ(log.take(), LogRecords{failed("0 != in_szOutputDir")});
}

TEST_F(AudioFileEvaluatorFailures, ConfigureRefusesBlocksOfNoSizeOrBeyondAllMemory) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator;
    for (const char* size : {"0", "18446744073709551615"}) {
        const LogRecorder log;
        EXPECT_FALSE(evaluator.configure(std::stoull(size), &strategy, "prob", (m_folder / "out").c_str()));
        EXPECT_EQ(log.records(), LogRecords{error(std::string("Failed to used audio window size of: ") + size)});
    }
    const LogRecorder log;
    EXPECT_FALSE(evaluator.configure(0, &strategy, "prob", "")) << "the size is told, whatever else is wrong";
    EXPECT_EQ(log.records(), LogRecords{error("Failed to used audio window size of: 0")});
}

TEST_F(AudioFileEvaluatorFailures, ConfigureRefusesAFolderWithoutAName) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator;
    const LogRecorder log;
    EXPECT_FALSE(evaluator.configure(4, &strategy, "prob", ""));
    EXPECT_EQ(log.records(), LogRecords{error("Invalid output directory: ")});
}

TEST_F(AudioFileEvaluatorFailures, ConfigureKeepsWhatHeldBeforeWhenItRefuses) {
    FunctionStrategy strategy = constant(0.5);
    FunctionStrategy other = constant(0.25);
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 3);
    const LogRecorder log;
    EXPECT_FALSE(evaluator.configure(0, &other, "other", m_folder.path().c_str()));
    EXPECT_FALSE(evaluator.configure(5, &other, "other", ""));
    EXPECT_FALSE(evaluator.configure(5, &other, "other", nullptr));
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_THAT(strategy.m_asked, ElementsAre(3u, 3u, 2u, FunctionStrategy::c_namesAsked));
    EXPECT_THAT(other.m_asked, IsEmpty());
    EXPECT_THAT(namesIn("out"), ElementsAre("call1.prob.wav"));
}

TEST_F(AudioFileEvaluatorFailures, DoesNothingBeforeItIsConfigured) {
    AudioFileEvaluator evaluator;
    const LogRecorder log;
    EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(), (LogRecords{banner(m_input), opened(m_input), failed("!m_pStrategy.isNull()")}));
}

// --- recordings ---

TEST_F(AudioFileEvaluatorFailures, AFileThatCannotBeOpenedReachesNoStrategy) {
    std::filesystem::remove(m_input);
    FunctionStrategy strategy = constant(0.0);
    EXPECT_EQ(refusal(strategy), (LogRecords{failedToOpen(m_input), error("Failed to load file: " + m_input)}));
    std::filesystem::create_directory(m_input);
    EXPECT_EQ(refusal(strategy), (LogRecords{failedToOpen(m_input), error("Failed to load file: " + m_input)}));
    EXPECT_THAT(strategy.m_asked, IsEmpty());
}

TEST_F(AudioFileEvaluatorFailures, ANullNameIsAnEmptyOne) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy);
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_FALSE(evaluator.processFile(nullptr));
    EXPECT_EQ(log.records(), (LogRecords{banner(""), failedToOpen(""), error("Failed to load file: ")}));
}

TEST_F(AudioFileEvaluatorFailures, AStereoFileIsRefusedWhenItIsLoaded) {
    EXPECT_EQ(refusalOf(wavOf({1, 2, 3, 4}, 2)), (LogRecords{c_notMono, error("Failed to load file: " + m_input)}));
    EXPECT_THAT(m_asked, IsEmpty());
}

TEST_F(AudioFileEvaluatorFailures, AnEightBitFileIsRefusedAfterTheStrategySawAllOfIt) {
    EXPECT_EQ(refusalOf(wav::file(fmt(1, 8000, 1, 8) + wav::chunk("data", "123456"))),
              LogRecords{failed("out_fmt.m_usSignBitsPerSample == 16")});
    EXPECT_THAT(m_asked, ElementsAre(4u, 2u)) << "and the names were not asked for";
}

TEST_F(AudioFileEvaluatorFailures, WhatIsNotPlainPcmIsRefusedAfterTheStrategySawAllOfIt) {
    const LogRecords notPcm = {failed("out_fmt.m_usCompressionCode == 0x01")};
    EXPECT_EQ(refusalOf(wav::file(fmt(1, 8000, 3, 32) + wav::chunk("data", std::string(16, '\0')))), notPcm) << "float";
    EXPECT_THAT(m_asked, ElementsAre(4u, 0u));
    EXPECT_EQ(refusalOf(wav::file(fmt(1, 8000, 7, 8) + wav::chunk("data", "123456"))), notPcm) << "u-law";
    EXPECT_THAT(m_asked, ElementsAre(4u, 2u));
    const std::string guid = wav::u16(1) + std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xaa\x00\x38\x9b\x71", 14);
    const std::string extension = wav::u16(22) + wav::u16(16) + wav::u32(4) + guid;
    EXPECT_EQ(refusalOf(wav::file(fmt(1, 8000, 0xfffe, 16, extension) + wav::chunk("data", "123456"))), notPcm)
        << "extensible";
}

TEST_F(AudioFileEvaluatorFailures, AFileOfAnotherContainerIsRefusedAfterTheStrategySawAllOfIt) {
    testkit::writeAudio(m_input, {0.1, 0.2, 0.3}, 8000, 1, SF_FORMAT_AU | SF_FORMAT_PCM_16);
    FunctionStrategy strategy = constant(0.0);
    EXPECT_EQ(refusal(strategy), LogRecords{error("Error parsing input WAV file : " + m_input)});
    EXPECT_THAT(strategy.m_asked, ElementsAre(3u));
}

TEST_F(AudioFileEvaluatorFailures, AnOddNumberOfBytesFailsTheSizeCheck) {
    EXPECT_EQ(refusalOf(wav::file(fmt(1, 8000) + wav::chunk("data", "12345"))), LogRecords{failed(c_szSizeOfData)});
    EXPECT_THAT(m_asked, ElementsAre(2u, FunctionStrategy::c_namesAsked));
}

TEST_F(AudioFileEvaluatorFailures, AFileThatGoesAwayMeanwhileIsReported) {
    FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
        std::filesystem::remove(m_input);
        out.push_back(block);
    });
    EXPECT_EQ(refusal(strategy), LogRecords{error("Could not open input file : " + m_input)});
}

TEST_F(AudioFileEvaluatorFailures, AFileThatChangesMeanwhileIsReported) {
    const auto refusalOfChangeTo = [&](const std::string& bytes) {
        writeBytes(m_input, wavOf({1, 2, 3}));
        AudioFileEvaluator evaluator;
        FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
            writeBytes(m_input, bytes);
            out.push_back(block);
        });
        EXPECT_TRUE(evaluator.configure(4, &strategy, "prob", (m_folder / "out").c_str()));
        LogRecorder log(log4cplus::WARN_LOG_LEVEL);
        EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
        EXPECT_THAT(namesIn("out"), IsEmpty());
        return log.take();
    };
    EXPECT_EQ(refusalOfChangeTo(wav::file(wav::chunk("data", bytesOf({1, 2, 3})))),
              LogRecords{error("Invalid WAV file : no chunk fmt")});
    EXPECT_EQ(refusalOfChangeTo(wav::file(wav::chunk("fmt ", "short") + wav::chunk("data", bytesOf({1, 2, 3})))),
              LogRecords{error("Invalid WAV file : no chunk fmt")});
    EXPECT_EQ(refusalOfChangeTo(wav::file(fmt(1, 8000))), LogRecords{error("Invalid WAV file : no chunk data")});
    EXPECT_EQ(refusalOfChangeTo(wavOf({1, 2, 3}, 2)), LogRecords{failed("out_fmt.m_usNbOfChannels == 0x01")});
    EXPECT_EQ(refusalOfChangeTo(wav::file(fmt(2, 8000, 3, 8))), LogRecords{failed("out_fmt.m_usNbOfChannels == 0x01")});
    EXPECT_EQ(refusalOfChangeTo(wav::file(fmt(1, 8000, 3, 8))),
              LogRecords{failed("out_fmt.m_usCompressionCode == 0x01")});
    EXPECT_EQ(refusalOfChangeTo(wavOf({1, 2, 3, 4})), LogRecords{failed(c_szNbSamples)});
    EXPECT_EQ(refusalOfChangeTo(wavOf({})), LogRecords{failed(c_szNbSamples)});
}

TEST_F(AudioFileEvaluatorFailures, APipeIsRefusedRatherThanWaitedFor) {
    std::filesystem::remove(m_input);
    const testkit::Stream pipe(m_input, wavOf({1, 2, 3}));
    FunctionStrategy strategy = constant(0.0);
    EXPECT_EQ(refusal(strategy), LogRecords{error("Could not open input file : " + m_input)});
    EXPECT_THAT(strategy.m_asked, ElementsAre(3u));
}

// --- strategies ---

TEST_F(AudioFileEvaluatorFailures, AChannelOfAnotherLengthThanTheBlockStopsAtOnce) {
    for (const int difference : {-1, 1}) {
        FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
            out.push_back(block);
            out.push_back(DoubleVector(block.size() + static_cast<std::size_t>(difference), 0.0));
        });
        EXPECT_EQ(refusal(strategy), LogRecords{failed("itChannel->size() == m_vAudio.size()")});
        EXPECT_THAT(strategy.m_asked, ElementsAre(4u));
    }
}

TEST_F(AudioFileEvaluatorFailures, AnotherNumberOfChannelsEndsTheFileWithoutThatBlock) {
    writeBytes(m_input, wavOf(Samples(20, 1)));
    for (const std::size_t second : {0, 1, 3}) {
        FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
            out.assign(strategy.m_asked.size() == 1 ? 2 : second, DoubleVector(block.size(), 0.5));
        });
        EXPECT_EQ(refusal(strategy), (LogRecords{channelCountChanged(m_input), failed(c_szNbSamples)}));
        EXPECT_THAT(strategy.m_asked, ElementsAre(4u, 4u, FunctionStrategy::c_namesAsked));
    }
}

TEST_F(AudioFileEvaluatorFailures, TheBlockAfterAnotherNumberOfChannelsIsReadButNotEvaluated) {
    FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
        out.assign(strategy.m_asked.size(), DoubleVector(block.size(), 0.5));
    });
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 4);
    const LogRecorder log;
    EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(),
              joined({banner(m_input), opened(m_input), c_scaling}, LogRecords(4, debug("Transformed 0.5 into 16383")),
                     LogRecords{pushed(0, 4), channelCountChanged(m_input), c_lastChunk, failed(c_szNbSamples)}));
}

TEST_F(AudioFileEvaluatorFailures, AnotherNumberOfChannelsForTheEmptyLastBlockStillWritesTheRest) {
    FunctionStrategy strategy([](const DoubleVector& block, Channels& out) {
        if (!block.empty()) {
            out.push_back(DoubleVector(block.size(), 1.0));
        }
    });
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 8);
    const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(), LogRecords{channelCountChanged(m_input)});
    EXPECT_EQ(readBytes(m_output).size(), 44u + 32u);
}

TEST_F(AudioFileEvaluatorFailures, NoChannelsAtAllFailTheSampleCount) {
    FunctionStrategy strategy = constants({});
    EXPECT_EQ(refusal(strategy), LogRecords{failed(c_szNbSamples)});
    EXPECT_THAT(strategy.m_asked, ElementsAre(4u, 4u, 0u, FunctionStrategy::c_namesAsked));
}

TEST_F(AudioFileEvaluatorFailures, AStrategyWithoutNamesFails) {
    FunctionStrategy strategy = constant(0.0);
    strategy.m_knowsNames = false;
    EXPECT_EQ(refusal(strategy), LogRecords{failed("m_pStrategy->getProbabilitiesInfo( m_probInfo )")});
}

TEST_F(AudioFileEvaluatorFailures, TheNamesAreAskedForBeforeTheSamplesAreCounted) {
    FunctionStrategy strategy = constants({});
    strategy.m_knowsNames = false;
    EXPECT_EQ(refusal(strategy), LogRecords{failed("m_pStrategy->getProbabilitiesInfo( m_probInfo )")});
}

TEST_F(AudioFileEvaluatorFailures, MoreChannelsThanAWavFileTakesAreRefused) {
    writeBytes(m_input, wavOf({1}));
    FunctionStrategy strategy = constants(std::vector<double>(32767, 0.0));
    EXPECT_EQ(refusal(strategy),
              LogRecords{error("Output does not fit a WAV file : 32768 channels of 8000 samples per second")});
    FunctionStrategy fewer = constants(std::vector<double>(32766, 0.0));
    EXPECT_EQ(evaluated(fewer).size(), 44u + 65534u);
}

TEST_F(AudioFileEvaluatorFailures, WhatAStrategyThrowsArrivesAndLeavesTheEvaluatorReady) {
    bool throws = true;
    FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
        if (throws) {
            throw std::runtime_error("no idea");
        }
        out.push_back(block);
    });
    AudioFileEvaluator evaluator = evaluatorWith(strategy);
    EXPECT_THROW(evaluator.processFile(m_input.c_str()), std::runtime_error);
    EXPECT_THAT(namesIn("out"), IsEmpty());
    throws = false;
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
}

TEST_F(AudioFileEvaluatorFailures, MemoryThatRunsOutIsReported) {
    FunctionStrategy strategy([](const DoubleVector&, Channels&) { throw std::bad_alloc(); });
    EXPECT_EQ(refusal(strategy), LogRecords{error("Not enough memory for file: " + m_input)});
}

// --- outputs ---

TEST_F(AudioFileEvaluatorFailures, AMissingFolderIsReportedAfterTheStrategySawAll) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator;
    ASSERT_TRUE(evaluator.configure(8, &strategy, "prob", (m_folder / "nowhere").c_str()));
    const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
    EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
    const std::string folder = std::filesystem::canonical(m_folder.path()).string();
    EXPECT_EQ(log.records(),
              LogRecords{error("Could not open output file for writing: " + folder + "/nowhere/call1.prob.wav")});
    EXPECT_FALSE(std::filesystem::exists(m_folder / "nowhere"));
}

TEST_F(AudioFileEvaluatorFailures, AnOutputThatIsAFolderIsReported) {
    std::filesystem::create_directory(m_output);
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy);
    const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
    EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(), LogRecords{error("Could not open output file for writing: " +
                                              std::filesystem::canonical(m_output).string())});
}

TEST_F(AudioFileEvaluatorFailures, AFullDiskIsReported) {
    std::filesystem::create_symlink("/dev/full", m_output);
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy);
    const std::string output = (std::filesystem::canonical(m_folder / "out") / "call1.prob.wav").string();
    for (const std::size_t samples : {8, 100000}) {
        writeBytes(m_input, wavOf(Samples(samples, 1)));
        const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
        EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
        EXPECT_EQ(log.records(),
                  LogRecords{error("Could not write output file: " + output + ", No space left on device")});
    }
}

TEST_F(AudioFileEvaluatorFailures, TheRecordingItselfIsNeverReplaced) {
    std::filesystem::create_symlink(m_input, m_output);
    const std::string before = readBytes(m_input);
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy);
    const LogRecords refused = {error("Output file would replace the input file: " +
                                      (std::filesystem::canonical(m_folder / "out") / "call1.prob.wav").string())};
    {
        const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
        EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
        EXPECT_EQ(log.records(), refused);
    }
    EXPECT_EQ(readBytes(m_input), before);
    std::filesystem::remove(m_output);
    std::filesystem::create_hard_link(m_input, m_output);
    const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
    EXPECT_FALSE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(), refused);
    EXPECT_EQ(readBytes(m_input), before);
}

}  // namespace
