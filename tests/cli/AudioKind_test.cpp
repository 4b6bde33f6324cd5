#include "shell/AudioKind.h"

#include <gtest/gtest.h>

#include <string>

namespace Zantrix::Cli {
namespace {

std::string kindOf(const std::string& beginning) {
    const char* kind = audioKindOf(beginning);
    return kind == nullptr ? "" : kind;
}

TEST(AudioKind, IsToldByTheFirstBytes) {
    const std::string size("\0\0\0\x24", 4);
    EXPECT_EQ(kindOf("RIFF" + size + "WAVE"), "RIFF");
    EXPECT_EQ(kindOf("RF64" + size), "RF64");
    EXPECT_EQ(kindOf("BW64" + size), "BW64");
    EXPECT_EQ(kindOf("RIFX" + size), "RIFX");
    EXPECT_EQ(kindOf("FORM" + size + "AIFF"), "AIFF");
    EXPECT_EQ(kindOf("fLaC" + size), "FLAC");
    EXPECT_EQ(kindOf("OggS" + size), "Ogg");
    EXPECT_EQ(kindOf(".snd" + size), "AU");
    EXPECT_EQ(kindOf("ID3\x04" + size), "MP3");
    EXPECT_EQ(kindOf("\xff\xfb\x90\x04"), "MP3");
    EXPECT_EQ(kindOf("caff" + size), "CAF");
    EXPECT_EQ(kindOf(size + "ftypM4A "), "MPEG-4");
}

TEST(AudioKind, NoTextIsAudioWhateverItsFirstWordIs) {
    EXPECT_EQ(kindOf("RIFF.wav\r\nOggS\tcaf\xc3\xa9\f\n"), "");
    EXPECT_EQ(kindOf("FORM"), "");
    EXPECT_EQ(kindOf("\xff\xfb"), "");
}

TEST(AudioKind, NothingElseIsAudio) {
    const std::string zero(1, '\0');
    EXPECT_EQ(kindOf(""), "");
    EXPECT_EQ(kindOf(zero), "");
    EXPECT_EQ(kindOf(zero + "RIFF"), "");
    EXPECT_EQ(kindOf("RIF" + zero), "");
    EXPECT_EQ(kindOf("\x93NUMPY" + zero), "");
}

TEST(AudioKind, OnlyTheHeadCounts) {
    EXPECT_EQ(kindOf("RIFF" + std::string(c_uiAudioHead - 5, 'x') + std::string(1, '\0')), "RIFF");
    EXPECT_EQ(kindOf("RIFF" + std::string(c_uiAudioHead - 4, 'x') + std::string(1, '\0')), "");
}

TEST(AudioKind, WhatIsNoRegularFileHasNone) {
    EXPECT_EQ(audioKindOfFile("/dev/zero"), nullptr);
    EXPECT_EQ(audioKindOfFile("/"), nullptr);
    EXPECT_EQ(audioKindOfFile("/no/such/file"), nullptr);
}

}  // namespace
}  // namespace Zantrix::Cli
