#include "ReaderFixture.h"

#include <bit>
#include <cmath>
#include <limits>
#include <sstream>

namespace {

using namespace reader_test;

// --- encodings ---

struct Format {
    int code;
    std::string name;
};

void PrintTo(const Format& format, std::ostream* os) {
    *os << format.name;
}

/// Whether libsndfile fails to write what it says it can: DWVW of 12 bits, and MPEG at the rates of telephony.
bool cannotBeWritten(int format) {
    const int subtype = format & SF_FORMAT_SUBMASK;
    return subtype == SF_FORMAT_DWVW_12 || (subtype >= SF_FORMAT_MPEG_LAYER_I && subtype <= SF_FORMAT_MPEG_LAYER_III);
}

/// Every combination of container and encoding that libsndfile writes and tells from the file itself.
std::vector<Format> formats() {
    int majors = 0;
    int subtypes = 0;
    sf_command(nullptr, SFC_GET_FORMAT_MAJOR_COUNT, &majors, sizeof(majors));
    sf_command(nullptr, SFC_GET_FORMAT_SUBTYPE_COUNT, &subtypes, sizeof(subtypes));
    std::vector<Format> result;
    for (int i = 0; i < majors; ++i) {
        SF_FORMAT_INFO container{};
        container.format = i;
        sf_command(nullptr, SFC_GET_FORMAT_MAJOR, &container, sizeof(container));
        for (int j = 0; j < subtypes; ++j) {
            SF_FORMAT_INFO encoding{};
            encoding.format = j;
            sf_command(nullptr, SFC_GET_FORMAT_SUBTYPE, &encoding, sizeof(encoding));
            SF_INFO info{};
            info.channels = 1;
            info.samplerate = 8000;
            info.format = container.format | encoding.format;
            if (container.format != SF_FORMAT_RAW && sf_format_check(&info) != 0 && !cannotBeWritten(info.format)) {
                std::ostringstream name;
                name << container.extension << std::hex << '_' << info.format;
                result.push_back({info.format, name.str()});
            }
        }
    }
    return result;
}

std::vector<std::uint64_t> bits(const std::vector<double>& samples) {
    std::vector<std::uint64_t> result;
    for (const double sample : samples) {
        result.push_back(std::bit_cast<std::uint64_t>(sample));
    }
    return result;
}

/// The whole file as libsndfile's own double read delivers it.
std::vector<double> readByLibsndfile(const std::string& path, SF_INFO& info) {
    info = {};
    SNDFILE* pFile = sf_open(path.c_str(), SFM_READ, &info);
    if (pFile == nullptr) {
        return {};
    }
    std::vector<double> samples(static_cast<std::size_t>(info.frames));
    samples.resize(static_cast<std::size_t>(sf_read_double(pFile, samples.data(), info.frames)));
    sf_close(pFile);
    return samples;
}

class AudioFileReaderFormatTest : public testing::TestWithParam<Format> {};

TEST_P(AudioFileReaderFormatTest, DeliversTheSamplesOfLibsndfileToTheBit) {
    const TemporaryFolder folder;
    const std::string path = folder / "audio";
    std::vector<double> samples = testkit::noise(3000, 7, 0.9);
    samples.insert(samples.end(), {1.0, -1.0, 0.0, 0.5, -0.5, 0x1p-15, -0x1p-15});
    writeAudio(path, samples, 8000, 1, GetParam().code);
    SF_INFO info{};
    const std::vector<double> expected = readByLibsndfile(path, info);
    ASSERT_GE(expected.size(), samples.size());

    AudioFileReader reader;
    LogRecorder log;
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    std::ostringstream format;
    format << std::hex << info.format;
    EXPECT_EQ(log.take(), LogRecords{opened(path, format.str())});
    EXPECT_EQ(reader.getSamplingRate(), static_cast<std::size_t>(info.samplerate));

    DoubleVector all;
    EXPECT_TRUE(reader.getAllLinearFrames(all));
    EXPECT_EQ(bits(all), bits(expected));

    const int subtype = info.format & SF_FORMAT_SUBMASK;
    EXPECT_EQ(reader.getClippingValue(), subtype == 0x10 ? 0.980347 : subtype == 0x11 ? 0.984375 : 0.999969);

    SF_FORMAT_INFO container{};
    container.format = info.format;
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &container, sizeof(container));
    SF_FORMAT_INFO encoding{};
    encoding.format = subtype;
    sf_command(nullptr, SFC_GET_FORMAT_INFO, &encoding, sizeof(encoding));
    std::ostringstream os;
    reader.getFileInfo(os);
    EXPECT_EQ(os.str(), std::string(container.name) + " (." + container.extension + ") " + encoding.name);
}

