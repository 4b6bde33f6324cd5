// Writing annotations into WAV files: the bytes, and what happens to everything else in the file.
#include "AnnotatedFileFixture.h"

#include <cmath>

using namespace annotated_file_test;
using wav::cueRecord;
using wav::labl;
using wav::ltxt;

namespace {

const std::string c_info = wav::chunk("LIST", "INFO" + wav::chunk("ISFT", "abc"));

// The chunks that one annotation gives, as given identifier, samples and label.
std::string oneAnnotation(std::uint32_t start, std::uint32_t length, const std::string& label) {
    return cue({cueRecord(1, start)}) + adtl(ltxt(1, length) + labl(1, label));
}

// What a recording of 1000 samples becomes with one annotation.
std::string writtenWith(const char* label, double start, double stop) {
    AnnotatedFile file = opened(recording());
    file.m_vAnnotations.push_back(annotation(label, start, stop));
    return written(file);
}

}  // namespace

TEST(AnnotatedFileWrite, TwoAnnotationsInAFileOfThreeSeconds) {
    const std::string plain = wav::fmt() + data(24000);
    AnnotatedFile file = opened(wav::file(plain));
    file.m_vAnnotations.push_back(annotation("SF_440", 0.5, 1.0));
    file.m_vAnnotations.push_back(annotation("AM_1000x50", 2.0, 2.5));
    const std::string bytes = written(file);
    EXPECT_EQ(bytes, wav::file(plain + cue({cueRecord(1, 4000), cueRecord(2, 16000)}) +
                               adtl(ltxt(1, 4000) + labl(1, "SF_440") + ltxt(2, 4000) + labl(2, "AM_1000x50"))));

    AnnotatedFile again;
    LogRecorder recorder;
    EXPECT_TRUE(read(again, bytes));
    EXPECT_THAT(list(again), ElementsAre("SF_MIN 0 0", "SF_440 0.5 1", "AM_1000x50 2 2.5"));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(24000), c_notContiguous));
}

TEST(AnnotatedFileWrite, AnUnchangedFileWithoutAnnotationsIsWrittenByteForByte) {
    const std::string odd = wav::chunk("odd ", "abc") + "abcd" + wav::u32(3) + "xyz" + "!";  // padded with '!'
    for (const std::string& bytes : {recording(), recording(c_info), recording(odd), recording() + "behind the file"}) {
        AnnotatedFile file = opened(bytes);
        EXPECT_EQ(written(file), bytes);
    }
}

TEST(AnnotatedFileWrite, EverythingElsePassesThroughInItsOrder) {
    const std::string before = wav::chunk("bext", "text!") + wav::fmt() + c_info;
    const std::string after = wav::chunk("smpl", wav::zeros(36)) + wav::chunk("zzzz", "\x01");
    AnnotatedFile file =
        opened(wav::file(before + cue({cueRecord(0, 8)}) + data(100) + adtl(ltxt(0, 8) + labl(0, "old")) + after));
    file.m_vAnnotations[0]->setLabel("new");
    EXPECT_EQ(written(file),
              wav::file(before + data(100) + adtl(ltxt(1, 8) + labl(1, "new")) + after + cue({cueRecord(1, 8)})));
}

TEST(AnnotatedFileWrite, TheOldListIsRefilledWhereItStands) {
    const std::string file3 = wav::chunk("labl", wav::u32(9) + "x");
    AnnotatedFile file = opened(recording(adtl(wav::chunk("file", "abcd") + file3) + c_info));
    file.m_vAnnotations.push_back(annotation("a", 0.01, 0.02));
    EXPECT_EQ(written(file), recording(adtl(wav::chunk("file", "abcd") + ltxt(1, 80) + labl(1, "a")) + c_info +
                                       cue({cueRecord(1, 80)})));
}

TEST(AnnotatedFileWrite, ASecondWriteHasTheCueChunkBehindTheList) {
    AnnotatedFile file = opened(recording());
    file.m_vAnnotations.push_back(annotation("a", 0.01, 0.02));
    EXPECT_EQ(written(file), recording(cue({cueRecord(1, 80)}) + adtl(ltxt(1, 80) + labl(1, "a"))));
    EXPECT_EQ(written(file), recording(adtl(ltxt(1, 80) + labl(1, "a")) + cue({cueRecord(1, 80)})));
    EXPECT_EQ(written(file), recording(adtl(ltxt(1, 80) + labl(1, "a")) + cue({cueRecord(1, 80)})));
}

