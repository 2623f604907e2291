#include "Ambrel/Platform/Posix/ItemTimes.h"

namespace ambrel {

ItemTimes ItemTimes::of(const struct stat& status) noexcept {
    return {status.st_atim, status.st_mtim, status.st_ctim};
}

} // namespace ambrel
