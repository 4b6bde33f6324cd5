#include "TestFunctions.h"

#include <murvane/core/MemAccount.h>
#include <murvane/mathxpr/Registry.h>
#include <murvane/mathxpr/UserFunctionImpl.h>
#include <testkit/LogRecorder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Zantrix::Math::Xpr;
using testfunctions::XprMean;
using testkit::LogRecord;
using testkit::LogRecorder;

using MeanFunction = UserFunctionImpl<XprMean>;

class TrackedAllocator : public Registry::ExpressionAllocator {
public:
    TrackedAllocator() { ++s_iLive; }
    ~TrackedAllocator() override { --s_iLive; }
    FunctionBaseImpl* newExpression() const override { return new MeanFunction; }

    static inline int s_iLive = 0;
};

LogRecord refusal(const std::string& name, const std::string& reason) {
    return {"murvane.mathxpr.Registry", 40000, "Cannot register function \"" + name + "\": " + reason, "Registry"};
}

// Runs before main, perhaps before the initialisers of the test functions.
const std::unique_ptr<FunctionBaseImpl> g_pEarly = [] {
    Registry::getInstance().registerFunction("registeredEarly", new Registry::ExpressionAllocatorT<MeanFunction>);
    return Registry::getInstance().newFunction("registeredEarly");
}();

TEST(Registry, IsUsableFromStaticInitialisers) {
    ASSERT_NE(g_pEarly, nullptr);
    EXPECT_EQ(g_pEarly->getName(), "mean");
}

TEST(Registry, IsOneForTheProcess) {
    EXPECT_EQ(&Registry::getInstance(), &Registry::getInstance());
}

TEST(Registry, ListsNamesInTheOrderOfRegistration) {
    const auto names = Registry::getInstance().getFunctionNames();
    const std::vector<std::string> registered = {"doubled", "mean",   "temporalMean", "previous",
                                                 "range",   "scaled", "maximum",      "picky"};
    const auto first = std::search(names.begin(), names.end(), registered.begin(), registered.end());
    EXPECT_NE(first, names.end());
}

TEST(Registry, KeepsTheAllocatorOfANewName) {
    auto* pAllocator = new TrackedAllocator;
    EXPECT_TRUE(Registry::getInstance().registerFunction("tracked", pAllocator));
    EXPECT_EQ(Registry::getInstance().find("tracked"), pAllocator);
    EXPECT_EQ(Registry::getInstance().getFunctionNames().back(), "tracked");
    EXPECT_EQ(TrackedAllocator::s_iLive, 1);
}

TEST(Registry, RefusesATakenNameAndDeletesTheAllocator) {
    const auto* pBefore = Registry::getInstance().find("mean");
    const int live = TrackedAllocator::s_iLive;
    const LogRecorder recorder;
    EXPECT_FALSE(Registry::getInstance().registerFunction("mean", new TrackedAllocator));
    EXPECT_EQ(TrackedAllocator::s_iLive, live);
    EXPECT_EQ(Registry::getInstance().find("mean"), pBefore);
    EXPECT_THAT(recorder.records(), testing::ElementsAre(refusal("mean", "the name is taken")));
}

TEST(Registry, RefusesNamesThatNoFormulaCanWriteAndDeletesTheAllocator) {
    const int live = TrackedAllocator::s_iLive;
    const auto before = Registry::getInstance().getFunctionNames();
    for (const char* name : {static_cast<const char*>(nullptr), "", "1st", "a b", "a-b", "f(", "\xc3\xa9t\xc3\xa9"}) {
        const LogRecorder recorder;
        EXPECT_FALSE(Registry::getInstance().registerFunction(name, new TrackedAllocator));
        EXPECT_THAT(recorder.records(),
                    testing::ElementsAre(refusal(name == nullptr ? "" : name, "not a name that formulas can write")));
    }
    EXPECT_EQ(TrackedAllocator::s_iLive, live);
    EXPECT_EQ(Registry::getInstance().getFunctionNames(), before);
}

TEST(Registry, RefusesANullAllocator) {
    const LogRecorder recorder;
    EXPECT_FALSE(Registry::getInstance().registerFunction("withoutAllocator", nullptr));
    EXPECT_EQ(Registry::getInstance().find("withoutAllocator"), nullptr);
    EXPECT_THAT(recorder.records(), testing::ElementsAre(refusal("withoutAllocator", "no allocator")));
}

TEST(Registry, KnowsNoOtherNames) {
    EXPECT_EQ(Registry::getInstance().find("Mean"), nullptr);
    EXPECT_EQ(Registry::getInstance().find(""), nullptr);
    EXPECT_EQ(Registry::getInstance().newFunction("nothing"), nullptr);
}

TEST(Registry, MakesANewFunctionAtEachCallFromTheAccountOfFunctions) {
    auto& account = Zantrix::MemAccount::named("UserFunctionImpl");
    const auto before = account.live();
    {
        const auto pFirst = Registry::getInstance().newFunction("mean");
        const auto pSecond = Registry::getInstance().newFunction("mean");
        EXPECT_NE(pFirst, pSecond);
        EXPECT_NE(dynamic_cast<MeanFunction*>(pFirst.get()), nullptr);
        EXPECT_EQ(account.live(), before + 2);
    }
    EXPECT_EQ(account.live(), before);
}

TEST(UserFunction, TakesNameArgumentsAndParametersFromItsAdaptor) {
    const UserFunctionImpl<testfunctions::XprRange> range;
    EXPECT_EQ(range.getName(), "range");
    EXPECT_THAT(range.getArgumentNames(), testing::ElementsAre("x"));
    EXPECT_THAT(range.getParameters(), testing::ElementsAre(FunctionParameter{"startIndex", ParameterKind::WholeNumber},
                                                            FunctionParameter{"length", ParameterKind::WholeNumber}));
    ASSERT_NE(range.findParameter("length"), nullptr);
    EXPECT_EQ(range.findParameter("length")->name, "length");
    EXPECT_EQ(range.findParameter("Length"), nullptr);
}

// Counts how often it is asked for its description.
class CuriousAdaptor : public XprMean {
public:
    Zantrix::StringVector getArgumentNames() const override {
        ++s_iAsked;
        return XprMean::getArgumentNames();
    }
    static inline int s_iAsked = 0;
};

TEST(UserFunction, CopyKeepsTheDescriptionWithoutAskingAgain) {
    CuriousAdaptor::s_iAsked = 0;
    const UserFunctionImpl<CuriousAdaptor> function;
    EXPECT_EQ(CuriousAdaptor::s_iAsked, 1);
    const UserFunctionImpl<CuriousAdaptor> copy(function);
    EXPECT_EQ(CuriousAdaptor::s_iAsked, 1);
    EXPECT_EQ(copy.getName(), "mean");
    EXPECT_THAT(copy.getArgumentNames(), testing::ElementsAre("x"));
    EXPECT_NE(copy.getAdaptor().getFeature(), function.getAdaptor().getFeature());
}

TEST(UserFunction, WritesItselfAsACallAndDumpsItsDescription) {
    std::ostringstream written;
    std::ostringstream dumped;
    const UserFunctionImpl<testfunctions::XprScaled> scaled;
    written << scaled;
    scaled.dump(dumped);
    EXPECT_EQ(written.str(), "scaled(x, factors=..., gain=...)");
    EXPECT_EQ(dumped.str(),
              "function scaled\nargument x\nparameter factors: a text in double quotes\n"
              "parameter gain: a number, may be left out\nmemory: no\n");
}

}  // namespace
