#pragma once

#include "korvane-runner/Bus/Linux/OutputQueue.h"

#include <string>
#include <sys/types.h>

namespace korvane::test {

/// Reads once and without waiting, at most `most` bytes and all descriptors that come with them,
/// and appends them. Returns what recvmsg(2) returns, and leaves errno as that does.
ssize_t receiveOnce(const ambrel::OwnedFd& socket, std::size_t most, std::string& bytes,
                    runner::bus::Descriptors& descriptors);

} // namespace korvane::test
