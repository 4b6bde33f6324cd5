#include <murvane/math/MathFourierTransform.h>
namespace Zantrix::Math {
void realFourierTransform(std::span<double>) {}
}  // namespace Zantrix::Math
