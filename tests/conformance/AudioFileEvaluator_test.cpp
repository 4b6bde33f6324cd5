// What the file evaluator writes, and in which order it asks and tells.
#include "EvaluatorFixture.h"

#include <testkit/SpecialNumbers.h>

namespace {

using namespace evaluator_test;
using testkit::c_dInfinity;
using testkit::c_dNaN;

// --- the output ---

TEST_F(AudioFileEvaluatorTest, WritesTheSamplesWithTheChannelsBesideThem) {
    FunctionStrategy strategy = constants({1.0, 0.5});
    EXPECT_EQ(evaluated(strategy),
              wavOf({1, 32767, 16383, -2,    32767, 16383, 3,      32767, 16383, -4, 32767, 16383,  //
                     5, 32767, 16383, 32767, 32767, 16383, -32768, 32767, 16383, 0,  32767, 16383},
                    3));
}

TEST_F(AudioFileEvaluatorTest, KeepsEveryValueWithItsSample) {
    writeBytes(m_input, wavOf({0, 8192, 16384, -16384, -32768, 4, 8}));
    FunctionStrategy strategy([](const DoubleVector& block, Channels& out) {
        out.assign(2, DoubleVector());
        for (const double sample : block) {
            out[0].push_back(sample);
            out[1].push_back(-sample);
        }
    });
    EXPECT_EQ(evaluated(strategy, 3),
              wavOf({0,     0,      0,      8192,  8191, -8191, 16384, 16383, -16383, -16384, -16383,
                     16383, -32768, -32767, 32767, 4,    3,     -3,    8,     7,      -7},
                    3));
}

TEST_F(AudioFileEvaluatorTest, ScalesClampsAndTruncates) {
    const std::vector<std::pair<double, std::int16_t>> stored = {
        {0.0, 0},
        {-0.0, 0},
        {1.0, 32767},
        {-1.0, -32767},
        {0.5, 16383},
        {-0.5, -16383},
        {0.25, 8191},
        {1.5, 32767},
        {-1.5, -32767},
        {1e300, 32767},
        {-1e300, -32767},
        {c_dInfinity, 32767},
        {-c_dInfinity, -32767},
        {c_dNaN, 0},
        {-c_dNaN, 0},
        {1.0 / 32767, 1},
        {0.99 / 32767, 0},
        {-0.99 / 32767, 0},
        {32766.9 / 32767, 32766},
        {5e-324, 0},
    };
    DoubleVector values;
    Samples expected;
    for (const auto& [value, number] : stored) {
        values.push_back(value);
        expected.push_back(7);
        expected.push_back(number);
    }
    writeBytes(m_input, wavOf(Samples(stored.size(), 7)));
    FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
        out.push_back(values);
        out.back().resize(block.size());
    });
    EXPECT_EQ(evaluated(strategy, values.size()), wavOf(expected, 2));
}

TEST_F(AudioFileEvaluatorTest, KeepsTheRateAndTellsTheNewSizes) {
    writeBytes(m_input, wavOf({1, 2}, 1, 44100));
    FunctionStrategy strategy = constants({0.0, 0.0, 0.0});
    EXPECT_EQ(evaluated(strategy), wavOf({1, 0, 0, 0, 2, 0, 0, 0}, 4, 44100));
}

TEST_F(AudioFileEvaluatorTest, CarriesAllOtherChunksOver) {
    const std::string longer = fmt(1, 8000, 1, 16, wav::u16(0));
    const std::string wider = fmt(2, 8000, 1, 16, wav::u16(0));
    const std::string before = wav::chunk("abcd", "odd");
    const std::string after = wav::chunk("cue ", wav::u32(1) + wav::cueRecord(1, 0)) +
                              wav::chunk("LIST", "adtl" + wav::ltxt(1, 1) + wav::labl(1, "tone"));
    writeBytes(m_input, wav::file(longer + before + wav::chunk("data", bytesOf({1, 2})) + after));
    FunctionStrategy strategy = constant(1.0);
    EXPECT_EQ(evaluated(strategy),
              wav::file(wider + before + wav::chunk("data", bytesOf({1, 32767, 2, 32767})) + after));
}

TEST_F(AudioFileEvaluatorTest, IsTheSameForAnyBlockSizeIfTheStrategyIs) {
    FunctionStrategy strategy([](const DoubleVector& block, Channels& out) { out.push_back(block); });
    const std::string whole = evaluated(strategy, 8);
    for (const unsigned long long window : {1, 2, 3, 5, 7, 9, 1000000}) {
        EXPECT_EQ(evaluated(strategy, window), whole) << window;
    }
}

