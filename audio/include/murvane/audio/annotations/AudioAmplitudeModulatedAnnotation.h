#pragma once

#include <murvane/audio/annotations/AudioAnnotation.h>

///     Annotation
///     └── AmplitudeModulatedAnnotation (virtual)
///         └── AmplitudeModulatedAnnotationImpl, also an AnnotationImpl
namespace Zantrix::Audio {

/// An amplitude-modulated tone, labelled "AM_", the carrier frequency, "x" and the modulating frequency, both in hertz,
/// such as "AM_1000x50".
class MURVANE_API AmplitudeModulatedAnnotation : public virtual Annotation {
public:
    MURVANE_MEM_ACCOUNT("AmplitudeModulatedAnnotation")

    /// Each stores a frequency in hertz and rebuilds the label from both.
    virtual void setCarrierFreq(unsigned frequency) = 0;
    virtual unsigned getCarrierFreq() const = 0;
    virtual void setModulatedFreq(unsigned frequency) = 0;
    virtual unsigned getModulatedFreq() const = 0;

    static const char* getPrefix();
};

class MURVANE_API AmplitudeModulatedAnnotationImpl : public AnnotationImpl,
                                                     public virtual AmplitudeModulatedAnnotation {
public:
    MURVANE_MEM_ACCOUNT("AmplitudeModulatedAnnotationImpl")

    void setCarrierFreq(unsigned frequency) override;
    unsigned getCarrierFreq() const override { return m_uiCarrierFreq; }
    void setModulatedFreq(unsigned frequency) override;
    unsigned getModulatedFreq() const override { return m_uiModulatedFreq; }

    /// Reads both frequencies from the label and keeps the label as given.
    ///
    /// @return false, after a record and with the label unchanged, when the label does not match the type's expression
    ///         (DEBUG) or a number is missing (ERROR). A carrier that was read before the failure stays.
    bool setLabel(const char* label) override;

    /// Whether a label matches the type's expression, without regard to case.
    static bool isAMLabel(const char* label);

    static void buildLabel(unsigned carrier, unsigned modulating, std::string& out);

    static const char* s_getRegex();
    static const char* s_getTypeName();
    const char* getRegex() const override { return s_getRegex(); }
    const char* getTypeName() const override { return s_getTypeName(); }

    AmplitudeModulatedAnnotationImpl* clone() const override;

protected:
    /// Each stores a frequency and leaves the label alone.
    void setCarrierFreq_i(unsigned frequency) { m_uiCarrierFreq = frequency; }
    void setModulatedFreq_i(unsigned frequency) { m_uiModulatedFreq = frequency; }

    /// Rebuilds the label from both frequencies.
    void refreshLabel();

private:
    unsigned m_uiCarrierFreq = 0;
    unsigned m_uiModulatedFreq = 0;
};

}  // namespace Zantrix::Audio
