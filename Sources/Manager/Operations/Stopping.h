#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <chrono>

namespace korvane {

/// How long what was asked to end is waited for: a program may have much to write down, and may
/// ask a person who is looking elsewhere.
inline constexpr std::chrono::seconds stoppingTime{10};

enum class Stopped {
    wasNotRunning,
    ended, ///< nothing of it runs any more
};

/// Asks what runs of the instance to end, its runner first, which hands that on to its program, and
/// then what nothing else of the instance would end. Asks each process once, and does nothing
/// harder. Waits until nothing of it runs. Throws Refusal notStopped when something still does
/// after `limit`.
Stopped stop(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
             std::chrono::milliseconds limit = stoppingTime);

} // namespace korvane
