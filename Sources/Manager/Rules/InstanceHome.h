#pragma once

#include "Ambrel/Home/NewFolders.h"
#include "Ambrel/Instance/InstanceConfig.h"

#include <vector>

namespace korvane {

// The operations of HomePreparation, for an instance as it is stored.
bool isPrivateHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user);
void makeHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user,
              ambrel::NewFolders& folders);
std::vector<std::string> furnishHome(const ambrel::InstanceConfig& config,
                                     const ambrel::UserPlaces& user);
void ensureHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user) noexcept;
std::vector<ambrel::Path> dataFolders(const ambrel::InstanceConfig& config,
                                      const ambrel::UserPlaces& user);

/// A sentence on what speaks against the home as a place for data: programs keep sockets in it,
/// whose paths have to stay short. Absent when nothing does.
std::optional<std::string> homeObstacle(const ambrel::Path& home);

} // namespace korvane
