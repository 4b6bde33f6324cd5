#pragma once

#include <murvane/infra/ROConfiguration.h>

#include <iosfwd>
#include <map>
#include <string>

namespace Zantrix {

/// A writable set of parameters. Values are kept as text, so that a value set in code and the same value read
/// from a file are equal; numbers are written in the shortest form that reads back to the same number.
class MURVANE_API ParameterTrie : public virtual ROConfiguration {
public:
    /// Each sets or replaces one value; true unless the key is null, or could not be read back: it is empty, begins
    /// with "#", holds "=" or a line's end, or has blanks around it.
    bool setIntParameter(const char* key, int value);
    bool setStringParameter(const char* key, const std::string& value);
    bool setFloatParameter(const char* key, double value);
    bool setBoolParameter(const char* key, bool value);

    /// The value as a whole decimal number within the range of `int`.
    bool getIntParameter(const char* key, int& value) const override;
    bool getStringParameter(const char* key, std::string& value) const override;
    bool getFloatParameter(const char* key, double& value) const override;
    /// "true", "yes", "on" and "1"; "false", "no", "off" and "0"; without regard to case.
    bool getBoolParameter(const char* key, bool& value) const override;
    bool parameterDefined(const char* key) const override;

    /// Adds the parameters of a text of `key = value` lines.
    ///
    /// Blanks around key and value are dropped; a value in double quotes keeps its blanks, and has `\"`, `\\` and
    /// `\n` in it for a quote, a backslash and a line's end. Empty lines and lines that begin with "#" are skipped.
    /// Of a key given twice the last value holds.
    ///
    /// @param error  what is wrong with the first bad line, its number included; unchanged on success
    /// @return false when a line is not of this form or the stream fails; then nothing was added
    bool read(std::istream& is, std::string& error);

    /// Writes the parameters in the form that `read` takes, sorted by key.
    std::ostream& write(std::ostream& os) const;

private:
    const std::string* find(const char* key) const;
    bool set(const char* key, std::string value);

    std::map<std::string, std::string, std::less<>> m_values;
};

}  // namespace Zantrix
