// The audio of annotated files, as libsndfile decodes it: no edit may touch a bit of it.
#include "AnnotatedFileFixture.h"

#include <testkit/WavFixture.h>

#include <sndfile.h>

#include <bit>
#include <cstdint>
#include <functional>

namespace {

using namespace annotated_file_test;
using testkit::readBytes;
using testkit::writeBytes;

constexpr int c_iRate = 8000;
constexpr std::size_t c_uiHeaderSize = 8;

struct Encoding {
    const char* name;
    int format;
    std::size_t bytesPerSample;
};

/// What libsndfile tells of a file.
struct Audio {
    SF_INFO info{};
    std::vector<std::uint64_t> decoded;  // bits of doubles: NaN and signs of zero count as well
    std::vector<char> raw;
    std::uint32_t cueCount = 0;
};

Audio audioOf(const std::string& path, const Encoding& encoding) {
    Audio audio;
    SNDFILE* pFile = sf_open(path.c_str(), SFM_READ, &audio.info);
    if (pFile == nullptr) {
        ADD_FAILURE() << "libsndfile cannot open the file: " << sf_strerror(nullptr);
        return audio;
    }
    const auto count = static_cast<std::size_t>(audio.info.frames);
    std::vector<double> samples(count);
    EXPECT_EQ(sf_read_double(pFile, samples.data(), audio.info.frames), audio.info.frames);
    for (const double sample : samples) {
        audio.decoded.push_back(std::bit_cast<std::uint64_t>(sample));
    }
    audio.raw.resize(count * encoding.bytesPerSample);
    const auto size = static_cast<sf_count_t>(audio.raw.size());
    EXPECT_EQ(sf_seek(pFile, 0, SF_SEEK_SET), 0);
    EXPECT_EQ(sf_read_raw(pFile, audio.raw.data(), size), size);
    sf_command(pFile, SFC_GET_CUE_COUNT, &audio.cueCount, sizeof(audio.cueCount));
    sf_close(pFile);
    return audio;
}

/// The same file without the padding byte that ends it.
std::string withoutPadding(const std::string& file) {
    const std::string bytes = file.substr(0, file.size() - 1);
    return "RIFF" + wav::u32(static_cast<std::uint32_t>(bytes.size() - c_uiHeaderSize)) + bytes.substr(c_uiHeaderSize);
}

class AnnotatedFileAudio : public testing::TestWithParam<Encoding> {
protected:
    AnnotatedFileAudio() : m_path(m_folder / "edited.wav"), m_other(m_folder / "other.wav") {
        writeBytes(m_other, recording(cue({wav::cueRecord(0, 80)}) + adtl(wav::ltxt(0, 8) + wav::labl(0, "SF_440"))));
    }

    /// Loads the file, hands its annotations to `change`, and saves it.
    void rewrite(const std::function<void(AnnotatedFile&)>& change) const {
        AnnotatedFile file;
        ASSERT_TRUE(file.loadFile(m_path)) << file.getError();
        change(file);
        ASSERT_TRUE(file.saveFile(m_path)) << file.getError();
    }

