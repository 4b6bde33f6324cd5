#include <murvane/core/Object.h>

#include <ostream>

namespace Zantrix {

std::ostream& operator<<(std::ostream& os, const OutputStreamable& object) {
    return object.write(os);
}

}  // namespace Zantrix
