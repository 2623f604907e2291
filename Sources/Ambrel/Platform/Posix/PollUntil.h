#pragma once

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
        const auto left =
            std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
        constexpr long long longest = std::numeric_limits<int>::max();
        const auto timeout = static_cast<int>(left < 0 ? 0 : left < longest ? left : longest);
        const int found = ::poll(sources, count, timeout);
        if (found >= 0 || errno != EINTR) return found;
    }
}

} // namespace ambrel
