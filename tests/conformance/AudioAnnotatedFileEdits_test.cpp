// Edits of annotated files on disk.
#include "AnnotatedFileFixture.h"

#include <testkit/AsUser.h>
#include <testkit/WavFixture.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace annotated_file_test;
using testkit::readBytes;
using testkit::writeBytes;
using wav::cueRecord;
using wav::labl;
using wav::ltxt;

std::string withLabels(const std::vector<std::string>& labels) {
    std::vector<std::string> records;
    std::string texts;
    std::uint32_t id = 0;
    for (const std::string& label : labels) {
        records.push_back(cueRecord(id, 80));
        texts += ltxt(id, 80) + labl(id, label);
        ++id;
    }
    return recording(cue(records) + adtl(texts));
}

class AnnotatedFileEdits : public testing::Test {
protected:
    AnnotatedFileEdits() : m_a(m_folder / "a.wav"), m_b(m_folder / "b.wav"), m_missing(m_folder / "missing.wav") {
        writeBytes(m_a, withLabels({"SF_440", "AM_1000x50"}));
        writeBytes(m_b, withLabels({"sf_100"}));
    }

    static std::vector<std::string> labels(const std::string& path) {
        const AnnotatedFile file = opened(readBytes(path));
        std::vector<std::string> result;
        for (const auto& pAnnotation : file.m_vAnnotations) {
            result.push_back(pAnnotation->getLabel());
        }
        return result;
    }

    // What an operation that must fail logs besides the file's properties.
    static std::vector<LogRecord> failure(const std::function<bool()>& operation) {
        LogRecorder recorder(log4cplus::INFO_LOG_LEVEL);
        EXPECT_FALSE(operation());
        return recorder.take();
    }

    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            result.push_back(entry.path().filename().string());
        }
        std::sort(result.begin(), result.end());
        return result;
    }

    testkit::TemporaryFolder m_folder;
    const std::string m_a;
    const std::string m_b;
    const std::string m_missing;
};

}  // namespace

TEST_F(AnnotatedFileEdits, CopyReplacesTheTargetsAnnotations) {
    EXPECT_TRUE(AnnotatedFile::copyAnnotations(m_a.c_str(), m_b.c_str()));
    EXPECT_THAT(labels(m_b), ElementsAre("SF_MIN", "SF_440", "AM_1000x50"));
    EXPECT_EQ(readBytes(m_a), withLabels({"SF_440", "AM_1000x50"}));
    EXPECT_THAT(names(), ElementsAre("a.wav", "b.wav"));
}

TEST_F(AnnotatedFileEdits, AddAppendsToTheTargetsOwn) {
    EXPECT_TRUE(AnnotatedFile::addAnnotations(m_a.c_str(), m_b.c_str()));
    EXPECT_THAT(labels(m_b), ElementsAre("SF_MIN", "sf_100", "SF_440", "AM_1000x50"));
}

TEST_F(AnnotatedFileEdits, AFileCanBeAddedToItself) {
    EXPECT_TRUE(AnnotatedFile::addAnnotations(m_a.c_str(), m_a.c_str()));
    EXPECT_THAT(labels(m_a), ElementsAre("SF_MIN", "SF_440", "AM_1000x50", "SF_440", "AM_1000x50"));
}

TEST_F(AnnotatedFileEdits, AddAnnotationAppendsACloneAndEachEditAddsAnEmptyOneInFront) {
    const CloneableObjPtr<Annotation> pAnnotation = annotation("new", 0.1, 0.11);
    EXPECT_TRUE(AnnotatedFile::addAnnotation(m_b.c_str(), *pAnnotation));
    EXPECT_TRUE(AnnotatedFile::addAnnotation(m_b.c_str(), *pAnnotation));
    EXPECT_THAT(labels(m_b), ElementsAre("SF_MIN", "SF_MIN", "sf_100", "new", "new"));
}

TEST_F(AnnotatedFileEdits, ClearRemovesAll) {
    EXPECT_TRUE(AnnotatedFile::clearAnnotations(m_a.c_str()));
    EXPECT_EQ(readBytes(m_a), recording());
}

