#include "Ambrel/Platform/Posix/Spawn.h"

namespace ambrel {

int keepOnlyStandardStreams(posix_spawn_file_actions_t& actions, posix_spawnattr_t&) {
    return posix_spawn_file_actions_addclosefrom_np(&actions, 3);
}

} // namespace ambrel
