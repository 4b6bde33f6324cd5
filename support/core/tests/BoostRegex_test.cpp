#include <murvane/core/BoostRegex.h>
#include <testkit/ForeignLocale.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using Zantrix::BoostRegex;

TEST(BoostRegex, MatchesWholeTextsOnly) {
    const BoostRegex regex("sf_[0-9]+");
    EXPECT_TRUE(regex.matches("sf_440"));
    EXPECT_FALSE(regex.matches("sf_440 "));
    EXPECT_FALSE(regex.matches("xsf_440"));
    EXPECT_FALSE(regex.matches("sf_"));
    EXPECT_FALSE(regex.matches(""));
    EXPECT_TRUE(BoostRegex("").matches(""));
    EXPECT_TRUE(BoostRegex("a|ab").matches("ab")) << "the alternative that reaches the end";
}

TEST(BoostRegex, IgnoresCaseUnlessToldOtherwise) {
    EXPECT_TRUE(BoostRegex("Ring[a-z]*").matches("RINGBACK"));
    EXPECT_FALSE(BoostRegex("Ring", 0).matches("RING"));
    EXPECT_TRUE(BoostRegex("Ring", 0).matches("Ring"));
}

TEST(BoostRegex, KnowsTheLettersOfAsciiWhateverTheLocale) {
    const testkit::ForeignLocale locale;
    EXPECT_TRUE(BoostRegex("BUSY_SIT").matches("busy_sit"));
    EXPECT_TRUE(BoostRegex("busy_sit").matches("BUSY_SIT"));
    EXPECT_FALSE(BoostRegex("I").matches("\xfd"));
    EXPECT_FALSE(BoostRegex("\\s").matches("\xa0"));
}

TEST(BoostRegex, ReadsPerlSyntax) {
    EXPECT_TRUE(BoostRegex("\\d{3}(?:\\.\\d+)?").matches("440.5"));
    EXPECT_TRUE(BoostRegex(".*").matches("two\nlines"));
}

TEST(BoostRegex, ThrowsWhenItIsInvalid) {
    for (const char* expression : {"(", "[", "a{2,1}", "*", "\\"}) {
        EXPECT_THROW(BoostRegex regex(expression), std::runtime_error) << expression;
    }
    try {
        const BoostRegex regex("ab(c");
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()), "");
    }
}

TEST(BoostRegex, GivesUpOnATextThatWouldTakeForEver) {
    const BoostRegex regex("(a*)*(a*)*(a*)*(a*)*b");
    EXPECT_THROW(regex.matches(std::string(200, 'a')), std::runtime_error);
    EXPECT_TRUE(regex.matches("aab")) << "and still works";
}

TEST(BoostRegex, CopiesItself) {
    const BoostRegex a("a+");
    BoostRegex copy(a);
    EXPECT_TRUE(copy.matches("AA"));
    copy = BoostRegex("b+", 0);
    EXPECT_FALSE(copy.matches("aa"));
    EXPECT_FALSE(copy.matches("BB"));
    EXPECT_TRUE(copy.matches("bb"));
    EXPECT_TRUE(a.matches("aa"));
    BoostRegex& same = copy;
    copy = same;
    EXPECT_TRUE(copy.matches("b"));
}

}  // namespace
