#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <chrono>
#include <string>
#include <vector>

namespace korvane {

/// The program that runs the instance when it is started, with the instance's home made ready for
/// it. Throws Refusal damagedInstance where the bundle has no such program.
ambrel::Path prepareRun(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// Throws Refusal for an instance whose start would fail at once, unseen by whoever opens it:
/// damagedInstance, unreadableApplication, and notLaunchable for what it opens.
void requireOpenable(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// How long a start is looked at: what cannot start mostly ends at once, and whoever starts
/// something should not have to wait for it.
inline constexpr std::chrono::milliseconds lookingTime{1500};

struct OpenRequest {
    std::vector<std::string> words{}; ///< files and addresses for an application to open
    std::chrono::milliseconds looking = lookingTime;
};

enum class Opened {
    runs,
    ranAlready, ///< and the start ended, as one does that hands over to what runs
    ended,      ///< a command, or the window of a web instance, with status 0
    handedOn,   ///< a document, to what opens it
};

/// Starts the instance, looks at it for a moment and leaves it running. What its start writes goes
/// to the instance's log; for a document, which has neither home nor log, and for a web site, whose
/// log is its page's, it is only kept for the moment. Throws as requireOpenable() does,
/// ChildProcessError, Refusal hasNoEffect for words that nobody would take and badPath for an empty
/// one, and endedAtOnce, with the last lines that were written since the start, for a start that
/// ended with another status than 0, and for an application of which nothing runs after it: it had
/// nothing to show, or has handed over to a copy of its program outside the instance. What only
/// serves it on the session bus does not count, and is waited for to tell.
Opened open(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
            const OpenRequest& request = {});

} // namespace korvane
