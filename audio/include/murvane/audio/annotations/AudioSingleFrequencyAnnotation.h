#pragma once

#include <murvane/audio/annotations/AudioAnnotation.h>

///     Annotation
///     └── SingleFrequencyAnnotation (virtual)
///         └── SingleFrequencyAnnotationImpl, also an AnnotationImpl
namespace Zantrix::Audio {

/// A tone of one frequency, labelled "SF_" and the frequency in hertz, such as "SF_440".
class MURVANE_API SingleFrequencyAnnotation : public virtual Annotation {
public:
    /// Stores the frequency in hertz and rebuilds the label from it.
    virtual void setFrequency(int frequency) = 0;
    virtual int getFrequency() const = 0;

    static const char* getPrefix();
};

class MURVANE_API SingleFrequencyAnnotationImpl : public AnnotationImpl, public virtual SingleFrequencyAnnotation {
public:
    MURVANE_MEM_ACCOUNT("SingleFrequencyAnnotationImpl")

    void setFrequency(int frequency) override;
    int getFrequency() const override { return m_iFrequency; }

    /// Reads the frequency from the label and keeps the label as given: "SF_0440" stays "SF_0440", with 440 Hz.
    ///
    /// @return false, after a record and with nothing changed, when the label does not begin with exactly "SF_" (DEBUG)
    ///         or no number follows (ERROR)
    bool setLabel(const char* label) override;

    /// Whether a label matches the type's expression, without regard to case; the prefix of `setLabel` is stricter.
    static bool isSFLabel(const char* label);

    static const char* s_getRegex();
    static const char* s_getTypeName();
    const char* getRegex() const override { return s_getRegex(); }
    const char* getTypeName() const override { return s_getTypeName(); }

    SingleFrequencyAnnotationImpl* clone() const override;

private:
    int m_iFrequency = 0;
};

}  // namespace Zantrix::Audio
