// Reading annotations out of WAV files.
#include "AnnotatedFileFixture.h"

#include <array>
#include <cmath>
#include <limits>
#include <streambuf>

using namespace annotated_file_test;
using wav::cueRecord;
using wav::labl;
using wav::ltxt;

TEST(AnnotatedFileRead, IdentifiersAreIndexesFromZeroInTheList) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_TRUE(read(file, recording(cue({cueRecord(0, 80), cueRecord(1, 400)}) +
                                     adtl(ltxt(0, 160) + labl(0, "SF_440") + ltxt(1, 40) + labl(1, "AM_1000x50")))));
    EXPECT_THAT(list(file), ElementsAre("SF_440 0.01 0.03", "AM_1000x50 0.05 0.055"));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000)));
    EXPECT_EQ(file.getError(), "");
    EXPECT_EQ(file.getSampleRate(), 8000u);
    EXPECT_EQ(file.getNbOfSamples(), 1000u);
}

TEST(AnnotatedFileRead, TheListIsInIdentifierOrderWhateverTheOrderInTheFile) {
    const AnnotatedFile file =
        opened(recording(adtl(labl(2, "c") + ltxt(1, 8) + labl(0, "a") + ltxt(0, 8) + ltxt(2, 8) + labl(1, "b")) +
                         cue({cueRecord(2, 160), cueRecord(0, 0), cueRecord(1, 80)})));
    EXPECT_THAT(list(file), ElementsAre("a 0 0.001", "b 0.01 0.011", "c 0.02 0.021"));
}

TEST(AnnotatedFileRead, TheSampleOffsetCountsAndThePositionDoesNot) {
    const std::string record = wav::u32(0) + wav::u32(777) + "data" + wav::u32(9) + wav::u32(9) + wav::u32(80);
    const AnnotatedFile file = opened(recording(cue({record}) + adtl(ltxt(0, 80) + labl(0, "a"))));
    EXPECT_THAT(list(file), ElementsAre("a 0.01 0.02"));
}

TEST(AnnotatedFileRead, TimesAreQuotientsInDoublePrecision) {
    const AnnotatedFile file =
        opened(wav::file(fmt(1, 44100) + data(10) + cue({cueRecord(0, 7)}) + adtl(ltxt(0, 2) + labl(0, "a"))));
    EXPECT_EQ(file.m_vAnnotations[0]->getStartTime(), 7 / 44100.0);
    EXPECT_EQ(file.m_vAnnotations[0]->getStopTime(), 7 / 44100.0 + 2 / 44100.0);
}

TEST(AnnotatedFileRead, PositionsPastTheEndAreRead) {
    const AnnotatedFile file = opened(recording(cue({cueRecord(0, 80000)}) + adtl(ltxt(0, 8000) + labl(0, "late"))));
    EXPECT_THAT(list(file), ElementsAre("late 10 11"));
}

TEST(AnnotatedFileRead, GapsAreEmptyAnnotationsAndAWarning) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_TRUE(read(file, recording(cue({cueRecord(1, 80), cueRecord(3, 400)}) +
                                     adtl(ltxt(1, 160) + labl(1, "a") + ltxt(3, 40) + labl(3, "b")))));
    EXPECT_THAT(list(file), ElementsAre("SF_MIN 0 0", "a 0.01 0.03", "SF_MIN 0 0", "b 0.05 0.055"));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_notContiguous));
}

TEST(AnnotatedFileRead, AFileWithoutAnnotationsHasAnEmptyList) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_TRUE(read(file, recording()));
    EXPECT_THAT(list(file), IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000)));
}

TEST(AnnotatedFileRead, AReadReplacesTheListOfAnEarlierOne) {
    AnnotatedFile file = opened(recording(cue({cueRecord(0, 80)}) + adtl(ltxt(0, 8) + labl(0, "a"))));
    EXPECT_TRUE(read(file, recording()));
    EXPECT_THAT(list(file), IsEmpty());
    file.m_vAnnotations.push_back(annotation("a", 0.0, 0.1));
    EXPECT_FALSE(read(file, "no WAV file"));
    EXPECT_THAT(list(file), IsEmpty());
}

