#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <sys/types.h>

namespace ambrel {

/// A descriptor that can be read once `child`, of this process and not reaped until this returns,
/// has ended. Invalid, with errno set, where the system has none left.
OwnedFd openProcessEnd(pid_t child);

/// One that can be read at once, for a process that cannot be asked for any more: it was reaped,
/// and its id may be another's.
OwnedFd openPastEnd();

} // namespace ambrel
