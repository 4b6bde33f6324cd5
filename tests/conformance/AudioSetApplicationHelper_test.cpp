#include "AudioSetFixture.h"

#include <murvane/audio/batch/AudioSetApplicationHelper.h>

#include <memory>
#include <sstream>

namespace {

using namespace audio_set_test;
using Zantrix::MemAccount;
using Zantrix::Audio::AudioSetApplicationHelper;
namespace po = boost::program_options;

LogRecord record(int level, const std::string& message) {
    return {"murvane.audio.AudioSetApplicationHelper", level, message, "AudioSetApplicationHelper"};
}

LogRecord processed(int count, const std::string& where) {
    return record(log4cplus::INFO_LOG_LEVEL, "Processed " + std::to_string(count) + " files from " + where);
}

const LogRecord c_needOne = record(log4cplus::ERROR_LOG_LEVEL, "need at least one file to process");
const LogRecord c_noFile = record(log4cplus::ERROR_LOG_LEVEL, "No file to process");

/// What the strategies were asked to process, and how many there are.
struct Processed {
    std::vector<std::string> names;
    int strategies = 0;
};

class Strategy final : public AudioSetApplicationHelper::Strategy {
public:
    explicit Strategy(Processed& processed) : m_processed(processed) { ++m_processed.strategies; }
    ~Strategy() override { --m_processed.strategies; }

    /// Fails for names with "bad" in them.
    bool processFile(const char* in_szFileName) override {
        m_processed.names.emplace_back(in_szFileName);
        return m_processed.names.back().find("bad") == std::string::npos;
    }

private:
    Processed& m_processed;
};

class AudioSetApplicationHelperTest : public AudioSetTest {
protected:
    AudioSetApplicationHelperTest() { make({"sets/a.wav", "sets/b.wav", "sets/c.wav", "sets/bad.wav"}); }

    /// Hands a command line to a helper, as a tool does.
    static bool parse(AudioSetApplicationHelper& helper, const std::vector<std::string>& arguments) {
        po::options_description visible;
        po::options_description hidden;
        po::positional_options_description positional;
        EXPECT_TRUE(helper.addOptions(visible, hidden, positional));
        EXPECT_TRUE(hidden.options().empty());
        po::variables_map variables;
        po::store(po::command_line_parser(arguments).options(visible).positional(positional).run(), variables);
        po::notify(variables);
        return helper.processCmdlineVarsMap(variables);
    }

    /// Writes "sets/list.txt".
    static void list(const std::string& content) { writeBytes("sets/list.txt", content); }

