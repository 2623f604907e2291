#pragma once

#include <sys/stat.h>

namespace ambrel {

/// The times of an item to the nanosecond; each system calls these fields of `struct stat` by names
/// of its own.
struct ItemTimes {
    struct timespec access;
    struct timespec modification; ///< of the contents
    struct timespec change;       ///< of anything, the mode and the owner too

    static ItemTimes of(const struct stat& status) noexcept;
};

} // namespace ambrel
