#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// Where programs put their entries and icons by the XDG Base Directory Specification, the user's
/// own folder, user.data, first.
std::vector<ambrel::Path> programDataFolders(const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// The desktop entries with the id `id` ("chromium" or "chromium.desktop"), in the order of the
/// folders: the first one hides the others.
std::vector<ambrel::Path> findDesktopEntries(const std::string& id, const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// The one that counts; absent when there is none.
std::optional<ambrel::Path> findDesktopEntry(const std::string& id, const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// All desktop entries in the folders for them, in their order; one that another of the same name
/// hides is left out. Entries in sub-folders are not listed.
std::vector<ambrel::Path> listDesktopEntries(const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// The picture for the value of an entry's Icon: the file itself, or what the hicolor theme and the
/// pixmaps have by that name (Icon Theme Specification): a large PNG, else an SVG, else the largest
/// PNG, else an XPM. Absent when there is none. Whether it can be read is not looked at.
std::optional<ambrel::Path> findIcon(const std::string& icon, const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment);

/// The width of the PNG picture in `file` in pixels; absent for anything else.
std::optional<std::uint32_t> pngWidth(const ambrel::Path& file);

/// The identifier by which the engine of a well-known browser is told, for a desktop id or the
/// name of a program; absent for others.
std::optional<std::string> wellKnownIdentifier(const std::string& name);

} // namespace korvane
