#pragma once

#include <murvane/core/Object.h>

#include <string>

namespace Zantrix {

/// A configuration that can only be read: values by dotted key, such as "signalfeature.SampleRate".
///
/// Every getter returns false, and leaves its output alone, when the key is absent or its value is not of the type
/// asked for. Keys are compared exactly. A null key is an absent one.
class MURVANE_API ROConfiguration : public virtual Object {
public:
    virtual bool getIntParameter(const char* key, int& value) const = 0;
    virtual bool getStringParameter(const char* key, std::string& value) const = 0;
    virtual bool getFloatParameter(const char* key, double& value) const = 0;
    virtual bool getBoolParameter(const char* key, bool& value) const = 0;

    /// Whether the key has a value, of whatever type.
    virtual bool parameterDefined(const char* key) const = 0;
};

}  // namespace Zantrix
