#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Platform/Processes.h"

#include <optional>
#include <set>

namespace ambrel {

/// Whether the process is the runner of some instance, wherever that lies.
bool isRunner(const ProcessSeen& process);

/// The processes whose windows are those of `program`, which was started for `instance`: the
/// program itself, what descends from it, and what it left behind: processes of this user, no
/// longer its descendants, that write into the instance's log or whose HOME is the instance's home.
/// A home that is not private tells nothing. What descends from another start of the instance, a
/// process that runs the same `runner`, is looked at in the same way, but what descends from the
/// runner of another instance is that one's. One look at all processes.
std::set<int> processesOf(int program, const ResolvedInstance& instance, const UserPlaces& user,
                          const std::optional<FileIdentity>& runner = {});

} // namespace ambrel