TEST_F(AnnotatedFileEdits, ClearLeavesAFileWithoutAnnotationsAsItIs) {
    for (const std::string& bytes : {recording(), recording(adtl("")), recording() + "behind"}) {
        writeBytes(m_a, bytes);
        EXPECT_TRUE(AnnotatedFile::clearAnnotations(m_a.c_str()));
        EXPECT_EQ(readBytes(m_a), bytes);
    }
}

TEST_F(AnnotatedFileEdits, ClearByExpressionRemovesWholeLabelsWithoutRegardToCase) {
    writeBytes(m_a, withLabels({"SF_440", "AM_1000x50", "sf_100", "xSF_1"}));
    LogRecorder recorder(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(AnnotatedFile::clearAnnotations(m_a.c_str(), "sf_.*"));
    EXPECT_THAT(recorder.records(),
                ElementsAre(record(c_iInfo, "Number of annotations cleared in file " + m_a + " : 2")));
    EXPECT_THAT(labels(m_a), ElementsAre("SF_MIN", "AM_1000x50", "xSF_1"));
}

TEST_F(AnnotatedFileEdits, ClearByExpressionCountsEmptyAnnotationsThatMatch) {
    writeBytes(m_a, recording(cue({cueRecord(2, 80)}) + adtl(ltxt(2, 8) + labl(2, "keep"))));
    LogRecorder infos(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(AnnotatedFile::clearAnnotations(m_a.c_str(), "sf_.*"));
    EXPECT_THAT(infos.records(),
                ElementsAre(c_notContiguous, record(c_iInfo, "Number of annotations cleared in file " + m_a + " : 2")));
    EXPECT_THAT(labels(m_a), ElementsAre("SF_MIN", "keep"));
}

TEST_F(AnnotatedFileEdits, ClearByAnInvalidExpressionLeavesTheFileAlone) {
    const std::string before = readBytes(m_a);
    EXPECT_THAT(failure([&] { return AnnotatedFile::clearAnnotations(m_a.c_str(), "("); }),
                ElementsAre(record(c_iError,
                                   "Unexpected std::runtime exception caught in clearAnnotations with regex: \"(\"")));
    EXPECT_EQ(readBytes(m_a), before);
}

TEST_F(AnnotatedFileEdits, AnExpressionMeetsNoLabelInAFileWithoutAnnotations) {
    writeBytes(m_a, recording());
    LogRecorder recorder(log4cplus::INFO_LOG_LEVEL);
    EXPECT_TRUE(AnnotatedFile::clearAnnotations(m_a.c_str(), "("));
    EXPECT_THAT(recorder.records(),
                ElementsAre(record(c_iInfo, "Number of annotations cleared in file " + m_a + " : 0")));
    EXPECT_EQ(readBytes(m_a), recording());
}

TEST_F(AnnotatedFileEdits, AMissingFileIsReportedInTheWordsOfEachOperation) {
    const char* const gone = m_missing.c_str();
    const AnnotationImpl any;
    EXPECT_THAT(failure([&] { return AnnotatedFile::copyAnnotations(gone, m_b.c_str()); }),
                ElementsAre(record(c_iError, "Could not open input file : " + m_missing)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotations(gone, m_b.c_str()); }),
                ElementsAre(record(c_iError, "Could not open input file : " + m_missing)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::copyAnnotations(m_a.c_str(), gone); }),
                ElementsAre(record(c_iError, "Could not open output file for reading: " + m_missing)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotations(m_a.c_str(), gone); }),
                ElementsAre(record(c_iError, "Could not open output file for reading: " + m_missing)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::clearAnnotations(gone); }),
                ElementsAre(record(c_iError, "Could not open ile for reading: " + m_missing)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::clearAnnotations(gone, ".*"); }),
                ElementsAre(record(c_iError, "Could not open ile for reading: " + m_missing)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotation(gone, any); }),
                ElementsAre(record(c_iError, "Could not open file : " + m_missing)));
    EXPECT_THAT(names(), ElementsAre("a.wav", "b.wav"));
}

