#pragma once

// What the tests of annotated files share.
#include "AnnotationTesting.h"

#include <murvane/audio/annotations/AudioAnnotatedFile.h>
#include <testkit/LogRecorder.h>
#include <testkit/WavBytes.h>

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

namespace annotated_file_test {

using annotation_test::record;
using testing::ElementsAre;
using testing::IsEmpty;
using testkit::failedAssertion;
using testkit::LogRecord;
using testkit::LogRecorder;
using Zantrix::CloneableObjPtr;
using Zantrix::Audio::AnnotatedFile;
using Zantrix::Audio::Annotation;
using Zantrix::Audio::AnnotationImpl;

inline constexpr int c_iDebug = 10000;
inline constexpr int c_iInfo = 20000;
inline constexpr int c_iWarn = 30000;
inline constexpr int c_iError = 40000;

inline const LogRecord c_notContiguous =
    record(c_iWarn,
           "Annotation indexes are not contiguous. This would lead to empty annotations, which should not be a "
           "problem.");
inline const LogRecord c_noCue =
    record(c_iError, "Error, cue point ID in ltxt chunk has no associated cue. Skipping it...");
inline const LogRecord c_startMissing = record(c_iError, "Error, at least a start time is missing in the annotations");
inline const LogRecord c_labelMissing = record(c_iError, "Error, at least a label is missing in the annotations");
inline const LogRecord c_stopShrunk =
    record(c_iWarn, "Stop time for one of the annotations is greater than the end of this audio file. Shrinking it...");

/// What reading properties logs about a file of 8000 Hz.
inline LogRecord rate(unsigned samplesPerSecond = 8000) {
    return record(c_iDebug, "Sample rate of WAV file : " + std::to_string(samplesPerSecond));
}

inline LogRecord samples(unsigned count) {
    return record(c_iDebug, "Number of samples in WAV file : " + std::to_string(count));
}

/// A data chunk of 16-bit samples, no two alike for a while.
inline std::string data(unsigned sampleCount) {
    std::string bytes;
    for (unsigned i = 0; i < sampleCount; ++i) {
        bytes += wav::u16(i * 7919U & 0xffffU);
    }
    return wav::chunk("data", bytes);
}

inline std::string cue(const std::vector<std::string>& records) {
    std::string content = wav::u32(static_cast<std::uint32_t>(records.size()));
    for (const std::string& entry : records) {
        content += entry;
    }
    return wav::chunk("cue ", content);
}

inline std::string adtl(const std::string& chunks) {
    return wav::chunk("LIST", "adtl" + chunks);
}

/// 1000 samples, and behind them what is given.
inline std::string recording(const std::string& chunks = "") {
    return wav::file(wav::fmt() + data(1000) + chunks);
}

/// A fmt chunk with another number of channels, rate or bits.
inline std::string fmt(unsigned channels, unsigned samplesPerSecond = 8000, unsigned bits = 16) {
    return wav::chunk("fmt ", wav::u16(1) + wav::u16(channels) + wav::u32(samplesPerSecond) +
                                  wav::u32(samplesPerSecond * 2) + wav::u16(2) + wav::u16(bits));
}

inline CloneableObjPtr<Annotation> annotation(const char* label, double start, double stop) {
    auto* pAnnotation = new AnnotationImpl;
    pAnnotation->setLabel(label);
    pAnnotation->setStartTime(start);
    pAnnotation->setStopTime(stop);
    return CloneableObjPtr<Annotation>(pAnnotation);
}

/// "label start stop" of each annotation.
inline std::vector<std::string> list(const AnnotatedFile& file) {
    std::vector<std::string> result;
    for (const auto& pAnnotation : file.m_vAnnotations) {
        std::ostringstream text;
        text << pAnnotation->getLabel() << ' ' << pAnnotation->getStartTime() << ' ' << pAnnotation->getStopTime();
        result.push_back(text.str());
    }
    return result;
}

inline bool read(AnnotatedFile& file, const std::string& bytes) {
    std::istringstream is(bytes);
    return !file.readFromWAV(is).fail();
}

/// A file that must be readable.
inline AnnotatedFile opened(const std::string& bytes) {
    AnnotatedFile file;
    EXPECT_TRUE(read(file, bytes)) << file.getError();
    return file;
}

/// The bytes written, or "failed, wrote N".
inline std::string written(AnnotatedFile& file) {
    std::ostringstream os;
    return file.writeToWAV(os).fail() ? "failed, wrote " + std::to_string(os.str().size()) : os.str();
}

}  // namespace annotated_file_test