TEST(AnnotatedFileRead, ACuePointWithoutIntervalFailsTheRead) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(
        file, recording(cue({cueRecord(0, 80), cueRecord(1, 90)}) + adtl(ltxt(0, 8) + labl(0, "a") + labl(1, "b")))));
    EXPECT_THAT(list(file), IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_startMissing));
    EXPECT_EQ(file.getError(), "Error, at least a start time is missing in the annotations");
}

TEST(AnnotatedFileRead, AnIntervalForAGapFailsTheRead) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(file, recording(cue({cueRecord(1, 80)}) + adtl(ltxt(0, 8) + ltxt(1, 8) + labl(1, "a")))));
    EXPECT_THAT(list(file), IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_startMissing));
}

TEST(AnnotatedFileRead, ACuePointWithoutLabelFailsTheRead) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(file, recording(cue({cueRecord(0, 80)}) + adtl(ltxt(0, 8)))));
    EXPECT_THAT(list(file), IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_labelMissing));
    EXPECT_EQ(file.getError(), "Error, at least a label is missing in the annotations");
}

TEST(AnnotatedFileRead, ALabelForAGapFailsTheRead) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(file, recording(cue({cueRecord(1, 80)}) + adtl(ltxt(1, 8) + labl(1, "a") + labl(0, "b")))));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_labelMissing));
}

TEST(AnnotatedFileRead, AMissingIntervalIsReportedBeforeAMissingLabel) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(file, recording(cue({cueRecord(0, 80)}))));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_startMissing));
}

TEST(AnnotatedFileRead, IntervalsAndLabelsBeyondAllCuePointsAreSkippedWithTheSameText) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_TRUE(read(file, recording(cue({cueRecord(0, 80)}) +
                                     adtl(ltxt(0, 8) + labl(0, "a") + ltxt(1, 8) + labl(4294967295u, "b")))));
    EXPECT_THAT(list(file), ElementsAre("a 0.01 0.011"));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_noCue, c_noCue));
}

TEST(AnnotatedFileRead, LabelsWithoutAnyCuePointLeaveAnEmptyList) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_TRUE(read(file, recording(adtl(labl(1, "b")))));
    EXPECT_THAT(list(file), IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000), c_noCue));
}

TEST(AnnotatedFileRead, OfSeveralChunksWithOneIdentifierTheLastHolds) {
    const AnnotatedFile file = opened(recording(cue({cueRecord(0, 80), cueRecord(0, 160)}) +
                                                adtl(ltxt(0, 8) + labl(0, "a")) + adtl(ltxt(0, 16) + labl(0, "b"))));
    EXPECT_THAT(list(file), ElementsAre("b 0.02 0.022"));
}

TEST(AnnotatedFileRead, ChunksTooShortForTheirFieldsAreSkipped) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_TRUE(read(
        file, recording(cue({cueRecord(0, 80)}) + adtl(ltxt(0, 8) + labl(0, "a") + wav::chunk("ltxt", wav::zeros(19)) +
                                                       wav::chunk("labl", wav::zeros(3))))));
    EXPECT_THAT(list(file), ElementsAre("a 0.01 0.011"));
    EXPECT_THAT(recorder.records(),
                ElementsAre(rate(), samples(1000), record(c_iError, "Error, ltxt chunk is too short. Skipping it..."),
                            record(c_iError, "Error, labl chunk is too short. Skipping it...")));
}

TEST(AnnotatedFileRead, AChunkNamedLikeACueRecordElsewhereIsNone) {
    for (const std::string& stray : {cueRecord(0, 80), cueRecord(4294967295u, 80), std::string("short")}) {
        AnnotatedFile file;
        LogRecorder recorder;
        EXPECT_TRUE(read(
            file, recording(wav::chunk("cuep", stray) + cue({cueRecord(0, 8)}) + adtl(ltxt(0, 8) + labl(0, "a")))));
        EXPECT_THAT(list(file), ElementsAre("a 0.001 0.002"));
        EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000)));
    }
}

