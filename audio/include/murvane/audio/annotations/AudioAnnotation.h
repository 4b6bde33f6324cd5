#pragma once

#include <murvane/core/MemAccount.h>
#include <murvane/core/Object.h>

#include <string>

/// Annotations: labelled time intervals of a recording. All inheritance is virtual.
///
///     Cloneable
///     └── AnnotationPrototype          what the builder asks of a prototype
///         └── Annotation               also an OutputStreamable
///             └── AnnotationImpl       the base implementation
namespace Zantrix::Audio {

/// What an annotation type tells of itself, so that a label finds its type.
class MURVANE_API AnnotationPrototype : public virtual Cloneable {
public:
    /// The expression, in Perl syntax, that labels of this type match as a whole. A literal.
    virtual const char* getRegex() const = 0;

    /// The name of the type, unique among registered types. A literal.
    virtual const char* getTypeName() const = 0;
};

/// A labelled time interval: times in seconds from the beginning of the audio. Neither their order nor their sign is
/// checked here.
class MURVANE_API Annotation : public virtual AnnotationPrototype, public virtual OutputStreamable {
public:
    virtual const std::string& getLabel() const = 0;

    /// Replaces the label; false, and the label unchanged, for null and for one that the type does not accept.
    virtual bool setLabel(const char* label) = 0;

    virtual double getStartTime() const = 0;
    virtual void setStartTime(double seconds) = 0;
    virtual double getStopTime() const = 0;
    virtual void setStopTime(double seconds) = 0;

    /// Whether a label is this annotation's, as its type compares them. Never for null.
    virtual bool isEqual(const char* label) const = 0;

    bool operator==(const char* label) const { return isEqual(label); }
    bool operator==(const std::string& label) const { return isEqual(label.c_str()); }
};

/// The base implementation, which accepts every label and compares labels without regard to the case of ASCII letters.
class MURVANE_API AnnotationImpl : public virtual Annotation {
public:
    MURVANE_MEM_ACCOUNT("AnnotationImpl")

    /// From 0 s to 0 s, labelled "SF_MIN": what fills gaps among annotations has always carried that label.
    AnnotationImpl() = default;
    AnnotationImpl(const AnnotationImpl& other);
    AnnotationImpl& operator=(const AnnotationImpl& other);

    const std::string& getLabel() const override { return m_strLabel; }
    bool setLabel(const char* in_szLabel) override;
    double getStartTime() const override { return m_dStartTime; }
    void setStartTime(double seconds) override { m_dStartTime = seconds; }
    double getStopTime() const override { return m_dStopTime; }
    void setStopTime(double seconds) override { m_dStopTime = seconds; }
    bool isEqual(const char* label) const override;

    static const char* s_getRegex();
    static const char* s_getTypeName();
    const char* getRegex() const override { return s_getRegex(); }
    const char* getTypeName() const override { return s_getTypeName(); }

    /// Writes the label and both times, such as "SF_440 start=1.5s stop=2.25s".
    std::ostream& write(std::ostream& os) const override;

    AnnotationImpl* clone() const override;

protected:
    void copyFrom(const AnnotationImpl& other);

private:
    std::string m_strLabel = "SF_MIN";
    double m_dStartTime = 0.0;
    double m_dStopTime = 0.0;
};

}  // namespace Zantrix::Audio
