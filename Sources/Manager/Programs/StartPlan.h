#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Manager/Programs/ProgramProfile.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

enum class UseProfile { yes, no };

/// How an application is started so that its instance is apart and shows under its own name.
/// Without a profile (UseProfile::no) neither its part nor the windows' name is in it.
struct StartPlan {
    std::vector<std::string> arguments; ///< for the engine, of the profile, for the windows' name
    ambrel::StringMap environment;      ///< values with the placeholder for the instance home
    std::optional<std::string> processName; ///< absent: the program is started by its own name
    std::vector<std::string> nameVariables; ///< those in `environment` that name the windows
    std::optional<std::string> windowClass; ///< the windows' name where none of these decides it
    BusUse bus;                             ///< as the profile has it
    bool keepsWindowName = false;    ///< nothing is known that names the windows after the instance
    bool asksAccountForHome = false; ///< and is told of the instance's by a variable
    /// Whether a copy that runs may do what the instance was started for where they meet on the
    /// session bus: as the profile says, else by what its entry, the services of the bus and the
    /// program itself tell.
    bool mayHandOver = false;
    /// By what else than the session bus copies of a program may find each other, where no profile
    /// tells otherwise.
    struct Meeting {
        bool bySocket = false; ///< in the temporary folder
        bool byWindow = false; ///< on X11
        bool unseen = false;   ///< nothing can be told of programs of this kind
    };
    Meeting meeting;
    std::optional<ProgramProfile> profile; ///< reconciled with `signature`
    std::string signature;                 ///< the environment here; empty when not known
};

/// Looks the profile of `app` up and puts the plan together for an instance that the desktop knows
/// as `desktopId`. Throws Refusal unusableProfile.
StartPlan planStart(const ambrel::AppBundle& app, const std::string& desktopId, UseProfile use,
                    const ambrel::UserPlaces& user, const ambrel::Environment& environment);

/// Whether the bundle of `app` was made by adopting a program.
bool isAdopted(const ambrel::AppBundle& app);

/// The program behind `app`: what an adopted program's launcher starts, else its executable.
ambrel::Path programOf(const ambrel::AppBundle& app);

/// Throws Refusal startedByBus where the session bus starts the program of `app`, and an instance
/// that stands so has no names of its own: it would open with the user's own home.
void requireOwnNames(const ambrel::AppBundle& app, const BusStanding& standing);

/// How the instance `config` stands to the session's bus. The profile of its application is looked
/// up only to tell whose wish it is. Never fails.
BusStanding busStandingOf(const ambrel::InstanceConfig& config,
                          const ambrel::UserPlaces& user) noexcept;

/// One sentence on the plan's profile: whose it is and how far it can be trusted here.
std::string profileSentence(const StartPlan& plan);

/// Gives the instance's program another name to be started by, absent: its own. What else names its
/// windows by the old one follows; where that is an argument, the windows' name is kept instead.
void setProcessName(ambrel::InstanceConfig& config, const std::optional<std::string>& name);

/// Throws Refusal badProcessName for a text that a started program cannot be called. `what` is what
/// a person calls it ("the process name").
void requireProcessName(const std::string& name, const std::string& what);

} // namespace korvane