TEST_F(AudioFileEvaluatorTest, ReplacesAnOlderOutputAndLeavesTheRecordingAlone) {
    const std::string before = readBytes(m_input);
    writeBytes(m_output, std::string(10000, 'x'));
    FunctionStrategy strategy = constant(0.0);
    EXPECT_EQ(evaluated(strategy).size(), 44u + 32u);
    EXPECT_EQ(readBytes(m_input), before);
    EXPECT_THAT(namesIn("out"), ElementsAre("call1.prob.wav"));
}

TEST_F(AudioFileEvaluatorTest, NamesTheOutputAfterTheRecording) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator;
    for (const auto& [suffix, name, expected] : std::vector<std::array<std::string, 3>>{
             {"prob", "call1.wav", "call1.prob.wav"},
             {"prob", "call.1.wav", "call.1.prob.wav"},
             {"prob", "call1", "call1.prob.wav"},
             {"a.b", "zwei W\u00f6rter.WAV", "zwei W\u00f6rter.a.b.wav"},
             {"", "call1.wav", "call1..wav"},
         }) {
        writeBytes(m_folder / ("in/" + name), wavOf({1}));
        ASSERT_TRUE(evaluator.configure(4, &strategy, suffix.c_str(), (m_folder / "in/../out/.").c_str()));
        EXPECT_TRUE(evaluator.processFile((m_folder / ("in/" + name)).c_str()));
        EXPECT_EQ(readBytes(m_folder / ("out/" + expected)), wavOf({1, 0}, 2)) << expected;
    }
}

TEST_F(AudioFileEvaluatorTest, GoesOnFromOneFileToTheNext) {
    const std::string other = m_folder / "in/call2.wav";
    writeBytes(other, wavOf({9, 9, 9}, 1, 16000));
    FunctionStrategy strategy = constant(0.5);
    AudioFileEvaluator evaluator = evaluatorWith(strategy);
    LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_FALSE(evaluator.processFile((m_folder / "in/missing.wav").c_str()));
    EXPECT_TRUE(evaluator.processFile(other.c_str()));
    EXPECT_EQ(readBytes(m_folder / "out/call2.prob.wav"), wavOf({9, 16383, 9, 16383, 9, 16383}, 2, 16000));
    const std::string first = readBytes(m_output);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(readBytes(m_output), first);
    EXPECT_THAT(log.records(), SizeIs(2)) << "of the missing file";
}

// --- what is asked and told ---

TEST_F(AudioFileEvaluatorTest, AsksOncePerBlockInOrderThenForTheNames) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 3);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_THAT(strategy.m_asked, ElementsAre(3u, 3u, 2u, FunctionStrategy::c_namesAsked));
}

TEST_F(AudioFileEvaluatorTest, ShowsTheEmptyBlockBehindAWholeLastOne) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 4);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_THAT(strategy.m_asked, ElementsAre(4u, 4u, 0u, FunctionStrategy::c_namesAsked));
}

TEST_F(AudioFileEvaluatorTest, HandsOutTheSamplesAtFullScale) {
    DoubleVector seen;
    FunctionStrategy strategy([&](const DoubleVector& block, Channels& out) {
        seen.append(block);
        out.push_back(block);
    });
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 3);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_THAT(seen,
                ElementsAre(1 / 32768., -2 / 32768., 3 / 32768., -4 / 32768., 5 / 32768., 32767 / 32768., -1., 0.));
}

TEST_F(AudioFileEvaluatorTest, LogsEveryValueAtDebug) {
    writeBytes(m_input, wavOf({1, 2, 3}));
    FunctionStrategy strategy([](const DoubleVector& block, Channels& out) {
        out = {DoubleVector{0.25, 1.5}, DoubleVector{-1.5, c_dNaN}};
        for (DoubleVector& channel : out) {
            channel.resize(block.size());
        }
    });
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 2);
    LogRecorder log;
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    LogRecords records = log.take();
    ASSERT_THAT(records, SizeIs(14));
    // The sign of what is not a number means nothing.
    EXPECT_THAT(records[6].message, testing::MatchesRegex("Transformed -?nan into -9223372036854775808"));
    const LogRecord low = debug("Transformed 0.25 into 8191");
    const LogRecord high = debug("Transformed 1 into 32767");
    const LogRecord lowest = debug("Transformed -1 into -32767");
    EXPECT_EQ(records,
              (LogRecords{banner(m_input), opened(m_input), c_scaling, low, lowest, high, debug(records[6].message),
                          pushed(0, 2), c_lastChunk, c_scaling, low, lowest, pushed(2, 3), c_atEnd}))
        << "the values of one sample follow each other";
}

