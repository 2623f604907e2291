#pragma once

#include "Ambrel/Home/NewFolders.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Manager/Base/Notice.h"

#include <optional>
#include <vector>

namespace korvane {

/// Lets the home be the user's again as far as sharing goes: it is gone with its instance, or that
/// has another home now. Never fails.
void forgetHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user) noexcept;

/// Whether an instance of this kind has a use for its home: a document is opened by another
/// program, which has its own.
bool hasHome(const ambrel::InstanceConfig& config);

// The operations of HomePreparation, for an instance as it is stored. Where it has no use for a
// home none is made.
bool isPrivateHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user);
void makeHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user,
              ambrel::NewFolders& folders);
/// Tells what could not be made by a notice homeNotFurnished for each thing.
std::vector<Notice> furnishHome(const ambrel::InstanceConfig& config,
                                const ambrel::UserPlaces& user);
void ensureHome(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user) noexcept;

/// What speaks against the home as a place for data (homeIsLong): programs keep sockets in it,
/// whose paths have to stay short. Absent when nothing does.
std::optional<Notice> homeObstacle(const ambrel::Path& home);

/// The variables of the configuration that lead its program elsewhere than into its home; none
/// where no program is started with one.
std::vector<std::string> variablesOverridingHome(const ambrel::InstanceConfig& config,
                                                 const ambrel::UserPlaces& user);

/// A warning for each of those of `config` that `before` has not, or has with another value.
std::vector<Notice> noticesOnOverriding(const ambrel::InstanceConfig& config,
                                        const ambrel::InstanceConfig* before,
                                        const ambrel::UserPlaces& user);

/// That the home is or contains the user's own (homeIsNotPrivate). Absent where it is not, or is
/// of no use to the instance.
std::optional<Notice> privacyObstacle(const ambrel::InstanceConfig& config,
                                      const ambrel::UserPlaces& user);

} // namespace korvane
