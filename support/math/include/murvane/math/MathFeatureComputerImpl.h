#pragma once

#include <murvane/core/StringVector.h>
#include <murvane/math/SignalFeaturePool.h>

#include <boost/serialization/access.hpp>
#include <boost/serialization/export.hpp>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// Feature computers: named inputs go in, the values of a list of named features come out.
///
///     Cloneable, Resettable
///     └── FeatureComputer              computeFeatures()
///         ├── FeatureComputerWithInputs    setInput()
///         └── FeatureComputerImpl          (virtual base of the next)
///             └── FeatureComputerWithInputsImpl, also a FeatureComputerWithInputs
namespace Zantrix::Math {

class MURVANE_API FeatureComputer : public virtual Resettable, public virtual Cloneable {
public:
    /// Computes every feature of the list.
    ///
    /// @param out  replaced by the values of all features, in the order of the list; may be one of the inputs
    /// @return false, with `out` empty, when a feature fails or has no input
    virtual bool computeFeatures(DoubleVector& out) = 0;
};

class MURVANE_API FeatureComputerWithInputs : public virtual FeatureComputer {
public:
    /// Binds a vector to a name, for all computations from now on; binding the name again replaces it.
    ///
    /// The vector is not copied: it must outlive its use, and what it holds when `computeFeatures` is called is
    /// what counts.
    ///
    /// @return false for a null or empty name
    virtual bool setInput(const char* name, const DoubleVector& value) = 0;

    /// The same for a vector that nobody keeps: it moves into the computer.
    ///
    /// @return false for a null or empty name, and, unless overridden, for every one
    virtual bool setInput(const char* name, DoubleVector&& value);
};

/// Evaluates a list of feature names (see `SignalFeatureFactory` for their form) through a feature pool.
///
/// Life of a computer:
/// 1. Construct it; add factories to the pool if it lacks some.
/// 2. `addFeature` or `configure`: which features, in which order.
/// 3. Bind inputs. The last element of a name that is also the exact name of an input reads that input; every other
///    last element is a feature of the default input: "Amplitude", else the first one bound.
/// 4. `computeFeatures`, once per window. Each distinct tail of the names is computed once: "SPECTRUM",
///    "FLATNESS_SPECTRUM" and "PEAKS_SPECTRUM" share one spectrum.
/// 5. `reset` between streams, so that features with a memory start anew.
///
/// A computer belongs to one thread.
class MURVANE_API FeatureComputerImpl : public virtual FeatureComputer {
public:
    FeatureComputerImpl();
    ~FeatureComputerImpl() override;
    FeatureComputerImpl(const FeatureComputerImpl&) = delete;
    FeatureComputerImpl& operator=(const FeatureComputerImpl&) = delete;

    /// Appends a feature to the list.
    ///
    /// @return false, with the list unchanged, when the name is malformed, or an element is neither built by the pool
    ///         nor, as the last one, the name of an input bound before
    bool addFeature(const char* name);

    /// Replaces the list by the names of "featurecomputer.featuresList". Blanks separate them, other than blanks
    /// within the parentheses of a name.
    ///
    /// @return false, after an ERROR record and with the list unchanged, when the key is absent or a name is refused
    bool configure(const ROConfiguration& config);

    /// The names as they were added.
    const StringVector& getFeatureNames() const { return m_vFeatureNames; }

    /// The pool that builds the features; factories are added before the features that need them.
    SignalFeaturePool& getFeaturePool() { return m_pool; }

    bool computeFeatures(DoubleVector& out) override;

    /// Computes every feature of every window bound with `setInputWindows`, with the results of as many calls of
    /// `computeFeatures`, to the bit, and faster.
    ///
    /// @param out  one vector per window, replaced by that window's values
    /// @return false, with all of `out` empty, when a feature fails, has no input, or the number of windows differs
    ///         from that of `out`; features with a memory are then in an unspecified state until `reset`
    bool computeFeatures(std::span<DoubleVector> out);

    /// Resets every feature that has a memory; true unless one of them could not. The list stays.
    bool reset() override;

protected:
    bool bindInput(const char* name, std::span<const DoubleVector> windows);

private:
    struct Input;
    struct Node;

    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);

    bool isInput(const std::string& name) const;
    std::span<const DoubleVector> inputOf(const Node& node) const;
    bool plan();
    bool planName(const char* name);
    std::size_t findNode(const std::string& tail) const;
    std::size_t planElements(std::span<const std::string> elements);

    SignalFeaturePool m_pool;
    StringVector m_vFeatureNames;
    std::vector<Input> m_vInputs;  // in the order of first binding

    // The plan: one node per distinct tail, inner ones first. It follows the list of names, and is made anew when a
    // list was loaded or a new input takes the place of a feature; the other features keep what they remember.
    bool m_bPlanned = true;
    std::vector<Node> m_vNodes;
    std::vector<std::size_t> m_vResults;  // the node of each name
};

class MURVANE_API FeatureComputerWithInputsImpl : public virtual FeatureComputerImpl,
                                                  public virtual FeatureComputerWithInputs {
public:
    using FeatureComputerImpl::computeFeatures;

    FeatureComputerWithInputsImpl();
    ~FeatureComputerWithInputsImpl() override;

    bool setInput(const char* name, const DoubleVector& value) override;
    bool setInput(const char* name, DoubleVector&& value) override;

    /// Binds several windows to a name, for `computeFeatures(std::span<DoubleVector>)`; they must outlive their use.
    bool setInputWindows(const char* name, std::span<const DoubleVector> windows);

    /// Computers cannot be cloned: reports "Not implemented : FeatureComputerWithInputsImpl::clone" as a failed
    /// assertion and returns null.
    Cloneable* clone() const override;

private:
    struct OwnedInput {
        std::string name;
        std::unique_ptr<DoubleVector> pValue;
    };

    friend class boost::serialization::access;
    template <class Archive>
    void serialize(Archive& archive, unsigned int version);

    std::vector<OwnedInput> m_vOwnedInputs;
};

}  // namespace Zantrix::Math

BOOST_CLASS_EXPORT_KEY2(Zantrix::Math::FeatureComputerImpl, "MathFeatureComputerImpl")
BOOST_CLASS_EXPORT_KEY2(Zantrix::Math::FeatureComputerWithInputsImpl, "MathFeatureComputerWithInputsImpl")
