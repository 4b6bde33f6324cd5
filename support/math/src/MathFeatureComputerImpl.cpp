#include <murvane/core/Assertion.h>
#include <murvane/core/Logging.h>
#include <murvane/core/Text.h>
#include <murvane/math/MathFeatureComputerImpl.h>

#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_oarchive.hpp>
#include <boost/serialization/base_object.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

BOOST_CLASS_EXPORT_IMPLEMENT(Zantrix::Math::FeatureComputerImpl)
BOOST_CLASS_EXPORT_IMPLEMENT(Zantrix::Math::FeatureComputerWithInputsImpl)

namespace Zantrix::Math {

namespace {

constexpr const char* c_szSource = "MathFeatureComputerImpl";
constexpr std::string_view c_strDefaultInput = "Amplitude";
constexpr std::string_view c_strBlanks = " \t\n\v\f\r";
constexpr const char* c_szFeaturesListKey = "featurecomputer.featuresList";

const Logger& logger() {
    static const Logger& logger = Logger::forCategory("murvane.math.FeatureComputerImpl");
    return logger;
}

// Names that differ only in case or in blanks around parameters are one tail. The parentheses stay: parameters may
// contain an underscore.
std::string canonicalTail(std::span<const std::string> elements) {
    std::string tail;
    std::string base;
    StringVector params;
    for (const std::string& element : elements) {
        SignalFeatureFactory::splitParams(element.c_str(), base, params);
        tail += '_' + Text::upperCase(base) + '(';
        for (const std::string& param : params) {
            tail += param + ',';
        }
        tail += ')';
    }
    return tail;
}

// The names of a list: blanks part them, but not within the parentheses of parameters.
StringVector splitNames(std::string_view list) {
    StringVector names;
    std::string name;
    int depth = 0;
    for (const char c : list) {
        if (depth <= 0 && c_strBlanks.find(c) != std::string_view::npos) {
            if (!name.empty()) {
                names.push_back(std::exchange(name, {}));
            }
            continue;
        }
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        name += c;
    }
    if (!name.empty()) {
        names.push_back(std::move(name));
    }
    return names;
}

bool overlap(std::span<const DoubleVector> a, std::span<const DoubleVector> b) {
    const std::less<> isBefore;
    return isBefore(a.data(), b.data() + b.size()) && isBefore(b.data(), a.data() + a.size());
}

}  // namespace

struct FeatureComputerImpl::Input {
    std::string name;
    std::span<const DoubleVector> windows;
};

// One distinct tail of the names: a feature of another node's values or of an input, or an input itself.
struct FeatureComputerImpl::Node {
    static constexpr std::size_t c_uiNone = static_cast<std::size_t>(-1);

    std::string tail;
    std::unique_ptr<SignalFeature> pFeature;  // null: the node is an input
    std::string input;                        // the input's name; empty with a feature: the default input
    std::size_t inner = c_uiNone;             // the node whose values the feature sees; none: an input
    std::vector<DoubleVector> values;         // of each window, storage kept
};

FeatureComputerImpl::FeatureComputerImpl() = default;
FeatureComputerImpl::~FeatureComputerImpl() = default;

bool FeatureComputerImpl::addFeature(const char* name) {
    if ((!m_bPlanned && !plan()) || !planName(name)) {
        return false;
    }
    m_vFeatureNames.emplace_back(name);
    return true;
}

bool FeatureComputerImpl::configure(const ROConfiguration& config) {
    std::string list;
    if (!config.getStringParameter(c_szFeaturesListKey, list)) {
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Could not find parameter ", c_szFeaturesListKey,
                     " in configuration");
        return false;
    }
    // The plan in use is set aside whole: after a refused name it goes on where it was, memories included.
    StringVector previousNames = std::exchange(m_vFeatureNames, {});
    std::vector<Node> previousNodes = std::exchange(m_vNodes, {});
    std::vector<std::size_t> previousResults = std::exchange(m_vResults, {});
    const bool wasPlanned = std::exchange(m_bPlanned, true);
    for (const std::string& name : splitNames(list)) {
        if (!addFeature(name.c_str())) {
            logger().log(LogLevel::Error, c_szSource, __LINE__, "Unknown feature ", name, " in parameter ",
                         c_szFeaturesListKey);
            m_vFeatureNames = std::move(previousNames);
            m_vNodes = std::move(previousNodes);
            m_vResults = std::move(previousResults);
            m_bPlanned = wasPlanned;
            return false;
        }
    }
    return true;
}

bool FeatureComputerImpl::computeFeatures(DoubleVector& out) {
    return computeFeatures(std::span<DoubleVector>(&out, 1));
}