    Processed m_processed;
    AudioSetApplicationHelper m_helper{new Strategy(m_processed)};
};

// --- options ---

TEST_F(AudioSetApplicationHelperTest, DeclaresItsOptions) {
    po::options_description visible("Of the tool");
    po::options_description hidden;
    po::positional_options_description positional;
    const LogRecorder log;
    EXPECT_TRUE(m_helper.addOptions(visible, hidden, positional));
    ASSERT_EQ(visible.options().size(), 2u);
    EXPECT_EQ(visible.options()[0]->long_name(), "audioset");
    EXPECT_EQ(visible.options()[0]->description(), "");
    EXPECT_EQ(visible.options()[1]->long_name(), "files-to-process");
    EXPECT_EQ(visible.options()[1]->description(), "input file(s)");
    EXPECT_TRUE(hidden.options().empty());
    EXPECT_EQ(positional.max_total_count(), std::numeric_limits<unsigned>::max());
    EXPECT_EQ(positional.name_for_position(0), "files-to-process");
    EXPECT_EQ(positional.name_for_position(1000), "files-to-process");
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(AudioSetApplicationHelperTest, TakesFilesByOptionToo) {
    EXPECT_TRUE(parse(m_helper, {"--files-to-process", "x.wav", "--files-to-process", "y.wav"}));
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_THAT(m_processed.names, ElementsAre("x.wav", "y.wav"));
}

TEST_F(AudioSetApplicationHelperTest, WritesTheUsage) {
    std::ostringstream os;
    EXPECT_EQ(&m_helper.writeUsage(os), &os);
    EXPECT_EQ(os.str(), "wavFile1 wavFile2 ...\n");
}

TEST_F(AudioSetApplicationHelperTest, NeedsAFile) {
    const LogRecorder log;
    EXPECT_FALSE(parse(m_helper, {}));
    EXPECT_EQ(log.records(), LogRecords{c_needOne});
    EXPECT_FALSE(m_helper.processAllFiles());
    EXPECT_EQ(log.records(), (LogRecords{c_needOne, c_noFile}));
    EXPECT_THAT(m_processed.names, IsEmpty());
}

TEST_F(AudioSetApplicationHelperTest, RefusesASetOfOneEntryAlone) {
    list("a.wav\n");
    const LogRecorder log;
    EXPECT_FALSE(parse(m_helper, {"--audioset", "sets/list.txt"}));
    EXPECT_EQ(log.records(), LogRecords{c_needOne});
}

TEST_F(AudioSetApplicationHelperTest, TakesASetOfOneEntryBesideAFile) {
    list("a.wav\n");
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(parse(m_helper, {"x.wav", "--audioset", "sets/list.txt"}));
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_THAT(m_processed.names, ElementsAre("x.wav", m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(), (LogRecords{processed(1, "command line"), processed(1, "audio set")}));
}

TEST_F(AudioSetApplicationHelperTest, DoesNotLookWhetherEntriesAreFilesBeforeTheyAreProcessed) {
    list("none.wav\nneither.wav\n");
    const LogRecorder log;
    EXPECT_TRUE(parse(m_helper, {"--audioset", "sets/list.txt"}));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(AudioSetApplicationHelperTest, AsksForAFileIfTheSetCannotBeRead) {
    const LogRecorder log;
    EXPECT_FALSE(parse(m_helper, {"--audioset", "none.txt"}));
    EXPECT_EQ(log.records(), (LogRecords{noList("none.txt"), c_needOne}));
}

TEST_F(AudioSetApplicationHelperTest, DoesTheFilesIfTheSetCannotBeRead) {
    const LogRecorder log;
    EXPECT_TRUE(parse(m_helper, {"x.wav", "--audioset", "none.txt"}));
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_THAT(m_processed.names, ElementsAre("x.wav"));
    EXPECT_EQ(log.records(), (LogRecords{noList("none.txt"), processed(1, "command line")}));
}

// --- processing ---

TEST_F(AudioSetApplicationHelperTest, ProcessesTheFilesOfTheCommandLineInOrder) {
    ASSERT_TRUE(parse(m_helper, {"b.wav", "a.wav"}));
    const LogRecorder log;
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_THAT(m_processed.names, ElementsAre("b.wav", "a.wav"));
    EXPECT_EQ(log.records(), LogRecords{processed(2, "command line")});
}

TEST_F(AudioSetApplicationHelperTest, ProcessesTheFilesOfTheSetInOrder) {
    list("c.wav\na.wav\nb.wav\n");
    ASSERT_TRUE(parse(m_helper, {"--audioset", "sets/list.txt"}));
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_THAT(m_processed.names, ElementsAre(m_here + "sets/c.wav", m_here + "sets/a.wav", m_here + "sets/b.wav"));
    EXPECT_EQ(log.records(), LogRecords{processed(3, "audio set")});
}

TEST_F(AudioSetApplicationHelperTest, TriesEveryFileThoughOneFails) {
    list("bad.wav\nb.wav\n");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"bad.wav", "x.wav"}, {"x.wav", "bad.wav"}, {"--audioset", "sets/list.txt"}}) {
        AudioSetApplicationHelper helper(new Strategy(m_processed));
        m_processed.names.clear();
        ASSERT_TRUE(parse(helper, arguments));
        EXPECT_FALSE(helper.processAllFiles());
        EXPECT_EQ(m_processed.names.size(), 2u);
    }
}

TEST_F(AudioSetApplicationHelperTest, SkippedEntriesAreNoFailures) {
    list("none.wav\na.wav\nnone.wav\n");
    ASSERT_TRUE(parse(m_helper, {"--audioset", "sets/list.txt"}));
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_THAT(m_processed.names, ElementsAre(m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(), (LogRecords{missing("none.wav", "relative"), missing("none.wav", "relative"),
                                         processed(1, "audio set")}));
}

TEST_F(AudioSetApplicationHelperTest, ASetOfSkippedEntriesIsNothingToProcess) {
    list("none.wav\nneither.wav\n");
    ASSERT_TRUE(parse(m_helper, {"--audioset", "sets/list.txt"}));
    const LogRecorder log(log4cplus::INFO_LOG_LEVEL);
    EXPECT_FALSE(m_helper.processAllFiles());
    EXPECT_EQ(log.records(), (LogRecords{missing("none.wav", "relative"), missing("neither.wav", "relative"),
                                         processed(0, "audio set"), c_noFile}));
}

TEST_F(AudioSetApplicationHelperTest, ProcessesAllOfThemAgain) {
    list("a.wav\nb.wav\n");
    ASSERT_TRUE(parse(m_helper, {"x.wav", "--audioset", "sets/list.txt"}));
    EXPECT_TRUE(m_helper.processAllFiles());
    const std::vector<std::string> first = m_processed.names;
    m_processed.names.clear();
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_EQ(m_processed.names, first);
}

TEST_F(AudioSetApplicationHelperTest, ReportsThatItHasNoStrategy) {
    LogRecorder log;
    AudioSetApplicationHelper helper(nullptr);
    EXPECT_EQ(log.take(), LogRecords{testkit::failedAssertion("in_pNewStrategy", "AudioSetApplicationHelper")});
    EXPECT_TRUE(parse(helper, {"x.wav"}));
    EXPECT_FALSE(helper.processAllFiles());
    EXPECT_EQ(log.take(), LogRecords{testkit::failedAssertion("!m_pStrategy.isNull()", "AudioSetApplicationHelper")});
}

TEST_F(AudioSetApplicationHelperTest, TracesItsOperations) {
    const auto traced = [](const std::string& name, const LogRecords& inside = {}) {
        return testkit::traced("murvane.audio.AudioSetApplicationHelper", "AudioSetApplicationHelper", name, inside);
    };
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL, "murvane.audio.AudioSetApplicationHelper");
    EXPECT_TRUE(parse(m_helper, {"x.wav"}));
    EXPECT_TRUE(m_helper.processAllFiles());
    EXPECT_EQ(log.records(), testkit::joined(traced("addOptions"), traced("processCmdlineVarsMap"),
                                             traced("processAllFiles", {processed(1, "command line")})));
}

// --- copies and memory ---

TEST_F(AudioSetApplicationHelperTest, CopiesShareTheStrategyAndKeepTheFiles) {
    list("a.wav\nb.wav\n");
    ASSERT_TRUE(parse(m_helper, {"x.wav", "--audioset", "sets/list.txt"}));
    EXPECT_EQ(m_processed.strategies, 1);
    {
        AudioSetApplicationHelper copy(m_helper);
        AudioSetApplicationHelper assigned(new Strategy(m_processed));
        EXPECT_EQ(m_processed.strategies, 2);
        assigned = copy;
        EXPECT_EQ(m_processed.strategies, 1);
        for (AudioSetApplicationHelper* pHelper : {&copy, &assigned, &m_helper}) {
            m_processed.names.clear();
            EXPECT_TRUE(pHelper->processAllFiles());
            EXPECT_THAT(m_processed.names, ElementsAre("x.wav", m_here + "sets/a.wav", m_here + "sets/b.wav"));
        }
    }
    EXPECT_EQ(m_processed.strategies, 1);
    m_helper = AudioSetApplicationHelper(new Strategy(m_processed));
    EXPECT_EQ(m_processed.strategies, 1) << "the old one went with its last holder";
}

TEST_F(AudioSetApplicationHelperTest, LivesInItsAccounts) {
    EXPECT_STREQ(AudioSetApplicationHelper::getMemAccountName(), "AudioSetApplicationHelper");
    {
        const auto pHelper = std::make_unique<AudioSetApplicationHelper>(new Strategy(m_processed));
        const auto pCopy = std::make_unique<AudioSetApplicationHelper>(*pHelper);
        EXPECT_EQ(MemAccount::named("AudioSetApplicationHelper").live(), 2);
        const MemAccount& counts = MemAccount::named("ReferenceCount");
        EXPECT_EQ(counts.live(), 2) << "that of the copies and that of the fixture";
    }
    EXPECT_EQ(MemAccount::named("AudioSetApplicationHelper").live(), 0);
    EXPECT_EQ(MemAccount::named("ReferenceCount").live(), 1);
    EXPECT_EQ(m_processed.strategies, 1);
}

}  // namespace