INSTANTIATE_TEST_SUITE_P(AllThatLibsndfileWrites, AudioFileReaderFormatTest, testing::ValuesIn(formats()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_F(AudioFileReaderTest, KnowsTheCommonFormats) {
    std::vector<int> codes;
    for (const Format& format : formats()) {
        codes.push_back(format.code);
    }
    for (const int expected : {
             SF_FORMAT_WAV | SF_FORMAT_PCM_U8,
             SF_FORMAT_WAV | SF_FORMAT_PCM_16,
             SF_FORMAT_WAV | SF_FORMAT_PCM_24,
             SF_FORMAT_WAV | SF_FORMAT_FLOAT,
             SF_FORMAT_WAV | SF_FORMAT_ULAW,
             SF_FORMAT_WAV | SF_FORMAT_ALAW,
             SF_FORMAT_AIFF | SF_FORMAT_PCM_16,
             SF_FORMAT_AU | SF_FORMAT_ULAW,
             SF_FORMAT_CAF | SF_FORMAT_PCM_16,
             SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
         }) {
        EXPECT_THAT(codes, testing::Contains(expected)) << std::hex << expected;
    }
}

TEST_F(AudioFileReaderTest, DeliversEverySampleOf16BitsToTheBit) {
    std::vector<std::int16_t> samples;
    for (int sample = -32768; sample < 32768; ++sample) {
        samples.push_back(static_cast<std::int16_t>(sample));
    }
    const std::string path = m_folder / "all.wav";
    testkit::writeBytes(path, wav(samples));
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    ASSERT_TRUE(reader.getAllLinearFrames(m_out));
    ASSERT_THAT(m_out, SizeIs(65536));
    for (std::size_t i = 0; i < m_out.size(); ++i) {
        ASSERT_EQ(m_out[i], (static_cast<double>(i) - 32768.0) / 32768.0);
        ASSERT_FALSE(m_out[i] == 0.0 && std::signbit(m_out[i]));
    }

    // Other containers of 16 bits scale alike, the extreme included.
    for (const Format& format : formats()) {
        if ((format.code & SF_FORMAT_SUBMASK) != SF_FORMAT_PCM_16) {
            continue;
        }
        const std::string other = m_folder / format.name;
        SF_INFO info{};
        info.channels = 1;
        info.samplerate = 8000;
        info.format = format.code;
        SNDFILE* pFile = sf_open(other.c_str(), SFM_WRITE, &info);
        ASSERT_NE(pFile, nullptr) << format.name;
        EXPECT_EQ(sf_write_short(pFile, samples.data(), 65536), 65536);
        sf_close(pFile);
        ASSERT_TRUE(reader.setSourceAudioFile(other.c_str())) << format.name;
        DoubleVector all;
        ASSERT_TRUE(reader.getAllLinearFrames(all));
        EXPECT_EQ(bits(all), bits(readByLibsndfile(other, info))) << format.name;
    }
}

TEST_F(AudioFileReaderTest, DoesNotClipFloatingPointSamples) {
    const double infinity = std::numeric_limits<double>::infinity();
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(
        fileOf({2.5, -1e30, infinity, -infinity, std::nan("")}, 8000, 1, SF_FORMAT_WAV | SF_FORMAT_DOUBLE).c_str()));
    ASSERT_TRUE(reader.getNextLinearFrames(m_out));
    ASSERT_THAT(m_out, SizeIs(5));
    EXPECT_EQ(m_out[0], 2.5);
    EXPECT_EQ(m_out[1], -1e30);
    EXPECT_EQ(m_out[2], infinity);
    EXPECT_EQ(m_out[3], -infinity);
    EXPECT_TRUE(std::isnan(m_out[4]));
}

TEST_F(AudioFileReaderTest, DescribesItsFile) {
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(rampFile(1).c_str()));
    std::ostringstream os;
    reader.getFileInfo(os) << '!';
    EXPECT_EQ(os.str(), "WAV (Microsoft) (.wav) Signed 16 bit PCM!");
    ASSERT_TRUE(reader.setSourceAudioFile(fileOf({0.0}, 8000, 1, SF_FORMAT_AU | SF_FORMAT_ULAW).c_str()));
    os.str("");
    reader.getFileInfo(os);
    EXPECT_EQ(os.str(), "AU (Sun/NeXT) (.au) U-Law");
}

TEST_F(AudioFileReaderTest, ClipsByTheEncodingOfTheLastFileItLookedAt) {
    AudioFileReader reader;
    LogRecorder log;
    EXPECT_FALSE(reader.setSourceAudioFile(fileOf({0.0, 0.0}, 8000, 2, SF_FORMAT_WAV | SF_FORMAT_ULAW).c_str()));
    EXPECT_EQ(reader.getClippingValue(), 0.980347) << "the format is stored before the channels are counted";
}

TEST_F(AudioFileReaderTest, ReadsTheSamplesThatATruncatedFileHolds) {
    const std::string path = m_folder / "truncated.wav";
    testkit::writeBytes(path, wavOfRamp(2000).substr(0, 44 + 2 * 1500));
    AudioFileReader reader;
    ASSERT_TRUE(reader.setSourceAudioFile(path.c_str()));
    ASSERT_TRUE(reader.getAllLinearFrames(m_out));
    EXPECT_THAT(m_out, ElementsAreArray(ramp(1500)));
}

}  // namespace
