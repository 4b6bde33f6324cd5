#include <murvane/core/Text.h>

#include <gtest/gtest.h>

#include <string>

namespace Text = Zantrix::Text;

TEST(Text, TrimmingTakesBlanksTabsAndLineEndsFromBothEndsOnly) {
    EXPECT_EQ(Text::trimmed(" \t\r\n\f\va b\tc\v\f\n\r\t "), "a b\tc");
    EXPECT_EQ(Text::trimmed("a"), "a");
    EXPECT_EQ(Text::trimmed(" \n"), "");
    EXPECT_EQ(Text::trimmed(""), "");
    EXPECT_EQ(Text::trimmed("\xa0"), "\xa0");
}

TEST(Text, CaseIsThatOfAsciiLettersAlone) {
    EXPECT_EQ(Text::lowerCase("AZaz@[`{09_"), "azaz@[`{09_");
    EXPECT_EQ(Text::upperCase("AZaz@[`{09_"), "AZAZ@[`{09_");
    EXPECT_EQ(Text::upperCase("\xe9\xdd"), "\xe9\xdd");
    EXPECT_EQ(Text::lowerCase(std::string(1, '\0') + 'A'), std::string(1, '\0') + 'a');
}

TEST(Text, EditDistanceCountsInsertedRemovedReplacedAndExchangedCharacters) {
    EXPECT_EQ(Text::editDistance("mean", "mean"), 0u);
    EXPECT_EQ(Text::editDistance("mean", "means"), 1u);
    EXPECT_EQ(Text::editDistance("mean", "man"), 1u);
    EXPECT_EQ(Text::editDistance("mean", "moan"), 1u);
    EXPECT_EQ(Text::editDistance("mean", "maen"), 1u);
    EXPECT_EQ(Text::editDistance("mean", "nmea"), 2u);
    EXPECT_EQ(Text::editDistance("kitten", "sitting"), 3u);
    EXPECT_EQ(Text::editDistance("", "mean"), 4u);
    EXPECT_EQ(Text::editDistance("mean", ""), 4u);
    EXPECT_EQ(Text::editDistance("", ""), 0u);
}

TEST(Text, EditDistanceDoesNotCountCase) {
    EXPECT_EQ(Text::editDistance("SPECTRUM", "spectrum"), 0u);
    EXPECT_EQ(Text::editDistance("sPectrmu", "Spectrum"), 1u);
}
