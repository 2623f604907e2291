#pragma once

#include "Ambrel/Path.h"
#include "korvane/Surroundings.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// Where programs put their entries and icons by the XDG Base Directory Specification, the user's
/// own folder, userDataFolder(), first.
std::vector<ambrel::Path> programDataFolders(const ambrel::Environment& environment);

/// The desktop entries with the id `id` ("chromium" or "chromium.desktop"), in the order of the
/// folders: the first one hides the others.
std::vector<ambrel::Path> findDesktopEntries(const std::string& id,
                                             const ambrel::Environment& environment);

/// The one that counts; absent when there is none.
std::optional<ambrel::Path> findDesktopEntry(const std::string& id,
                                             const ambrel::Environment& environment);

/// The PNG file for the value of an entry's Icon: the file itself, or the one with the most pixels
/// among the hicolor theme and the pixmaps. Absent when there is none.
std::optional<ambrel::Path> findIcon(const std::string& icon,
                                     const ambrel::Environment& environment);

/// The width of the PNG picture in `file` in pixels; absent for anything else.
std::optional<std::uint32_t> pngWidth(const ambrel::Path& file);

/// The identifier by which the engine of a well-known browser is told, for a desktop id or the
/// name of a program; absent for others.
std::optional<std::string> wellKnownIdentifier(const std::string& name);

} // namespace korvane
