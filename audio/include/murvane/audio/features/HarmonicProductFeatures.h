#pragma once

#include <murvane/audio/features/AudioFeatureImpl.h>

/// How well each candidate fundamental explains a spectrum: products of the bins related to it.
///
///     AudioFeature
///     ├── HarmonicProductFeature
///     ├── RobustHarmonicProductFeature
///     ├── OldHarmonicProductFeature
///     └── AntiHarmonicProductFeature
///
/// Input: the L values of a `SpectrumFeature`, bin k at k * 4000 / L Hz. Value i of the output belongs to the candidate
/// in bin i. K = (L - 1) / 5, truncated, is the largest candidate whose fifth harmonic is still a bin. Each object
/// keeps a working vector and so belongs to one thread; its storage is reused, so that only growing `out` allocates.
namespace Zantrix::Audio {

/// "HARMONICPRODUCT": (K+1)^5 * S[i] * S[2i] * S[3i] * S[4i] * S[5i], K+1 values; 0.0 for candidates below 100 Hz.
class MURVANE_API HarmonicProductFeature : public AudioFeature {
public:
    static const char* getName();
    static const char* sGetXprName();

    /// Appends K+1 values, none for an empty spectrum; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    Math::DoubleVector m_vScratch;
};

/// "ROBUSTHARMONICPRODUCT": the harmonic product with S[(i+1)h] in the place of S[ih] for each h of 2 to 5 for which
/// that is a bin.
class MURVANE_API RobustHarmonicProductFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends K+1 values, none for an empty spectrum; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    Math::DoubleVector m_vScratch;
};

/// "OLDHARMONICPRODUCT": L^4 * S[i] * S[2i+1] * S[3i+2] * S[4i+3] for i < L / 4, and 0.0 from there on; L values.
class MURVANE_API OldHarmonicProductFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends L values; always true.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    Math::DoubleVector m_vScratch;
};

/// "ANTIHARMONICPRODUCT": (K+1)^10 times the product of S[hi - i/2] for h = 1 to 5, large where the spectrum is not
/// harmonic; K-1 values, for the candidates 2 to K. 1.0 each for a silent spectrum.
class MURVANE_API AntiHarmonicProductFeature : public AudioFeature {
public:
    static const char* getName();

    /// Appends K-1 values. False, after an assertion record and with nothing appended, for fewer than 11 bins.
    bool compute(const Math::DoubleVector& in, Math::DoubleVector& out) override;

    Cloneable* clone() const override;

private:
    Math::DoubleVector m_vScratch;
};

}  // namespace Zantrix::Audio
