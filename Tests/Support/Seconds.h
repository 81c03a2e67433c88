#pragma once

#include <chrono>

namespace velmora::test {

/// Seconds as receivers count them, for a `Clock`.
[[nodiscard]] inline std::chrono::nanoseconds seconds(double count) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(count));
}

}  // namespace velmora::test
