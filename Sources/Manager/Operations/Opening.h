#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"

namespace korvane {

/// The program that runs the instance when it is started, with the instance's home made ready for
/// it. Throws Refusal damagedInstance where the bundle has no such program.
ambrel::Path prepareRun(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// Throws Refusal for an instance whose start would fail at once, unseen by whoever opens it:
/// damagedInstance, notHosted, unreadableApplication, and notLaunchable for what it opens.
void requireOpenable(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// Starts the instance and leaves it running. What its start writes goes to the instance's log.
/// Throws as requireOpenable() does, and ChildProcessError.
void open(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

} // namespace korvane