TEST(AnnotatedFileRead, ACueChunkWithoutACountHasNoRecords) {
    EXPECT_THAT(list(opened(recording(wav::chunk("cue ", "ab")))), IsEmpty());
}

TEST(AnnotatedFileRead, LabelsNeedNoTerminatorAndEndAtTheFirstZero) {
    const std::string unterminated = wav::chunk("labl", wav::u32(0) + "abc");
    const std::string twoTexts = wav::chunk("labl", wav::u32(1) + "d" + wav::zeros(1) + "ef");
    const AnnotatedFile file = opened(
        recording(cue({cueRecord(0, 8), cueRecord(1, 8)}) + adtl(ltxt(0, 0) + unterminated + ltxt(1, 0) + twoTexts)));
    EXPECT_THAT(list(file), ElementsAre("abc 0.001 0.001", "d 0.001 0.001"));
}

TEST(AnnotatedFileRead, NoFmtChunkFails) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(file, wav::file(data(10))));
    EXPECT_THAT(recorder.records(), ElementsAre(record(c_iError, "Invalid WAV file : no chunk fmt")));
    EXPECT_EQ(file.getError(), "Invalid WAV file : no chunk fmt");
}

TEST(AnnotatedFileRead, NoDataChunkFails) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(read(file, wav::file(wav::fmt())));
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), record(c_iError, "Invalid WAV file : no chunk data")));
}

TEST(AnnotatedFileRead, OnlyMonoIsAccepted) {
    AnnotatedFile file;
    LogRecorder recorder(log4cplus::DEBUG_LOG_LEVEL);
    EXPECT_FALSE(read(file, wav::file(fmt(2) + data(10))));
    EXPECT_THAT(recorder.records(),
                ElementsAre(rate(), failedAssertion("chunkFmt.m_usNbOfChannels == 1", "AudioAnnotation")));
    EXPECT_THAT(file.getError(), testing::HasSubstr("2 channels"));
}

TEST(AnnotatedFileRead, AFmtChunkTooShortToHaveChannelsIsNotMono) {
    AnnotatedFile file;
    EXPECT_FALSE(read(file, wav::file(wav::chunk("fmt ", wav::u16(1) + wav::u16(1)) + data(10))));
}

TEST(AnnotatedFileRead, LessThanEightBitsASampleOrNoRateFail) {
    AnnotatedFile file;
    EXPECT_FALSE(read(file, wav::file(fmt(1, 8000, 0) + data(10))));
    EXPECT_FALSE(read(file, wav::file(fmt(1, 8000, 7) + data(10))));
    EXPECT_THAT(file.getError(), testing::HasSubstr("7 bits"));
    EXPECT_FALSE(read(file, wav::file(fmt(1, 0) + data(10))));
    EXPECT_THAT(file.getError(), testing::HasSubstr("rate"));
}

TEST(AnnotatedFileRead, BytesPerSampleAreWholeBytes) {
    EXPECT_EQ(opened(wav::file(fmt(1, 8000, 8) + data(10))).getNbOfSamples(), 20u);
    EXPECT_EQ(opened(wav::file(fmt(1, 8000, 15) + data(10))).getNbOfSamples(), 20u);
    EXPECT_EQ(opened(wav::file(fmt(1, 8000, 24) + data(10))).getNbOfSamples(), 6u);
}

TEST(AnnotatedFileRead, WhatIsNoWavFileFailsWithoutARecord) {
    for (const std::string& bytes : {std::string(), std::string("RIFF"), std::string("some text, not a WAV file"),
                                     "RIFF" + wav::u32(4) + "AVI "}) {
        AnnotatedFile file;
        LogRecorder recorder;
        EXPECT_FALSE(read(file, bytes));
        EXPECT_THAT(recorder.records(), IsEmpty());
        EXPECT_NE(file.getError(), "");
    }
}

TEST(AnnotatedFileRead, ACueNumberThatWouldTakeAllMemoryIsRefused) {
    AnnotatedFile file;
    LogRecorder recorder;
    EXPECT_FALSE(
        read(file, recording(cue({cueRecord(0, 8), cueRecord(1048576, 8)}) + adtl(ltxt(0, 8) + labl(0, "a")))));
    EXPECT_THAT(list(file), IsEmpty());
    EXPECT_THAT(recorder.records(), ElementsAre(rate(), samples(1000),
                                                record(c_iError, "Error, cue point ID 1048576 is not below 1048576")));
}

