#include <murvane/core/Text.h>
#include <testkit/ForeignLocale.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>

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

TEST(Text, DigitsAndLettersAreThoseOfAscii) {
    std::string digits;
    std::string letters;
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        digits += Text::isDigit(c) ? std::string(1, c) : "";
        letters += Text::isLetter(c) ? std::string(1, c) : "";
    }
    EXPECT_EQ(digits, "0123456789");
    EXPECT_EQ(letters, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
}

TEST(Text, EqualityIgnoresTheCaseOfAsciiLettersOnly) {
    EXPECT_TRUE(Text::equalsIgnoringCase("", ""));
    EXPECT_TRUE(Text::equalsIgnoringCase("am_1X2", "AM_1x2"));
    EXPECT_FALSE(Text::equalsIgnoringCase("am_1X2", "am_1X"));
    EXPECT_FALSE(Text::equalsIgnoringCase("am_1X", "am_1X2"));
    EXPECT_FALSE(Text::equalsIgnoringCase("@[", "`{")) << "32 apart, as letters are";
    EXPECT_FALSE(Text::equalsIgnoringCase("\xc9", "\xe9"));
    EXPECT_FALSE(Text::equalsIgnoringCase(std::string("a\0b", 3), std::string("a\0c", 3)));
}

TEST(Text, ReadersTakeNumbersAndWordsAsInAnyOtherLocale) {
    const testkit::ForeignLocale locale;
    std::istringstream stream = Text::reader("1.000 two\xa0words");
    int number = 0;
    std::string word;
    EXPECT_TRUE(stream >> number);
    EXPECT_EQ(number, 1);
    EXPECT_TRUE(stream >> word);
    EXPECT_EQ(word, ".000");
    EXPECT_TRUE(stream >> word);
    EXPECT_EQ(word, "two\xa0words");
    EXPECT_FALSE(stream >> word);
}

TEST(Text, WholeNumbersAreReadOfWholeTextsOnly) {
    unsigned number = 7;
    for (const char* text : {"", " 1", "1 ", "+1", "-1", "1x", "0x1", "1.0", "4294967296"}) {
        EXPECT_FALSE(Text::parseWhole(text, number)) << text;
        EXPECT_EQ(number, 7u) << text;
    }
    EXPECT_TRUE(Text::parseWhole("4294967295", number));
    EXPECT_EQ(number, 4294967295u);
    EXPECT_TRUE(Text::parseWhole(std::string_view("12345").substr(1, 2), number));
    EXPECT_EQ(number, 23u);
    int negative = 7;
    EXPECT_TRUE(Text::parseWhole("-12", negative));
    EXPECT_EQ(negative, -12);
}

TEST(Text, OtherNumbersAreReadOfWholeTextsOnlyInAnyLocale) {
    const testkit::ForeignLocale locale;
    double number = 7.0;
    EXPECT_FALSE(Text::parseWhole("0,5", number));
    EXPECT_FALSE(Text::parseWhole("1e999", number));
    EXPECT_EQ(number, 7.0);
    EXPECT_TRUE(Text::parseWhole("-2.5e-1", number));
    EXPECT_EQ(number, -0.25);
}

TEST(Text, NumbersAreWrittenAsShortAsTheyCanBeReadAgain) {
    const testkit::ForeignLocale locale;
    EXPECT_EQ(Text::shortest(0.1), "0.1");
    EXPECT_EQ(Text::shortest(-0.0), "-0");
    EXPECT_EQ(Text::shortest(1e300), "1e+300");
    EXPECT_EQ(Text::shortest(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(Text::shortest(-2.2250738585072014e-308), "-2.2250738585072014e-308");
}

TEST(Text, NullIsTheEmptyText) {
    const char* text = "text";
    EXPECT_EQ(Text::orEmpty(text), text);
    EXPECT_STREQ(Text::orEmpty(nullptr), "");
}

TEST(Text, PrintableAreTheBlankAndTheCharactersOfAsciiThatShow) {
    for (int byte = -128; byte < 128; ++byte) {
        EXPECT_EQ(Text::isPrintable(static_cast<char>(byte)), byte >= 32 && byte <= 126) << byte;
    }
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
