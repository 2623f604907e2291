#pragma once

#include <cerrno>

namespace ambrel {

/// Repeats a system call for as long as a signal interrupts it.
template <class Call> auto retryInterrupted(const Call& call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

} // namespace ambrel
