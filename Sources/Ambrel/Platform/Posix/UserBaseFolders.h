#pragma once

#include "Ambrel/Platform/UserPlaces.h"

namespace ambrel {

/// `usual` with the folders for settings and data that this process's variables choose instead.
UserPlaces withChosenBaseFolders(UserPlaces usual);

} // namespace ambrel