TEST(AnnotatedFileRead, TheLargestCueNumberIsTaken) {
    const AnnotatedFile file =
        opened(recording(cue({cueRecord(1048575, 8)}) + adtl(ltxt(1048575, 8) + labl(1048575, "a"))));
    ASSERT_EQ(file.m_vAnnotations.size(), 1048576u);
    EXPECT_EQ(file.m_vAnnotations.back()->getLabel(), "a");
}

TEST(AnnotatedFileRead, ADataChunkCutOffByTheEndOfTheFileHasTheSamplesThatAreThere) {
    EXPECT_EQ(opened(recording().substr(0, 12 + 24 + 8 + 100)).getNbOfSamples(), 50u);
}

TEST(AnnotatedFileRead, AStreamThatBreaksFails) {
    struct BrokenBuffer : std::streambuf {
        std::array<char, 12> header{'R', 'I', 'F', 'F', 100, 0, 0, 0, 'W', 'A', 'V', 'E'};
        BrokenBuffer() { setg(header.data(), header.data(), header.data() + header.size()); }
        int_type underflow() override { throw std::runtime_error("the disk is gone"); }
    } buffer;
    std::istream is(&buffer);
    AnnotatedFile file;
    EXPECT_TRUE(file.readFromWAV(is).fail());
    EXPECT_THAT(list(file), IsEmpty());
}

TEST(AnnotatedFileRead, CopiesCloneTheAnnotations) {
    const AnnotatedFile file = opened(recording(cue({cueRecord(0, 80)}) + adtl(ltxt(0, 8) + labl(0, "a"))));
    AnnotatedFile copy(file);
    copy.m_vAnnotations[0]->setLabel("changed");
    AnnotatedFile assigned;
    assigned = copy;
    assigned.m_vAnnotations[0]->setStopTime(1.0);
    EXPECT_THAT(list(file), ElementsAre("a 0.01 0.011"));
    EXPECT_THAT(list(copy), ElementsAre("changed 0.01 0.011"));
    EXPECT_THAT(list(assigned), ElementsAre("changed 0.01 1"));
    EXPECT_EQ(assigned.getNbOfSamples(), 1000u);
    EXPECT_EQ(written(copy).size(), written(assigned).size());
}

TEST(AnnotatedFileSamples, TimesAreRoundedToTheNearestSampleHalvesUp) {
    EXPECT_EQ(AnnotatedFile::toSample(0.00006, 8000), 0u);
    EXPECT_EQ(AnnotatedFile::toSample(0.0000625, 8000), 1u);
    EXPECT_EQ(AnnotatedFile::toSample(0.5, 8000), 4000u);
    EXPECT_EQ(AnnotatedFile::toSample(1.99994, 8000), 16000u);
}

TEST(AnnotatedFileSamples, TimesThatAreNoneGiveTheFirstOrTheLastSample) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(AnnotatedFile::toSample(std::nan(""), 8000), 0u);
    EXPECT_EQ(AnnotatedFile::toSample(-1.0, 8000), 0u);
    EXPECT_EQ(AnnotatedFile::toSample(-infinity, 8000), 0u);
    EXPECT_EQ(AnnotatedFile::toSample(infinity, 8000), 4294967295u);
    EXPECT_EQ(AnnotatedFile::toSample(1e300, 8000), 4294967295u);
    EXPECT_EQ(AnnotatedFile::toSample(infinity, 0), 0u);
}

TEST(AnnotatedFileSamples, EverySampleComesBackFromItsTime) {
    for (const std::uint32_t rate : {1u, 8000u, 11025u, 44100u, 192000u}) {
        for (std::uint64_t sample = 0; sample < 4294967295u; sample = sample * 3 + 1) {
            const auto expected = static_cast<std::uint32_t>(sample);
            ASSERT_EQ(AnnotatedFile::toSample(expected / static_cast<double>(rate), rate), expected);
        }
    }
}
