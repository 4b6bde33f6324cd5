#include "AudioSetFixture.h"

#include <testkit/Stream.h>

namespace {

using namespace audio_set_test;

class AudioSetParserTest : public AudioSetTest {
protected:
    /// All files that a list yields.
    std::vector<std::string> filesOf(const std::string& content, const std::string& list = "sets/list.txt") {
        writeBytes(list, content);
        AudioSetParser parser;
        EXPECT_TRUE(parser.setAudioSetFilename(list.c_str()));
        return restOf(parser, parser.gotoFirstAudioFile());
    }

    static std::vector<std::string> restOf(AudioSetParser& parser, bool hasAny = true) {
        std::vector<std::string> files;
        std::string file = "before";
        while (hasAny && parser.getNextAudioFile(file)) {
            files.push_back(file);
        }
        if (hasAny) {
            EXPECT_EQ(file, "");
        }
        return files;
    }

    AudioSetParser m_parser;
    std::string m_file;
};

// --- reading the list ---

TEST_F(AudioSetParserTest, BeginsEmpty) {
    EXPECT_STREQ(m_parser.getAudioSetFilename(), "");
    EXPECT_EQ(m_parser.getNbOfEntries(), 0u);
    EXPECT_TRUE(m_parser.atEnd());
    EXPECT_FALSE(m_parser.gotoFirstAudioFile());
    m_file = "before";
    EXPECT_FALSE(m_parser.getNextAudioFile(m_file));
    EXPECT_EQ(m_file, "");
}

TEST_F(AudioSetParserTest, ListThatWasMovedFromIsAtItsEnd) {
    make({"sets/a.wav", "sets/b.wav"});
    writeBytes("sets/list.txt", "a.wav\nb.wav\n");
    ASSERT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    ASSERT_TRUE(m_parser.gotoFirstAudioFile());
    EXPECT_TRUE(m_parser.getNextAudioFile(m_file));
    EXPECT_TRUE(m_parser.getNextAudioFile(m_file));
    const AudioSetParser taken = std::move(m_parser);
    EXPECT_EQ(taken.getNbOfEntries(), 2u);
    EXPECT_FALSE(m_parser.getNextAudioFile(m_file));
    EXPECT_EQ(m_file, "");
    EXPECT_TRUE(m_parser.atEnd());
}

TEST_F(AudioSetParserTest, NullForAnEntryIsAnEmptyOne) {
    const LogRecorder log;
    EXPECT_FALSE(AudioSetParser::findAudioFile(nullptr, nullptr, m_file));
    EXPECT_THAT(log.records(), ElementsAre(badName("")));
}

TEST_F(AudioSetParserTest, SkipsCommentsAndEmptyLines) {
    make({"sets/a.wav"});
    EXPECT_THAT(filesOf("# tones\n\na.wav\n"), ElementsAre(m_here + "sets/a.wav"));
}

TEST_F(AudioSetParserTest, TakesLinesAsTheyStand) {
    make({"sets/a.wav", "sets/ b.wav", "sets/a.wav ", "sets/a.wav\r", "sets/x#y", "sets/#c", "sets/W\u00f6rter zwei"});
    EXPECT_THAT(
        filesOf("a.wav\n b.wav\na.wav \na.wav\r\nx#y\n#c\n./#c\nW\u00f6rter zwei\n"),
        ElementsAre(m_here + "sets/a.wav", m_here + "sets/ b.wav", m_here + "sets/a.wav ", m_here + "sets/a.wav\r",
                    m_here + "sets/x#y", m_here + "sets/#c", m_here + "sets/W\u00f6rter zwei"));
}

TEST_F(AudioSetParserTest, OfALineThatEndsWithCarriageReturnTheCarriageReturnBelongsToTheName) {
    make({"sets/a.wav"});
    const LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    EXPECT_THAT(filesOf("\r\na.wav\r\na.wav\n"), ElementsAre(m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(), (LogRecords{missing("\r", "relative"), missing("a.wav\r", "relative")}));
}

TEST_F(AudioSetParserTest, TakesALastLineWithoutItsEnd) {
    make({"sets/a.wav", "sets/b.wav"});
    EXPECT_THAT(filesOf("a.wav\nb.wav"), ElementsAre(m_here + "sets/a.wav", m_here + "sets/b.wav"));
    EXPECT_THAT(filesOf("# nothing"), IsEmpty());
    EXPECT_THAT(filesOf(""), IsEmpty());
}

TEST_F(AudioSetParserTest, RefusesAListThatCannotBeReadAndStaysAsItWas) {
    make({"sets/a.wav"});
    writeBytes("sets/list.txt", "a.wav\n");
    ASSERT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    // The last one opens, and fails when it is read.
    for (const char* name : {"none.txt", "", "sets", "/proc/self/mem"}) {
        const LogRecorder log;
        EXPECT_FALSE(m_parser.setAudioSetFilename(name));
        EXPECT_EQ(log.records(), LogRecords{noList(name)});
    }
    {
        const LogRecorder log;
        EXPECT_FALSE(m_parser.setAudioSetFilename(nullptr));
        EXPECT_EQ(log.records(), LogRecords{noList("")});
    }
    EXPECT_STREQ(m_parser.getAudioSetFilename(), "sets/list.txt");
    EXPECT_TRUE(m_parser.gotoFirstAudioFile());
    EXPECT_THAT(restOf(m_parser), ElementsAre(m_here + "sets/a.wav"));
}

TEST_F(AudioSetParserTest, AddsASecondListToTheFirst) {
    make({"sets/a.wav", "data/a.wav", "data/b.wav"});
    writeBytes("sets/list.txt", "a.wav\n");
    writeBytes("data/list.txt", "b.wav\n");
    EXPECT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    EXPECT_TRUE(m_parser.setAudioSetFilename("data/list.txt"));
    EXPECT_STREQ(m_parser.getAudioSetFilename(), "data/list.txt");
    EXPECT_EQ(m_parser.getNbOfEntries(), 2u);
    EXPECT_TRUE(m_parser.gotoFirstAudioFile());
    EXPECT_THAT(restOf(m_parser), ElementsAre(m_here + "data/a.wav", m_here + "data/b.wav"))
        << "relative names are looked for beside the list read last";
}

TEST_F(AudioSetParserTest, ReadsLongListsAndLongLines) {
    std::string content(1 << 20, 'x');
    for (int i = 0; i < 100000; ++i) {
        content += "\na.wav";
    }
    make({"sets/a.wav"});
    writeBytes("sets/list.txt", content);
    EXPECT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    EXPECT_EQ(m_parser.getNbOfEntries(), 100001u);
    EXPECT_TRUE(m_parser.gotoFirstAudioFile());
    const LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    EXPECT_TRUE(m_parser.getNextAudioFile(m_file));
    EXPECT_EQ(m_file, m_here + "sets/a.wav");
    EXPECT_EQ(log.records().size(), 1u) << "of the long name";
}

// --- where names lead ---

TEST_F(AudioSetParserTest, LooksBesideTheListForRelativeNames) {
    make({"a.wav", "sets/a.wav", "data/b.wav"});
    const LogRecorder log;
    EXPECT_THAT(filesOf("a.wav\n../a.wav\n..\\data\\b.wav\n"),
                ElementsAre(m_here + "sets/a.wav", m_here + "a.wav", m_here + "data/b.wav"));
    EXPECT_EQ(log.records(),
              (LogRecords{trying(m_here + "sets/a.wav"), trying(m_here + "a.wav"), trying(m_here + "data/b.wav")}));
}

TEST_F(AudioSetParserTest, LooksInTheWorkingFolderIfTheListIsNamedWithoutAFolder) {
    make({"a.wav", "sets/a.wav"});
    EXPECT_THAT(filesOf("a.wav\nsets/a.wav\n", "list.txt"), ElementsAre(m_here + "a.wav", m_here + "sets/a.wav"));
}

TEST_F(AudioSetParserTest, TheFolderOfTheListEndsAtItsLastSeparatorOfAnyKind) {
    make({"sets/a.wav", "sets:a.wav"});
    EXPECT_THAT(filesOf("a.wav\n", "sets:list.txt"), ElementsAre(m_here + "sets:a.wav"));
    EXPECT_THAT(filesOf("a.wav\n", "sets\\list.txt"), ElementsAre(m_here + "sets/a.wav"));
    make({"a.wav"});
    EXPECT_THAT(filesOf("a.wav\n", ":list.txt"), ElementsAre(m_here + "a.wav")) << "a first character is no folder";
}

TEST_F(AudioSetParserTest, FollowsLinksInRelativeNames) {
    make({"data/a.wav"});
    std::filesystem::create_symlink(m_here + "data", "sets/link");
    EXPECT_THAT(filesOf("link/a.wav\n"), ElementsAre(m_here + "data/a.wav"));
}

TEST_F(AudioSetParserTest, LooksInTheDataFolderNext) {
    make({"sets/a.wav", "data/a.wav", "data/b.wav"});
    ::setenv(c_szVariable, "data", 1);
    const LogRecorder log;
    EXPECT_THAT(filesOf("b.wav\na.wav\n"), ElementsAre(m_here + "data/b.wav", m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(), (LogRecords{trying(m_here + "sets/b.wav"), trying(m_here + "data/b.wav"),
                                         trying(m_here + "sets/a.wav")}));
}

TEST_F(AudioSetParserTest, SkipsARelativeNameThatIsInNeitherFolder) {
    make({"sets/a.wav"});
    ::setenv(c_szVariable, (m_here + "data").c_str(), 1);
    const LogRecorder log;
    EXPECT_THAT(filesOf("b.wav\na.wav\n"), ElementsAre(m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(), (LogRecords{trying(m_here + "sets/b.wav"), trying(m_here + "data/b.wav"),
                                         missing("b.wav", "relative"), trying(m_here + "sets/a.wav")}));
}

TEST_F(AudioSetParserTest, SkipsARelativeNameThatIsNotBesideTheListWithoutADataFolder) {
    make({"sets/a.wav", "data/b.wav"});
    const LogRecorder log;
    EXPECT_THAT(filesOf("b.wav\na.wav\n"), ElementsAre(m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(),
              (LogRecords{trying(m_here + "sets/b.wav"), missing("b.wav", "relative"), trying(m_here + "sets/a.wav")}));
}

TEST_F(AudioSetParserTest, SkipsANameThatIsNoPath) {
    make({"sets/a.wav"});
    std::filesystem::create_symlink("circle", "sets/circle");
    ::setenv(c_szVariable, "data", 1);
    const LogRecorder log;
    EXPECT_THAT(filesOf("circle\na.wav\n"), ElementsAre(m_here + "sets/a.wav"));
    EXPECT_EQ(log.records(), (LogRecords{badName("circle"), trying(m_here + "sets/a.wav")}));
}

TEST_F(AudioSetParserTest, SkipsANameThatIsNoPathInTheDataFolder) {
    std::filesystem::create_symlink("circle", "data/circle");
    ::setenv(c_szVariable, "data", 1);
    const LogRecorder log;
    EXPECT_THAT(filesOf("circle\n"), IsEmpty());
    EXPECT_EQ(log.records(), (LogRecords{trying(m_here + "sets/circle"), badName("circle")}));
}

TEST_F(AudioSetParserTest, HandsOutAbsoluteNamesAsWritten) {
    make({"data/a.wav"});
    const std::string name = m_here + "sets/../data//a.wav";
    const LogRecorder log;
    EXPECT_THAT(filesOf(name + "\n"), ElementsAre(name));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(AudioSetParserTest, SkipsAbsoluteNamesOfNoFile) {
    ::setenv(c_szVariable, "data", 1);
    make({"data/a.wav", "sets/C:a.wav"});
    const std::string name = m_here + "none.wav";
    const LogRecorder log;
    EXPECT_THAT(filesOf(name + "\n\\data\\a.wav\nD:\\a.wav\n"), IsEmpty());
    EXPECT_EQ(log.records(), (LogRecords{missing(name, "absolute"), missing("\\data\\a.wav", "absolute"),
                                         missing("D:\\a.wav", "absolute")}));
}

TEST_F(AudioSetParserTest, TakesNoFolderForAFile) {
    std::filesystem::create_directory("sets/folder");
    const LogRecorder log(log4cplus::ERROR_LOG_LEVEL);
    EXPECT_THAT(filesOf("folder\n.\n" + m_here + "data\n"), IsEmpty());
    EXPECT_EQ(log.records(), (LogRecords{missing("folder", "relative"), missing(".", "relative"),
                                         missing(m_here + "data", "absolute")}));
}

TEST_F(AudioSetParserTest, LooksAtPipesWithoutWaitingForThem) {
    ASSERT_EQ(::mkfifo("sets/pipe", 0600), 0);
    EXPECT_THAT(filesOf("pipe\n"), ElementsAre(m_here + "sets/pipe"));
}

// --- going through ---

TEST_F(AudioSetParserTest, IsAtItsEndWhileTheLastEntryHasNotBeenHandedOut) {
    make({"sets/a.wav"});
    writeBytes("sets/list.txt", "a.wav\n");
    ASSERT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    EXPECT_TRUE(m_parser.gotoFirstAudioFile());
    EXPECT_TRUE(m_parser.atEnd());
    EXPECT_TRUE(m_parser.getNextAudioFile(m_file));
    EXPECT_TRUE(m_parser.atEnd());
    EXPECT_FALSE(m_parser.getNextAudioFile(m_file));
    EXPECT_TRUE(m_parser.atEnd());
}

TEST_F(AudioSetParserTest, ReachesItsEndWithTheLastOfSeveral) {
    make({"sets/a.wav", "sets/b.wav", "sets/c.wav"});
    writeBytes("sets/list.txt", "a.wav\nb.wav\nc.wav\n");
    ASSERT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    EXPECT_TRUE(m_parser.gotoFirstAudioFile());
    std::vector<bool> ends = {m_parser.atEnd()};
    while (m_parser.getNextAudioFile(m_file)) {
        ends.push_back(m_parser.atEnd());
    }
    EXPECT_THAT(ends, ElementsAre(false, false, false, true));
}

TEST_F(AudioSetParserTest, GoesBackToTheFirstAtAnyTime) {
    make({"sets/a.wav", "sets/b.wav"});
    writeBytes("sets/list.txt", "a.wav\nb.wav\n");
    ASSERT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    for (const int steps : {0, 1, 2, 3}) {
        EXPECT_TRUE(m_parser.gotoFirstAudioFile());
        for (int i = 0; i < steps; ++i) {
            EXPECT_EQ(m_parser.getNextAudioFile(m_file), i < 2);
        }
    }
    EXPECT_TRUE(m_parser.gotoFirstAudioFile());
    EXPECT_THAT(restOf(m_parser), ElementsAre(m_here + "sets/a.wav", m_here + "sets/b.wav"));
}

TEST_F(AudioSetParserTest, CopiesGoOnFromWhereTheFirstIs) {
    make({"sets/a.wav", "sets/b.wav", "sets/c.wav"});
    writeBytes("sets/list.txt", "a.wav\nb.wav\nc.wav\n");
    ASSERT_TRUE(m_parser.setAudioSetFilename("sets/list.txt"));
    ASSERT_TRUE(m_parser.gotoFirstAudioFile());
    ASSERT_TRUE(m_parser.getNextAudioFile(m_file));
    AudioSetParser copy(m_parser);
    AudioSetParser assigned;
    assigned = m_parser;
    for (AudioSetParser* pParser : {&copy, &assigned, &m_parser}) {
        EXPECT_STREQ(pParser->getAudioSetFilename(), "sets/list.txt");
        EXPECT_THAT(restOf(*pParser), ElementsAre(m_here + "sets/b.wav", m_here + "sets/c.wav"));
    }
}

TEST_F(AudioSetParserTest, TracesItsOperations) {
    const auto traced = [](const std::string& name, const LogRecords& inside = {}) {
        return testkit::traced("murvane.audio.AudioSetParser", "AudioSetParser", "AudioSetParser::" + name, inside);
    };
    make({"sets/a.wav"});
    writeBytes("sets/list.txt", "a.wav\n");
    const LogRecorder log(log4cplus::TRACE_LOG_LEVEL);
    m_parser.setAudioSetFilename("sets/list.txt");
    m_parser.gotoFirstAudioFile();
    m_parser.getNextAudioFile(m_file);
    m_parser.atEnd();
    EXPECT_EQ(log.records(),
              testkit::joined(traced("setAudioSetFilename"), traced("gotoFirstAudioFile"),
                              traced("getNextAudioFile", {trying(m_here + "sets/a.wav")}), traced("atEnd")));
}

}  // namespace