bool FeatureComputerImpl::computeFeatures(std::span<DoubleVector> out) {
    if (std::any_of(m_vInputs.begin(), m_vInputs.end(),
                    [&](const Input& input) { return overlap(input.windows, out); })) {
        // Inputs are read to the end: what replaces them is put together apart.
        std::vector<DoubleVector> values(out.size());
        const bool isComputed = computeFeatures(std::span(values));
        std::move(values.begin(), values.end(), out.begin());
        return isComputed;
    }
    for (DoubleVector& values : out) {
        values.clear();
    }
    if (!m_bPlanned && !plan()) {
        return false;
    }
    for (Node& node : m_vNodes) {
        if (node.pFeature == nullptr) {
            continue;
        }
        const std::span<const DoubleVector> in =
            node.inner == Node::c_uiNone ? inputOf(node) : std::span(m_vNodes[node.inner].values).first(out.size());
        if (in.size() != out.size()) {
            return false;
        }
        node.values.resize(std::max(node.values.size(), out.size()));
        for (DoubleVector& values : node.values) {
            values.clear();
        }
        if (!node.pFeature->computeWindows(in, std::span<DoubleVector>(node.values).first(out.size()))) {
            return false;
        }
    }
    for (const std::size_t result : m_vResults) {
        const Node& node = m_vNodes[result];
        const std::span<const DoubleVector> values =
            node.pFeature == nullptr ? inputOf(node) : std::span(node.values).first(out.size());
        if (values.size() != out.size()) {
            for (DoubleVector& window : out) {
                window.clear();
            }
            return false;
        }
        for (std::size_t i = 0; i < out.size(); ++i) {
            out[i].append(values[i]);
        }
    }
    return true;
}

bool FeatureComputerImpl::reset() {
    bool done = true;
    for (Node& node : m_vNodes) {
        if (auto* pResettable = dynamic_cast<Resettable*>(node.pFeature.get())) {
            done = pResettable->reset() && done;
        }
    }
    return done;
}

bool FeatureComputerImpl::bindInput(const char* name, std::span<const DoubleVector> windows) {
    if (name == nullptr || *name == '\0') {
        return false;
    }
    const auto bound =
        std::find_if(m_vInputs.begin(), m_vInputs.end(), [&](const Input& input) { return input.name == name; });
    if (bound != m_vInputs.end()) {
        bound->windows = windows;
        return true;
    }
    m_vInputs.push_back({name, windows});
    // A last element that was a feature so far is this input from now on.
    StringVector elements;
    for (const std::string& featureName : m_vFeatureNames) {
        if (SignalFeatureFactory::splitElements(featureName.c_str(), elements) && elements.back() == name) {
            m_bPlanned = false;
        }
    }
    return true;
}

bool FeatureComputerImpl::isInput(const std::string& name) const {
    return std::any_of(m_vInputs.begin(), m_vInputs.end(), [&](const Input& input) { return input.name == name; });
}

// Plans the whole list anew. Features whose tail stays go on with what they remember.
bool FeatureComputerImpl::plan() {
    std::vector<Node> previousNodes = std::exchange(m_vNodes, {});
    m_vResults.clear();
    m_bPlanned = std::all_of(m_vFeatureNames.begin(), m_vFeatureNames.end(), [this](const std::string& name) {
        if (planName(name.c_str())) {
            return true;
        }
        logger().log(LogLevel::Error, c_szSource, __LINE__, "Unknown feature ", name);
        return false;
    });
    if (!m_bPlanned) {
        m_vNodes = std::move(previousNodes);
        return false;
    }
    for (Node& previous : previousNodes) {
        const std::size_t same = findNode(previous.tail);
        if (same != Node::c_uiNone) {
            m_vNodes[same].pFeature = std::move(previous.pFeature);
        }
    }
    return true;
}

// The node of a tail, if there is one.
std::size_t FeatureComputerImpl::findNode(const std::string& tail) const {
    const auto found =
        std::find_if(m_vNodes.begin(), m_vNodes.end(), [&](const Node& node) { return node.tail == tail; });
    return found == m_vNodes.end() ? Node::c_uiNone : static_cast<std::size_t>(found - m_vNodes.begin());
}

// Plans one more name; on failure the plan stays as it was.
bool FeatureComputerImpl::planName(const char* name) {
    StringVector elements;
    if (!SignalFeatureFactory::splitElements(name, elements)) {
        return false;
    }
    const std::size_t planned = m_vNodes.size();
    const std::size_t node = planElements(elements);
    if (node == Node::c_uiNone) {
        m_vNodes.erase(m_vNodes.begin() + static_cast<std::ptrdiff_t>(planned), m_vNodes.end());
        return false;
    }
    m_vResults.push_back(node);
    return true;
}

