#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <functional>
#include <map>
#include <optional>
#include <string>

namespace ambrel {

/// Places of the user's own folders by the names "Downloads", "Documents" and "Desktop".
using UserFolderSettings = std::map<std::string, Path, std::less<>>;

/// Where the user has set the own folders "Downloads", "Documents" and "Desktop" to lie, an
/// absolute path, or the empty one where the setting names no place that could be used. A folder
/// without a setting is absent; it lies in user.home under its name. On Linux from
/// user.config/user-dirs.dirs, in the form that xdg-user-dirs writes; on macOS always empty.
/// Reads the file at each call; one that is there but cannot be read names no usable place for any.
UserFolderSettings userFolderSettings(const UserPlaces& user);

/// A file below a home folder that tells programs where in it the own folders lie.
struct UserFolderFile {
    Path folder; ///< relative to the home
    std::string name;
    std::string text;
};

/// The file for a home in which each folder lies under its name, or is switched off (false). Absent
/// where the system has no such file, as on macOS.
std::optional<UserFolderFile> userFolderFile(const std::map<std::string, bool>& folders);

} // namespace ambrel
