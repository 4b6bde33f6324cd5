#include <murvane/infra/ParameterTrie.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Zantrix::ParameterTrie;
using Zantrix::ROConfiguration;

ParameterTrie parsed(const std::string& text) {
    ParameterTrie trie;
    std::istringstream is(text);
    std::string error;
    EXPECT_TRUE(trie.read(is, error)) << error;
    EXPECT_EQ(error, "");
    return trie;
}

std::string stringOf(const ROConfiguration& configuration, const char* key) {
    std::string value = "absent";
    EXPECT_TRUE(configuration.getStringParameter(key, value)) << key;
    return value;
}

std::string written(const ParameterTrie& trie) {
    std::ostringstream os;
    EXPECT_EQ(&trie.write(os), &os);
    return os.str();
}

TEST(ParameterTrie, GivesNothingForAnAbsentKey) {
    ParameterTrie trie;
    ASSERT_TRUE(trie.setIntParameter("a.b", 1));
    for (const char* key : {"a", "a.b.c", "A.B", "", static_cast<const char*>(nullptr)}) {
        int i = 7;
        double d = 0.5;
        bool b = true;
        std::string s = "s";
        EXPECT_FALSE(trie.parameterDefined(key));
        EXPECT_FALSE(trie.getIntParameter(key, i));
        EXPECT_FALSE(trie.getFloatParameter(key, d));
        EXPECT_FALSE(trie.getBoolParameter(key, b));
        EXPECT_FALSE(trie.getStringParameter(key, s));
        EXPECT_EQ(i, 7);
        EXPECT_EQ(d, 0.5);
        EXPECT_TRUE(b);
        EXPECT_EQ(s, "s");
    }
    EXPECT_TRUE(trie.parameterDefined("a.b"));
}

TEST(ParameterTrie, TakesNoEmptyKey) {
    ParameterTrie trie;
    for (const char* key : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(trie.setIntParameter(key, 1));
        EXPECT_FALSE(trie.setStringParameter(key, "s"));
        EXPECT_FALSE(trie.setFloatParameter(key, 1.0));
        EXPECT_FALSE(trie.setBoolParameter(key, true));
    }
    EXPECT_EQ(written(trie), "");
}

TEST(ParameterTrie, TakesNoKeyThatCouldNotBeReadBack) {
    ParameterTrie trie;
    for (const char* key : {"a=b", "#a", " a", "a ", "a\nb", "\ta", "a\r", " "}) {
        EXPECT_FALSE(trie.setIntParameter(key, 1)) << key;
        EXPECT_FALSE(trie.parameterDefined(key)) << key;
    }
    EXPECT_EQ(written(trie), "");
    EXPECT_TRUE(trie.setIntParameter("a#b c\"d\"", 1));
    EXPECT_TRUE(parsed(written(trie)).parameterDefined("a#b c\"d\""));
}

TEST(ParameterTrie, ReplacesAValueWhateverItsType) {
    ParameterTrie trie;
    EXPECT_TRUE(trie.setIntParameter("key", 1));
    EXPECT_TRUE(trie.setStringParameter("key", "text"));
    EXPECT_EQ(stringOf(trie, "key"), "text");
    int value = 0;
    EXPECT_FALSE(trie.getIntParameter("key", value));
}