TEST_F(AnnotatedFileEdits, NoWavFileIsReportedInTheWordsOfEachOperation) {
    const std::string text = m_folder / "text.wav";
    writeBytes(text, "not a WAV file");
    const char* const path = text.c_str();
    const AnnotationImpl any;
    EXPECT_THAT(failure([&] { return AnnotatedFile::copyAnnotations(path, m_b.c_str()); }),
                ElementsAre(record(c_iError, "Error parsing input WAV file : " + text)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotations(path, m_b.c_str()); }),
                ElementsAre(record(c_iError, "Error parsing input WAV file : " + text)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::copyAnnotations(m_a.c_str(), path); }),
                ElementsAre(record(c_iError, "Error parsing output WAV file : " + text)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotations(m_a.c_str(), path); }),
                ElementsAre(record(c_iError, "Error parsing output WAV file : " + text)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::clearAnnotations(path); }),
                ElementsAre(record(c_iError, "Error parsing WAV file : " + text)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::clearAnnotations(path, ".*"); }),
                ElementsAre(record(c_iError, "Error parsing WAV file : " + text)));
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotation(path, any); }),
                ElementsAre(record(c_iError, "Error parsing WAV file : " + text)));
    EXPECT_EQ(readBytes(text), "not a WAV file");
}

TEST_F(AnnotatedFileEdits, AStereoTargetIsNotTouched) {
    const std::string stereo = wav::file(fmt(2) + data(10));
    writeBytes(m_b, stereo);
    EXPECT_THAT(failure([&] { return AnnotatedFile::copyAnnotations(m_a.c_str(), m_b.c_str()); }),
                ElementsAre(failedAssertion("chunkFmt.m_usNbOfChannels == 1", "AudioAnnotation"),
                            record(c_iError, "Error parsing output WAV file : " + m_b)));
    EXPECT_EQ(readBytes(m_b), stereo);
}

TEST_F(AnnotatedFileEdits, AnAnnotationThatCannotBeClonedIsReportedAndNotAdded) {
    struct Unique : AnnotationImpl {
        Unique* clone() const override { return nullptr; }
    };
    const std::string before = readBytes(m_b);
    EXPECT_THAT(failure([&] { return AnnotatedFile::addAnnotation(m_b.c_str(), Unique()); }),
                ElementsAre(failedAssertion("!pClone.isNull()", "AudioAnnotation")));
    EXPECT_EQ(readBytes(m_b), before);
}

TEST_F(AnnotatedFileEdits, NullPathsAreFilesThatCannotBeOpened) {
    EXPECT_THAT(failure([] { return AnnotatedFile::clearAnnotations(nullptr); }),
                ElementsAre(record(c_iError, "Could not open ile for reading: ")));
    EXPECT_FALSE(AnnotatedFile::copyAnnotations(nullptr, nullptr));
    EXPECT_FALSE(AnnotatedFile::addAnnotations(m_a.c_str(), nullptr));
    EXPECT_FALSE(AnnotatedFile::addAnnotation(nullptr, AnnotationImpl()));
}

TEST_F(AnnotatedFileEdits, AReadOnlyTargetIsReportedInTheWordsOfEachOperation) {
    for (const std::string& path : {m_a, m_b}) {
        giveToUser(path);
        ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    }
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0777), 0);
    const std::string before = readBytes(m_b);
    const auto messages = [&] {
        LogRecorder recorder(log4cplus::INFO_LOG_LEVEL);
        const AnnotationImpl any;
        std::string result;
        result += AnnotatedFile::copyAnnotations(m_a.c_str(), m_b.c_str()) ? "done\n" : "";
        result += AnnotatedFile::addAnnotations(m_a.c_str(), m_b.c_str()) ? "done\n" : "";
        result += AnnotatedFile::clearAnnotations(m_b.c_str()) ? "done\n" : "";
        result += AnnotatedFile::clearAnnotations(m_b.c_str(), "nothing") ? "done\n" : "";
        result += AnnotatedFile::addAnnotation(m_b.c_str(), any) ? "done\n" : "";
        for (const LogRecord& entry : recorder.take()) {
            result += entry.message + "\n";
        }
        return result;
    };
    EXPECT_EQ(asUser(messages),
              "Could not open out_file for writing: " + m_b + "\n" + "Could not open output file for writing: " + m_b +
                  "\n" + "Could not file for writing: " + m_b + "\n" + "Number of annotations cleared in file " + m_b +
                  " : 0\n" + "Could not file for writing: " + m_b + "\n" +
                  "Could not open output file for writing: " + m_b + "\n");
    EXPECT_EQ(readBytes(m_b), before);
    EXPECT_THAT(names(), ElementsAre("a.wav", "b.wav"));
}