TEST(AnnotatedFileWrite, AnEmptyListRemovesAllAnnotationChunksAndTheListTheyLeaveEmpty) {
    AnnotatedFile file = opened(recording(
        cue({cueRecord(0, 8)}) + adtl(ltxt(0, 8) + labl(0, "a") + wav::chunk("note", wav::u32(0) + "n")) + c_info));
    file.m_vAnnotations.clear();
    EXPECT_EQ(written(file), recording(c_info));
}

TEST(AnnotatedFileWrite, AListThatHoldsOtherChunksStays) {
    AnnotatedFile file =
        opened(recording(cue({cueRecord(0, 8)}) + adtl(ltxt(0, 8) + wav::chunk("file", "abcd") + labl(0, "a"))));
    file.m_vAnnotations.clear();
    EXPECT_EQ(written(file), recording(adtl(wav::chunk("file", "abcd"))));
}

TEST(AnnotatedFileWrite, AListThatWasEmptyBeforeStays) {
    AnnotatedFile file = opened(recording(adtl("")));
    EXPECT_EQ(written(file), recording(adtl("")));
}

TEST(AnnotatedFileWrite, OfTwoEmptiedListsTheLastIsRemoved) {
    AnnotatedFile file = opened(recording(cue({cueRecord(0, 8)}) + adtl(ltxt(0, 8)) + adtl(labl(0, "a"))));
    file.m_vAnnotations.clear();
    EXPECT_EQ(written(file), recording(adtl("")));
}

TEST(AnnotatedFileWrite, SeveralCueChunksBecomeOne) {
    AnnotatedFile file = opened(recording(cue({cueRecord(0, 8)}) + cue({cueRecord(1, 80)}) +
                                          adtl(ltxt(0, 8) + labl(0, "a") + ltxt(1, 8) + labl(1, "b"))));
    EXPECT_EQ(written(file), recording(adtl(ltxt(1, 8) + labl(1, "a") + ltxt(2, 8) + labl(2, "b")) +
                                       cue({cueRecord(1, 8), cueRecord(2, 80)})));
}

TEST(AnnotatedFileWrite, AnEmptiedListOfLowerCaseIsNotFound) {
    AnnotatedFile file =
        opened(recording(cue({cueRecord(0, 8)}) + wav::chunk("list", "adtl" + ltxt(0, 8) + labl(0, "a"))));
    file.m_vAnnotations.clear();
    LogRecorder recorder;
    EXPECT_EQ(written(file), "failed, wrote 0");
    EXPECT_THAT(recorder.records(),
                ElementsAre(rate(), samples(1000), record(c_iError, "Not able to delete empty LIST chunk")));
    EXPECT_EQ(file.getError(), "Not able to delete empty LIST chunk");
}

TEST(AnnotatedFileWrite, TimesAreRoundedToSamples) {
    EXPECT_EQ(writtenWith("a", 0.00006, 0.0001), recording(oneAnnotation(0, 0, "a")));
    EXPECT_EQ(writtenWith("a", 0.0000625, 0.000125), recording(oneAnnotation(1, 1, "a")));
}

TEST(AnnotatedFileWrite, TimesThatAreNoneGiveSampleNought) {
    EXPECT_EQ(writtenWith("a", std::nan(""), 0.1), recording(oneAnnotation(0, 0, "a")));
    EXPECT_EQ(writtenWith("a", -1.0, -0.5), recording(oneAnnotation(0, 1000, "a")));
    EXPECT_EQ(writtenWith("a", 0.05, 0.01), recording(oneAnnotation(400, 0, "a")));
}

TEST(AnnotatedFileWrite, AStartBeyondTheEndIsMovedToItAndLeavesNoLength) {
    AnnotatedFile file = opened(recording());
    file.m_vAnnotations.push_back(annotation("late", 0.25, 0.5));
    LogRecorder recorder;
    EXPECT_EQ(written(file), recording(oneAnnotation(1000, 0, "late")));
    EXPECT_THAT(recorder.records(),
                ElementsAre(rate(), samples(1000),
                            record(c_iWarn,
                                   "Start time for one of the annotations 2000 is greater than the end of this "
                                   "audio file 1000 Annotation: late start=0.25s stop=0.5s. Shrinking it..."),
                            c_stopShrunk));
}