TEST_F(AudioFileEvaluatorTest, LogsItsStepsInOrder) {
    FunctionStrategy strategy = constant(0.123456789);
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 8);
    LogRecorder log;
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(), joined({banner(m_input), opened(m_input), c_scaling},
                                    LogRecords(8, debug("Transformed 0.123457 into 4045")),
                                    LogRecords{pushed(0, 8), c_lastChunk, c_scaling, pushed(8, 8), c_atEnd}));
}

TEST_F(AudioFileEvaluatorTest, TracesItsSteps) {
    const auto scope = [](const char* what, const char* name) {
        return record(log4cplus::TRACE_LOG_LEVEL, std::string(what) + name);
    };
    writeBytes(m_input, wavOf({1}));
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator;
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL, "murvane.audio.AudioFileEvaluator");
    ASSERT_TRUE(evaluator.configure(2, &strategy, "prob", (m_folder / "out").c_str()));
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(
        log.records(),
        (LogRecords{scope("ENTER: ", "configure"), scope("EXIT:  ", "configure"), scope("ENTER: ", "processFile"),
                    banner(m_input), scope("ENTER: ", "pushToOutputFile"), c_scaling, debug("Transformed 0 into 0"),
                    scope("EXIT:  ", "pushToOutputFile"), pushed(0, 1), scope("ENTER: ", "prepareOutputFile"),
                    scope("EXIT:  ", "prepareOutputFile"), scope("ENTER: ", "endOutputFile"),
                    scope("EXIT:  ", "endOutputFile"), scope("EXIT:  ", "processFile")}));
}

TEST_F(AudioFileEvaluatorTest, TakesANewLogLevelWithTheNextFile) {
    FunctionStrategy strategy = constant(0.0);
    AudioFileEvaluator evaluator = evaluatorWith(strategy, 8);
    {
        const LogRecorder log(log4cplus::WARN_LOG_LEVEL);
        EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
        EXPECT_THAT(log.records(), IsEmpty());
    }
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(evaluator.processFile(m_input.c_str()));
    EXPECT_EQ(log.records(), LogRecords{banner(m_input)});
}

// --- recordings without samples ---

TEST_F(AudioFileEvaluatorTest, CopiesARecordingWithoutSamplesAsOneChannel) {
    const std::string empty = wav::file(fmt(1, 8000) + wav::chunk("note", "keep") + wav::chunk("data", ""));
    writeBytes(m_input, empty);
    for (const std::size_t channels : {0, 1, 3}) {
        FunctionStrategy strategy = constants(std::vector<double>(channels, 0.5));
        EXPECT_EQ(evaluated(strategy), empty) << channels;
        EXPECT_THAT(strategy.m_asked, ElementsAre(0u, FunctionStrategy::c_namesAsked));
    }
}

// --- copies ---

TEST_F(AudioFileEvaluatorTest, CopiesWorkLikeTheFirst) {
    FunctionStrategy strategy = constant(0.5);
    AudioFileEvaluator first = evaluatorWith(strategy);
    ASSERT_TRUE(first.processFile(m_input.c_str()));
    const std::string expected = readBytes(m_output);
    AudioFileEvaluator copy(first);
    AudioFileEvaluator assigned;
    assigned = copy;
    const AudioFileEvaluator& self = assigned;
    assigned = self;
    for (AudioFileEvaluator* pEvaluator : {&copy, &assigned, &first}) {
        std::filesystem::remove(m_output);
        EXPECT_TRUE(pEvaluator->processFile(m_input.c_str()));
        EXPECT_EQ(readBytes(m_output), expected);
    }
}

TEST_F(AudioFileEvaluatorTest, LivesInItsAccount) {
    EXPECT_STREQ(AudioFileEvaluator::getMemAccountName(), "AudioFileEvaluator");
    const Zantrix::MemAccount& account = Zantrix::MemAccount::named("AudioFileEvaluator");
    ASSERT_EQ(account.live(), 0);
    {
        FunctionStrategy strategy = constant(0.5);
        const auto pOne = std::make_unique<AudioFileEvaluator>(evaluatorWith(strategy));
        const std::unique_ptr<AudioFileEvaluator[]> pMany(new AudioFileEvaluator[3]);
        EXPECT_EQ(account.live(), 2);
        EXPECT_TRUE(pOne->processFile(m_input.c_str()));
    }
    EXPECT_EQ(account.live(), 0);
}

}  // namespace
