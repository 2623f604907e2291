#pragma once

#include "Support/Expect.h"
#include "Support/Launch.h"

namespace korvane::test {

inline const Path probe = KORVANE_TEST_PROBE;

inline int statusOf(ambrel::ChildProcess child) {
    child.waitUntilExit();
    return child.terminationStatus();
}

/// The status with which the started instance ends.
inline int launch(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user = nobody(),
                  const ambrel::SystemTools& tools = {}) {
    return statusOf(start(config, user, tools));
}

inline ambrel::LaunchError launchErrorOf(const ambrel::InstanceConfig& config,
                                         const ambrel::UserPlaces& user = nobody()) {
    return expectThrow<ambrel::LaunchError>(
        [&] { start(config, user, {.codesign = "/nonexistent/codesign"}); });
}

inline Path logOf(const Path& home) { return home + "/korvane-instance.log"; }

} // namespace korvane::test