TEST(AnnotatedFileWrite, AStartBeyondTheEndWithoutLengthIsReportedOnce) {
    AnnotatedFile file = opened(recording());
    file.m_vAnnotations.push_back(annotation("late", 0.25, 0.25));
    LogRecorder recorder;
    EXPECT_EQ(written(file), recording(oneAnnotation(1000, 0, "late")));
    EXPECT_EQ(recorder.records().size(), 3u);
}

TEST(AnnotatedFileWrite, AStopBeyondTheEndIsCutOff) {
    AnnotatedFile file = opened(recording());
    file.m_vAnnotations.push_back(annotation("long", 0.1, 1e300));
    LogRecorder recorder;
    EXPECT_EQ(written(file), recording(oneAnnotation(800, 200, "long")));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_stopShrunk));
}

TEST(AnnotatedFileWrite, AnAnnotationUpToTheVeryEndIsNot) {
    AnnotatedFile file = opened(recording());
    file.m_vAnnotations.push_back(annotation("whole", 0.0, 0.125));
    LogRecorder recorder;
    EXPECT_EQ(written(file), recording(oneAnnotation(0, 1000, "whole")));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000)));
}

TEST(AnnotatedFileWrite, LabelsOfAnyLengthArePaddedToEvenSize) {
    for (const char* label : {"", "a", "ab", "Grüße"}) {
        EXPECT_EQ(writtenWith(label, 0.0, 0.1), recording(oneAnnotation(0, 800, label)));
    }
}

TEST(AnnotatedFileWrite, AStereoFileFails) {
    AnnotatedFile file;
    EXPECT_FALSE(read(file, wav::file(fmt(2) + data(10))));
    LogRecorder recorder;
    EXPECT_EQ(written(file), "failed, wrote 0");
    EXPECT_THAT(recorder.records(),
                ElementsAre(rate(), failedAssertion("chunkFmt.m_usNbOfChannels == 1", "AudioAnnotation")));
}

TEST(AnnotatedFileWrite, AnObjectWithoutAFileFails) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_EQ(written(file), "failed, wrote 0");
    EXPECT_THAT(recorder.records(), ElementsAre(record(c_iError, "Invalid WAV file : no chunk fmt")));
}

TEST(AnnotatedFileWrite, NullAnnotationsFailAndLeaveTheFileAsItWas) {
    AnnotatedFile file = opened(recording(cue({cueRecord(0, 8)}) + adtl(ltxt(0, 8) + labl(0, "a"))));
    file.m_vAnnotations.emplace_back();
    LogRecorder recorder;
    EXPECT_EQ(written(file), "failed, wrote 0");
    EXPECT_THAT(recorder.records(), ElementsAre(failedAssertion("!pAnnotation.isNull()", "AudioAnnotation")));
    file.m_vAnnotations.pop_back();
    EXPECT_NE(written(file), "failed, wrote 0");
}

TEST(AnnotatedFileWrite, MoreAnnotationsThanCanBeReadAgainAreNotWritten) {
    AnnotatedFile file = opened(recording());
    while (file.m_vAnnotations.size() < 1048575) {
        file.m_vAnnotations.emplace_back(new AnnotationImpl);
    }
    AnnotatedFile again;
    EXPECT_TRUE(read(again, written(file)));
    file.m_vAnnotations.emplace_back(new AnnotationImpl);
    EXPECT_EQ(written(file), "failed, wrote 0");
    EXPECT_THAT(file.getError(), testing::HasSubstr("1048576"));
}

TEST(AnnotatedFileWrite, AStreamThatTakesNothingFails) {
    AnnotatedFile file = opened(recording());
    std::ostream os(nullptr);
    EXPECT_TRUE(file.writeToWAV(os).fail());
}

TEST(AnnotatedFileWrite, EachCycleOfReadAndWriteAddsOneEmptyAnnotationInFront) {
    std::string bytes = writtenWith("a", 0.01, 0.02);
    for (std::size_t cycle = 1; cycle <= 3; ++cycle) {
        AnnotatedFile file = opened(bytes);
        ASSERT_EQ(file.m_vAnnotations.size(), cycle + 1);
        EXPECT_EQ(list(file).front(), "SF_MIN 0 0");
        EXPECT_EQ(list(file).back(), "a 0.01 0.02");
        bytes = written(file);
    }
}