TEST(ParameterTrie, ReadsIntegersThatAreWholeAndFit) {
    for (const int number : {0, 1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        ParameterTrie trie;
        ASSERT_TRUE(trie.setIntParameter("i", number));
        int value = 42;
        EXPECT_TRUE(trie.getIntParameter("i", value));
        EXPECT_EQ(value, number);
    }
    for (const char* text : {"", "1.0", "1e3", "0x10", "12a", "a", "2147483648", "-2147483649", " 1", "true"}) {
        ParameterTrie trie;
        ASSERT_TRUE(trie.setStringParameter("i", text));
        int value = 42;
        EXPECT_FALSE(trie.getIntParameter("i", value)) << text;
        EXPECT_EQ(value, 42);
    }
}

TEST(ParameterTrie, ReadsNumbersBackToTheBit) {
    std::vector<double> numbers = {
        0.0, -0.0, 0.1, 1.0 / 3.0, 1e300, 5e-324, -2.5, 440.0, std::numeric_limits<double>::infinity()};
    std::mt19937_64 random(1);
    for (int i = 0; i < 1000; ++i) {
        numbers.push_back(std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 1000) - 500));
    }
    for (const double number : numbers) {
        ParameterTrie trie;
        ASSERT_TRUE(trie.setFloatParameter("d", number));
        double value = 42.0;
        EXPECT_TRUE(trie.getFloatParameter("d", value));
        EXPECT_EQ(value, number);
        EXPECT_EQ(std::signbit(value), std::signbit(number));
    }
    ParameterTrie trie;
    ASSERT_TRUE(trie.setFloatParameter("d", std::nan("")));
    double value = 42.0;
    EXPECT_TRUE(trie.getFloatParameter("d", value));
    EXPECT_TRUE(std::isnan(value));
}

TEST(ParameterTrie, ReadsFloatsFromIntegersButNotFromOtherText) {
    const ParameterTrie trie = parsed("a = 20\nb = 20Hz\nc = 1e999\nd =\ne = -1.5e2\n");
    double value = 42.0;
    EXPECT_TRUE(trie.getFloatParameter("a", value));
    EXPECT_EQ(value, 20.0);
    EXPECT_TRUE(trie.getFloatParameter("e", value));
    EXPECT_EQ(value, -150.0);
    for (const char* key : {"b", "c", "d"}) {
        EXPECT_FALSE(trie.getFloatParameter(key, value)) << key;
        EXPECT_EQ(value, -150.0);
    }
}

TEST(ParameterTrie, KnowsTheWordsOfBooleans) {
    for (const char* text : {"true", "TRUE", "yes", "On", "1"}) {
        bool value = false;
        EXPECT_TRUE(parsed(std::string("b = ") + text).getBoolParameter("b", value)) << text;
        EXPECT_TRUE(value);
    }
    for (const char* text : {"false", "False", "no", "OFF", "0"}) {
        bool value = true;
        EXPECT_TRUE(parsed(std::string("b = ") + text).getBoolParameter("b", value)) << text;
        EXPECT_FALSE(value);
    }
    for (const char* text : {"", "2", "t", "yes!", "truefalse"}) {
        bool value = true;
        EXPECT_FALSE(parsed(std::string("b = ") + text).getBoolParameter("b", value)) << text;
        EXPECT_TRUE(value);
    }
    for (const bool set : {true, false}) {
        ParameterTrie trie;
        ASSERT_TRUE(trie.setBoolParameter("b", set));
        bool value = !set;
        EXPECT_TRUE(trie.getBoolParameter("b", value));
        EXPECT_EQ(value, set);
    }
}

TEST(ParameterTrie, MakesNoDifferenceBetweenCodeAndFile) {
    ParameterTrie trie;
    trie.setIntParameter("i", -5);
    trie.setFloatParameter("f", 0.1);
    trie.setBoolParameter("b", true);
    trie.setStringParameter("s", "350 440");
    EXPECT_EQ(written(trie), written(parsed("s = 350 440\nf=0.1\n b =true\ni= -5")));
    EXPECT_EQ(written(trie), "b = true\nf = 0.1\ni = -5\ns = 350 440\n");
}

// --- reading ---

TEST(ParameterTrieReader, DropsBlanksCommentsAndEmptyLines) {
    const ParameterTrie trie =
        parsed("# a comment\n\n   \t\n  key.a \t=  some text  \r\n\t# another = one\nb=#no comment");
    EXPECT_EQ(stringOf(trie, "key.a"), "some text");
    EXPECT_EQ(stringOf(trie, "b"), "#no comment");
    EXPECT_EQ(written(trie), "b = #no comment\nkey.a = some text\n");
    EXPECT_EQ(written(parsed("")), "");
}

