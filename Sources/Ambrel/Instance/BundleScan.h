#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <optional>
#include <vector>

namespace ambrel {

/// The entries lying directly in `folders` whose extension is exactly "app", in the order of the
/// folders and of their listings. Folders that cannot be listed are skipped.
std::vector<Path> bundlesIn(const std::vector<Path>& folders);

/// The folders in which instances are looked for unless others are given: ~/Applications.
std::vector<Path> defaultInstanceFolders(const UserPlaces& user);

/// What the instance.json of the bundle holds; absent when there is none that can be decoded.
std::optional<InstanceConfig> configIn(const Path& bundle);

} // namespace ambrel
