#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Manager/Files/NewFolders.h"

#include <vector>

namespace korvane {

/// Whether the instance's home may be furnished: an absolute path that neither is the user's own
/// home nor contains it.
bool isPrivateHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user);

/// Makes the instance's home, for this user alone, where it is missing. Throws FileError.
void makeHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user,
              NewFolders& folders);

/// Puts into the home what programs look for in it: the folders that arguments and environment
/// name, because Firefox starts nothing without its profile folder and others go elsewhere, and a
/// user-dirs.dirs (xdg-user-dirs) that names the shared folders. The home has to exist and to be
/// private, else nothing is done. Changes and replaces nothing that is there and passes no symbolic
/// link below the home; what cannot be made is left out. Returns a sentence for each such thing.
std::vector<std::string> furnishHome(const ambrel::InstanceConfig& config,
                                     const ambrel::UserPlaces& user);

/// For an instance that is about to start: a home that has gone is made and furnished again; in one
/// that is there only missing data folders are made, and nothing that the user has removed comes
/// back. Never fails: what is missing then, the launch reports.
void ensureHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user) noexcept;

/// The folders below the home that arguments and environment name, relative to it. An argument
/// names one by an option of a known engine, or by one whose name ends in "dir", "directory",
/// "folder" or "prefix"; a variable by a name that ends in DIR, HOME, TMP, TEMP, PREFIX, ROOT or
/// FOLDER; any of them by a value that ends in a slash.
std::vector<ambrel::Path> dataFolders(const ambrel::InstanceConfig& config,
                                      const ambrel::UserPlaces& user);

/// A sentence on what speaks against the home as a place for data: programs keep sockets in it,
/// whose paths have to stay short. Absent when nothing does.
std::optional<std::string> homeObstacle(const ambrel::Path& home);

} // namespace korvane
