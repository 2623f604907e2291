#include "Ambrel/Platform/UserPlaces.h"

#include "Ambrel/Platform/UserPaths.h"

namespace ambrel {

Path UserPlaces::expandingTilde(const Path& path) const { return ambrel::expandingTilde(path); }

UserPlaces UserPlaces::ofThisProcess() {
    return {.home = Path(paths::withoutTrailingSlashes(userHome())),
            .config = userConfigFolder(),
            .data = userDataFolder()};
}

} // namespace ambrel