TEST_F(AnnotatedFileEdits, AFolderThatTakesNoTemporaryHasItsFilesEditedInPlace) {
    giveToUser(m_b);
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0555), 0);
    EXPECT_EQ(asUser([&] { return std::string(AnnotatedFile::clearAnnotations(m_b.c_str()) ? "" : "failed"); }), "");
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    EXPECT_EQ(readBytes(m_b), recording());
}

TEST_F(AnnotatedFileEdits, LinksAreFollowedAndTheModeStays) {
    const std::string link = m_folder / "link.wav";
    ASSERT_EQ(::symlink("b.wav", link.c_str()), 0);
    ASSERT_EQ(::chmod(m_b.c_str(), 0640), 0);
    EXPECT_TRUE(AnnotatedFile::clearAnnotations(link.c_str()));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(readBytes(m_b), recording());
    struct stat status {};
    ASSERT_EQ(::stat(m_b.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0640u);
}

TEST_F(AnnotatedFileEdits, AWriteThatFailsLeavesTheFileAsItWas) {
    // The list emptied here cannot be removed, which is found only when writing.
    const std::string lower =
        recording(cue({cueRecord(0, 8)}) + wav::chunk("list", "adtl" + ltxt(0, 8) + labl(0, "a")));
    writeBytes(m_a, lower);
    EXPECT_THAT(failure([&] { return AnnotatedFile::clearAnnotations(m_a.c_str()); }),
                ElementsAre(record(c_iError, "Not able to delete empty LIST chunk"),
                            record(c_iError, "Error writing WAV file : " + m_a)));
    EXPECT_EQ(readBytes(m_a), lower);
    EXPECT_THAT(names(), ElementsAre("a.wav", "b.wav"));
}

TEST_F(AnnotatedFileEdits, AFileThatChangedSinceItWasLoadedIsNotOverwritten) {
    AnnotatedFile file;
    ASSERT_TRUE(file.loadFile(m_a)) << file.getError();
    const std::string other = withLabels({"somebody else's"});
    writeBytes(m_a, other);
    EXPECT_FALSE(file.saveFile(m_a));
    EXPECT_THAT(file.getError(), testing::HasSubstr("changed"));
    EXPECT_EQ(readBytes(m_a), other);
    EXPECT_THAT(names(), ElementsAre("a.wav", "b.wav"));
}

TEST_F(AnnotatedFileEdits, ALoadedFileCanBeSavedTwiceAndElsewhere) {
    AnnotatedFile file;
    ASSERT_TRUE(file.loadFile(m_a)) << file.getError();
    EXPECT_TRUE(file.saveFile(m_a)) << file.getError();
    file.m_vAnnotations.clear();
    EXPECT_TRUE(file.saveFile(m_a)) << file.getError();
    EXPECT_EQ(readBytes(m_a), recording());
    EXPECT_TRUE(file.saveFile(m_missing)) << file.getError();
    EXPECT_EQ(readBytes(m_missing), recording());
}

TEST_F(AnnotatedFileEdits, LoadAndSaveTellWhatIsWrong) {
    AnnotatedFile file;
    EXPECT_FALSE(file.loadFile(m_missing));
    EXPECT_EQ(file.getError(), "No such file or directory");
    EXPECT_FALSE(file.loadFile(m_folder.path().string()));
    EXPECT_NE(file.getError(), "");
    ASSERT_TRUE(file.loadFile(m_a));
    EXPECT_FALSE(file.saveFile(m_folder / "no/such/folder.wav"));
    EXPECT_EQ(file.getError(), "No such file or directory");
}

TEST_F(AnnotatedFileEdits, AFullDiskFailsAsAWrite) {
    AnnotatedFile file;
    ASSERT_TRUE(file.loadFile(m_a));
    EXPECT_FALSE(file.saveFile("/dev/full"));
    EXPECT_EQ(file.getError(), "No space left on device");
}
