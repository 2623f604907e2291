#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Base/Remedy.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// The instance that `name` means: an exact display name among those in the default folder, or
/// the path of a bundle anywhere. Throws Refusal unknownInstance, severalInstances, with their
/// bundles as alternatives, and damagedInstance.
ambrel::InstanceRecord requireInstance(const std::string& name, const ambrel::UserPlaces& user);

/// The instances in the default folder and in `folder`, each once.
std::vector<ambrel::InstanceRecord> instancesWith(const ambrel::Path& folder,
                                                  const ambrel::UserPlaces& user);

/// How `record` is named: by its display name where that finds it, and else
/// by its path.
std::string nameFor(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// The same for one that was just made or replaced, by what instancesWith() found before.
std::string nameAmong(const std::vector<ambrel::InstanceRecord>& instances,
                      const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// The folder of an instance's data for use now, absent when the configuration gives no absolute
/// one.
std::optional<ambrel::Path> usableHome(const ambrel::InstanceConfig& config,
                                       const ambrel::UserPlaces& user);

/// Throws Refusal homeTaken, with this remedy, when another of `instances` than the bundle at
/// `self` has the home of `config`.
void requireOwnHome(const ambrel::InstanceConfig& config, const ambrel::Path& self,
                    const std::vector<ambrel::InstanceRecord>& instances,
                    const ambrel::UserPlaces& user, Remedy remedy);

/// The same for the bundle identifier, compared without regard to case: identifierTaken.
void requireOwnBundleId(const ambrel::InstanceConfig& config, const ambrel::Path& self,
                        const std::vector<ambrel::InstanceRecord>& instances);

} // namespace korvane
