#pragma once

#include <spawn.h>

namespace ambrel {

/// Makes the child start without any descriptor but its standard streams. 0, or the error number.
int keepOnlyStandardStreams(posix_spawn_file_actions_t& actions, posix_spawnattr_t& attributes);

} // namespace ambrel
