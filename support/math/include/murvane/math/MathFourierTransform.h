#pragma once

#include <murvane/core/Export.h>

#include <span>

namespace Zantrix::Math {

/// The forward discrete Fourier transform of n real values, in place and not normalised: term k is the sum of
/// x[i] exp(-2 pi sqrt(-1) i k / n).
///
/// The result is packed into the n places of the input: place 0 holds the term of frequency 0, place 1 that of
/// frequency n/2, both real, and places 2k and 2k+1 the real and imaginary parts of term k, for k = 1 .. n/2-1.
///
/// A length that is not a power of two is reported as the failed assertion "isPowerOfTwo(n)" and transformed all the
/// same, slowly. An odd length has no term n/2; its last term, (n-1)/2, has its real part in place n-1 and its
/// imaginary part in place 1. No values at all are reported and left at that.
///
/// Safe from several threads on different values. For powers of two, only the first transform of a size in the process
/// allocates; equal values give equal bits every time. Throws std::bad_alloc, the values unchanged, if that memory is
/// missing.
MURVANE_API void realFourierTransform(std::span<double> values);

}  // namespace Zantrix::Math