// The node of the tail that begins with the first of `elements`, made if there is none yet.
std::size_t FeatureComputerImpl::planElements(std::span<const std::string> elements) {
    const bool isLast = elements.size() == 1;
    Node node;
    // The names of inputs are exact, those of features are not: the two never share a node.
    node.input = isLast && isInput(elements.front()) ? elements.front() : "";
    node.tail = canonicalTail(elements);
    if (isInput(elements.back())) {
        node.tail += '=' + elements.back();
    }
    if (const std::size_t planned = findNode(node.tail); planned != Node::c_uiNone) {
        return planned;
    }
    if (node.input.empty()) {
        node.pFeature.reset(m_pool.getNewBaseFeature(elements.front().c_str()));
        if (node.pFeature == nullptr) {
            return Node::c_uiNone;
        }
    }
    if (!isLast) {
        const std::size_t inner = planElements(elements.subspan(1));
        if (inner == Node::c_uiNone) {
            return Node::c_uiNone;
        }
        if (m_vNodes[inner].pFeature == nullptr) {
            node.input = m_vNodes[inner].input;
        } else {
            node.inner = inner;
        }
    }
    m_vNodes.push_back(std::move(node));
    return m_vNodes.size() - 1;
}

// The windows that a node without an inner node sees; none when nothing fitting is bound.
std::span<const DoubleVector> FeatureComputerImpl::inputOf(const Node& node) const {
    const std::string_view name = node.input.empty() ? c_strDefaultInput : std::string_view(node.input);
    for (const Input& input : m_vInputs) {
        if (input.name == name) {
            return input.windows;
        }
    }
    return node.input.empty() && !m_vInputs.empty() ? m_vInputs.front().windows : std::span<const DoubleVector>();
}

template <class Archive>
void FeatureComputerImpl::serialize(Archive& archive, unsigned int) {
    // Loaded apart: an archive that turns out to be damaged leaves the computer as it was.
    StringVector names = m_vFeatureNames;
    archive& boost::serialization::make_nvp("m_vFeatureNames", names);
    if constexpr (Archive::is_loading::value) {
        m_vFeatureNames = std::move(names);
        m_vNodes.clear();
        m_bPlanned = false;
    }
}

template void FeatureComputerImpl::serialize(boost::archive::polymorphic_iarchive&, unsigned int);
template void FeatureComputerImpl::serialize(boost::archive::polymorphic_oarchive&, unsigned int);

FeatureComputerWithInputsImpl::FeatureComputerWithInputsImpl() = default;
FeatureComputerWithInputsImpl::~FeatureComputerWithInputsImpl() = default;

// Nobody knows how long the value of a caller lives who gave it away: only what keeps it can take it.
bool FeatureComputerWithInputs::setInput(const char*, DoubleVector&&) {
    return false;
}

bool FeatureComputerWithInputsImpl::setInput(const char* name, const DoubleVector& value) {
    return setInputWindows(name, std::span<const DoubleVector>(&value, 1));
}

bool FeatureComputerWithInputsImpl::setInput(const char* name, DoubleVector&& value) {
    if (name == nullptr || *name == '\0') {
        return false;
    }
    auto owned = std::find_if(m_vOwnedInputs.begin(), m_vOwnedInputs.end(),
                              [&](const OwnedInput& input) { return input.name == name; });
    if (owned == m_vOwnedInputs.end()) {
        owned = m_vOwnedInputs.insert(owned, {name, std::make_unique<DoubleVector>()});
    }
    *owned->pValue = std::move(value);
    return bindInput(name, std::span<const DoubleVector>(owned->pValue.get(), 1));
}

bool FeatureComputerWithInputsImpl::setInputWindows(const char* name, std::span<const DoubleVector> windows) {
    return bindInput(name, windows);
}

Cloneable* FeatureComputerWithInputsImpl::clone() const {
    Assertion(false, "Not implemented : FeatureComputerWithInputsImpl::clone", c_szSource, 106);
    return nullptr;
}

template <class Archive>
void FeatureComputerWithInputsImpl::serialize(Archive& archive, unsigned int) {
    archive& boost::serialization::make_nvp("MathFeatureComputerImpl",
                                            boost::serialization::base_object<FeatureComputerImpl>(*this));
}

template void FeatureComputerWithInputsImpl::serialize(boost::archive::polymorphic_iarchive&, unsigned int);
template void FeatureComputerWithInputsImpl::serialize(boost::archive::polymorphic_oarchive&, unsigned int);

}  // namespace Zantrix::Math
