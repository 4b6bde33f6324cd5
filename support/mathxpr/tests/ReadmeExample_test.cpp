// The code of README.md.
#include <murvane/math/BasicFeatures.h>
#include <murvane/mathxpr/ExpressionList.h>
#include <murvane/mathxpr/Registry.h>
#include <murvane/mathxpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <murvane/mathxpr/UserFunctionImpl.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>

namespace {

using namespace Zantrix::Math;
using namespace Zantrix::Math::Xpr;

class PeakFeature : public virtual SignalFeature {
public:
    bool compute(const DoubleVector& in, DoubleVector& out) override {
        if (in.empty()) {
            return false;
        }
        out.push_back(*in.max_element());
        return true;
    }
    Zantrix::Cloneable* clone() const override { return new PeakFeature(*this); }
};

struct XprPeak : SignalFeatureToFunctionAdaptorImpl<PeakFeature> {
    XprPeak() : SignalFeatureToFunctionAdaptorImpl("peak", "x", 0) {}
};

const bool g_bPeakRegistered =
    Registry::getInstance().registerFunction("peak", new Registry::ExpressionAllocatorT<UserFunctionImpl<XprPeak>>);

int run(DoubleVector& values) {
    ExpressionList list;  // formulas of x, the window
    FormulaError error;
    if (!list.add("level", "mean(x * x)", error) || !list.add("contrast", "mean(x * x) / peak(x * x)", error)) {
        std::cerr << error.rendered << '\n';  // column, what was expected, the line with a caret below the place
        return 1;
    }
    if (!list.evaluate(DoubleVector{0.5, -0.5, 1.0, 0.0}, values)) {
        std::cerr << list.getError() << '\n';
        return 1;
    }
    return 0;
}

TEST(ReadmeExample, GivesTheValuesThatItTells) {
    ASSERT_TRUE(g_bPeakRegistered);
    DoubleVector values;
    ASSERT_EQ(run(values), 0);
    EXPECT_THAT(values, testing::ElementsAre(0.375, 0.375));
}

}  // namespace
