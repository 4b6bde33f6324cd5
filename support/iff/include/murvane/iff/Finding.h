#pragma once

#include <cstdint>
#include <string>

namespace Zantrix::IFF {

/// Something in a file that was read although it is not as it should be.
struct Finding {
    std::uint64_t uiOffset;  ///< where in the file, in bytes
    std::string strText;     ///< what is wrong there, one sentence without a full stop
};

}  // namespace Zantrix::IFF
