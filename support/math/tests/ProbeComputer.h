#pragma once

#include <murvane/math/MathFeatureComputerImpl.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

/// A computer whose features tell how often they were computed.
namespace probecomputer {

using namespace Zantrix;
using namespace Zantrix::Math;

/// How often each element of the probe factory was computed, by its text as the pool was asked for it.
inline std::map<std::string, int> g_computed;

/// "COUNT": the input with 1 added to each value, counted. "FAIL": always fails.
class ProbeFeature : public virtual SignalFeature {
public:
    ProbeFeature(std::string name, bool works) : m_strName(std::move(name)), m_bWorks(works) {}
    bool compute(const DoubleVector& in, DoubleVector& out) override {
        ++g_computed[m_strName];
        for (const double value : in) {
            out.push_back(value + 1.0);
        }
        return m_bWorks;
    }
    Cloneable* clone() const override { return new ProbeFeature(*this); }

private:
    std::string m_strName;
    bool m_bWorks;
};

/// "CALLS": how often it was computed since the last reset. "STUCK": the same, but cannot be reset.
class CallsFeature : public virtual SignalFeatureWithMemory {
public:
    explicit CallsFeature(bool resets) : m_bResets(resets) {}
    bool compute(const DoubleVector&, DoubleVector& out) override {
        out.push_back(++m_dCalls);
        return true;
    }
    bool reset() override {
        m_dCalls = m_bResets ? 0.0 : m_dCalls;
        return m_bResets;
    }
    Cloneable* clone() const override { return new CallsFeature(*this); }

private:
    bool m_bResets;
    double m_dCalls = 0.0;
};

class ProbeFactory : public SignalFeatureFactory {
public:
    const char* getFactoryName() const override { return "ProbeFactory"; }
    SignalFeature* getNewBaseFeature(const char* name) override {
        std::string base;
        StringVector params;
        splitParams(name, base, params);
        if (base == "COUNT" || base == "count" || base == "FAIL") {
            return new ProbeFeature(name, base != "FAIL");
        }
        if (base == "CALLS" || base == "STUCK") {
            return new CallsFeature(base == "CALLS");
        }
        return nullptr;
    }
};

class Computer : public FeatureComputerWithInputsImpl {
public:
    Computer() { getFeaturePool().addFactory(new ProbeFactory); }
    explicit Computer(const StringVector& names) : Computer() {
        for (const std::string& name : names) {
            EXPECT_TRUE(addFeature(name.c_str())) << name;
        }
    }

    DoubleVector computed() {
        DoubleVector out{-1.0};
        EXPECT_TRUE(computeFeatures(out));
        return out;
    }
};

}  // namespace probecomputer