    /// Each kind of edit in turn, the audio compared after every one; all annotations are gone in the end.
    void editAndCompare() const {
        const Audio before = audioOf(m_path, GetParam());
        const char* const path = m_path.c_str();
        const auto compare = [&](const char* edit, std::uint32_t annotations) {
            SCOPED_TRACE(edit);
            const Audio after = audioOf(m_path, GetParam());
            EXPECT_EQ(after.info.frames, before.info.frames);
            EXPECT_EQ(after.info.samplerate, before.info.samplerate);
            EXPECT_EQ(after.info.channels, before.info.channels);
            EXPECT_EQ(after.info.format, before.info.format);
            EXPECT_TRUE(after.decoded == before.decoded);
            EXPECT_TRUE(after.raw == before.raw);
            EXPECT_EQ(after.cueCount, annotations);
        };
        // Every reading of what was written brings an empty annotation in front.
        EXPECT_TRUE(AnnotatedFile::addAnnotation(path, *annotation("one", 0.0, 0.001)));
        compare("the first added", 1);
        EXPECT_TRUE(AnnotatedFile::addAnnotation(path, *annotation("three", 0.001, 0.002)));
        compare("another added", 3);
        rewrite([](AnnotatedFile& file) {
            file.m_vAnnotations.back()->setLabel("a longer label of odd or even length");
            file.m_vAnnotations.back()->setStopTime(9.0);
        });
        compare("one changed", 4);
        rewrite([](AnnotatedFile& file) { file.m_vAnnotations.back()->setLabel("x"); });
        compare("its label shortened", 5);
        EXPECT_TRUE(AnnotatedFile::addAnnotations(m_other.c_str(), path));
        compare("those of another file added", 7);
        EXPECT_TRUE(AnnotatedFile::clearAnnotations(path, "SF_.*"));
        compare("some cleared", 2);
        EXPECT_TRUE(AnnotatedFile::copyAnnotations(m_other.c_str(), path));
        compare("those of another file in their place", 1);
        EXPECT_TRUE(AnnotatedFile::clearAnnotations(path));
        compare("all cleared", 0);
    }

    const testkit::TemporaryFolder m_folder;
    const std::string m_path;
    const std::string m_other;
};

TEST_P(AnnotatedFileAudio, IsTheSameToTheBitAfterEveryEdit) {
    for (const std::size_t count : {std::size_t{1}, std::size_t{800}, std::size_t{801}}) {
        SCOPED_TRACE(count);
        testkit::writeAudio(m_path, testkit::noise(count, count, 0.9), c_iRate, 1, GetParam().format);
        const std::string original = readBytes(m_path);
        editAndCompare();
        EXPECT_TRUE(readBytes(m_path) == original);
    }
}

TEST_P(AnnotatedFileAudio, StaysWhereOtherChunksFollowIt) {
    testkit::writeAudio(m_path, testkit::noise(801, 1, 0.9), c_iRate, 1, GetParam().format);
    const std::string info = wav::chunk("LIST", "INFO" + wav::chunk("ISFT", "abc"));
    const std::string chunks = readBytes(m_path).substr(c_uiHeaderSize + 4) + info;
    writeBytes(m_path, wav::file(chunks));
    editAndCompare();
    EXPECT_TRUE(readBytes(m_path) == wav::file(chunks));
}

TEST_P(AnnotatedFileAudio, OfAnOddSizeSurvivesWhereItsPaddingByteWasForgotten) {
    testkit::writeAudio(m_path, testkit::noise(801, 1, 0.9), c_iRate, 1, GetParam().format);
    const std::string padded = readBytes(m_path);
    if (GetParam().bytesPerSample % 2 != 0) {
        writeBytes(m_path, withoutPadding(padded));
    }
    editAndCompare();
    EXPECT_TRUE(readBytes(m_path) == padded);
}

INSTANTIATE_TEST_SUITE_P(Encodings, AnnotatedFileAudio,
                         testing::Values(Encoding{"Pcm16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 2},
                                         Encoding{"Pcm8", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1},
                                         Encoding{"Pcm24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 3},
                                         Encoding{"Pcm32", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 4},
                                         Encoding{"MuLaw", SF_FORMAT_WAV | SF_FORMAT_ULAW, 1},
                                         Encoding{"ALaw", SF_FORMAT_WAV | SF_FORMAT_ALAW, 1},
                                         Encoding{"Float", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 4},
                                         Encoding{"Double", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 8},
                                         Encoding{"ExtensiblePcm24", SF_FORMAT_WAVEX | SF_FORMAT_PCM_24, 3},
                                         Encoding{"ExtensibleMuLaw", SF_FORMAT_WAVEX | SF_FORMAT_ULAW, 1}),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
