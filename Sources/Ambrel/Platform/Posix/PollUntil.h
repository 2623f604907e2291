#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>
#include <poll.h>

namespace ambrel {

/// poll() until `deadline`, going on after a signal. Returns what poll() returns.
inline int pollUntil(pollfd* sources, nfds_t count,
                     std::chrono::steady_clock::time_point deadline) {
    using std::chrono::milliseconds;
    while (true) {
        // Rounded up: a wait that ends early would be begun again and again.
        const auto left = deadline - std::chrono::steady_clock::now();
        const auto rounded = std::chrono::ceil<milliseconds>(left).count();
        constexpr milliseconds::rep longest = std::numeric_limits<int>::max();
        const auto timeout = static_cast<int>(std::clamp<milliseconds::rep>(rounded, 0, longest));
        const int found = ::poll(sources, count, timeout);
        if (found >= 0 || errno != EINTR) return found;
    }
}

} // namespace ambrel
