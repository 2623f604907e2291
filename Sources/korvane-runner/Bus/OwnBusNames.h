#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Platform/HostedProgram.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvane::runner {

/// Names of an application's own on the session's bus. Where programs of a system do not meet by
/// name there are none: neither function does anything then.
struct OwnBusNames {
    OwnBusNames() = delete;

    /// Where this process was started by a program of some instance, it has that one's bus; from
    /// now on it has the user's, in its environment, and is nobody's service. For main, before any
    /// thread starts and before the environment is read.
    static void returnToUsersBus() noexcept;

    /// Starts the instance so that its programs have names of their own, if its configuration has
    /// nothing against it. Null where there is no bus, or where that cannot be done, which `tell`
    /// is then told in a sentence: nothing was started, and the instance starts as it would without
    /// a bus. Throws what InstanceLauncher::launch() throws, as a std::exception of the same text,
    /// and where what the bus starts would open with the user's home, for want of such names.
    ///
    /// For main, before any thread starts: what looks after the names is a process of its own,
    /// which is forked here. It lives on after the program where something else of the instance
    /// still needs it.
    static std::unique_ptr<ambrel::HostedProgram>
    tryLaunch(const ambrel::ResolvedInstance& instance, const ambrel::UserPlaces& user,
              const ambrel::Environment& inherited, const std::vector<std::string>& opened,
              const std::function<void(const std::string&)>& tell);
};

} // namespace korvane::runner