TEST(ParameterTrieReader, KeepsWhatStandsInQuotes) {
    const ParameterTrie trie =
        parsed("a = \"  blanks  \"\nb = \"\"\nc = \"say \\\"hi\\\" \\\\ \\n end\"\nd = in \"the\" middle\ne = a=b");
    EXPECT_EQ(stringOf(trie, "a"), "  blanks  ");
    EXPECT_EQ(stringOf(trie, "b"), "");
    EXPECT_EQ(stringOf(trie, "c"), "say \"hi\" \\ \n end");
    EXPECT_EQ(stringOf(trie, "d"), "in \"the\" middle");
    EXPECT_EQ(stringOf(trie, "e"), "a=b");
}

TEST(ParameterTrieReader, LetsTheLastValueHold) {
    EXPECT_EQ(stringOf(parsed("a = 1\na = 2\n"), "a"), "2");
    ParameterTrie trie = parsed("a = 1\nb = 1\n");
    std::istringstream is("b = 2\nc = 2\n");
    std::string error;
    EXPECT_TRUE(trie.read(is, error));
    EXPECT_EQ(written(trie), "a = 1\nb = 2\nc = 2\n");
}

TEST(ParameterTrieReader, TellsTheLineThatIsWrongAndAddsNothing) {
    const struct {
        const char* text;
        const char* error;
    } cases[] = {
        {"a = 1\n# fine\n\nno equals\n", "line 4: expected key = value"},
        {"= 1", "line 1: expected a key before \"=\""},
        {"a = 1\n \t = 1\nworse", "line 2: expected a key before \"=\""},
        {"a = \"open", "line 1: expected the value to end with its closing quote"},
        {"a = \"", "line 1: expected the value to end with its closing quote"},
        {"a = \"b\" c", "line 1: expected the value to end with its closing quote"},
        {"a = 1\r\nb = \"\\x\"\r\n", "line 2: expected the value to end with its closing quote"},
        {"a = \"b\\\"", "line 1: expected the value to end with its closing quote"},
        {"a = \"b\\", "line 1: expected the value to end with its closing quote"},
    };
    for (const auto& [text, expected] : cases) {
        ParameterTrie trie;
        ASSERT_TRUE(trie.setIntParameter("before", 1));
        std::istringstream is(text);
        std::string error;
        EXPECT_FALSE(trie.read(is, error)) << text;
        EXPECT_EQ(error, expected);
        EXPECT_EQ(written(trie), "before = 1\n");
    }
}

TEST(ParameterTrieReader, FailsWithTheStream) {
    ParameterTrie trie;
    std::string error;
    std::ifstream missing("/no/such/file/of/this/test");
    EXPECT_FALSE(trie.read(missing, error));
    EXPECT_EQ(error, "cannot be read");
    error.clear();
    std::ifstream folder("/");
    EXPECT_FALSE(trie.read(folder, error));
    EXPECT_EQ(error, "cannot be read");
}

TEST(ParameterTrieReader, ReadsBackWhatWasWritten) {
    const char alphabet[] = {'a', 'B', '0', ' ', '\t', '"', '\\', '\n', '\r', '=', '#', '.', '\x7f', '\xc3'};
    std::mt19937_64 random(2);
    const auto text = [&](std::size_t longest) {
        std::string result;
        for (std::size_t length = random() % (longest + 1); length > 0; --length) {
            result += alphabet[random() % sizeof(alphabet)];
        }
        return result;
    };
    int taken = 0;
    for (int i = 0; i < 2000; ++i) {
        ParameterTrie trie;
        for (int j = 0; j < 3; ++j) {
            const std::string key = text(6);
            const std::string value = text(10);
            if (trie.setStringParameter(key.c_str(), value)) {
                ++taken;
                const ParameterTrie back = parsed(written(trie));
                ASSERT_EQ(stringOf(back, key.c_str()), value);
                ASSERT_EQ(written(back), written(trie));
            }
        }
    }
    EXPECT_GT(taken, 1000);
}

}  // namespace
