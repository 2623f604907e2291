#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <string>
#include <vector>

namespace korvane {

/// The program that runs the instance when it is started, with the instance's home made ready for
/// it. Throws Refusal damagedInstance where the bundle has no such program.
ambrel::Path prepareRun(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// Throws Refusal for an instance whose start would fail at once, unseen by whoever opens it:
/// damagedInstance, notHosted, unreadableApplication, and notLaunchable for what it opens.
void requireOpenable(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// Starts the instance and leaves it running. What its start writes goes to the instance's log. An
/// application is given `words`, files and addresses, to open. Throws as requireOpenable() does,
/// and Refusal hasNoEffect for words that nobody would take, badPath for an empty one, and
/// ChildProcessError.
void open(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
          const std::vector<std::string>& words = {});

} // namespace korvane
