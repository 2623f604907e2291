#pragma once

#include "Ambrel/Launch/InstanceLauncher.h"
#include "Support/Environment.h"

namespace korvane::test {

/// Starts the instance as the runner does, for `user`.
inline ambrel::ChildProcess start(const ambrel::InstanceConfig& config,
                                  const ambrel::UserPlaces& user = nobody(),
                                  const ambrel::SystemTools& tools = {}) {
    return ambrel::InstanceLauncher::launch(ambrel::ResolvedInstance::of(config, user), user,
                                            ambrel::processEnvironment(), tools);
}

} // namespace korvane::test
