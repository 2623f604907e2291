#pragma once

#include "Ambrel/Application/AppEngine.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <string>
#include <vector>

/// What the system tells of an installed program, without running it.
namespace korvane::installedProgram {

/// The environment that a profile of `program` (absolute) is compared with; empty when the system
/// does not tell. On Linux os-release's ID-VERSION_ID, a blank and the upstream version, to its
/// second number, of the package that the file belongs to: "debian-12 0.5". `environment` says
/// where the system's tools are looked for.
std::string signatureOf(const ambrel::Path& program, const ambrel::Environment& environment);

/// What gives the windows of a program their name.
struct WindowNaming {
    bool byProcessName = false;         ///< the name that the program is started by (argv[0])
    std::vector<std::string> variables; ///< variables of the environment that hold it
};

/// Told by the libraries that `program` links, directly or not. `started` is the file that an
/// instance starts, the program itself or a launcher of it. A script's own name reaches no window,
/// unless it is a launcher of ours that passes on the one it is told by a variable, and a program
/// that is reached by a link of another name may act by that: neither is given another name. On
/// macOS nothing is.
WindowNaming windowNamingOf(const ambrel::Path& started, const ambrel::Path& program);

/// The variables by which `started` is told the name to start its program by, where it is a
/// launcher of ours that passes one on; empty for anything else.
std::vector<std::string> launcherVariables(const ambrel::Path& started);

/// Whether programs of this system meet by name on a bus of the user's session; not on macOS.
bool meetOnBus() noexcept;

/// Whether `program` has the session bus start another one, as gapplication does.
bool isStarterByBus(const ambrel::Path& program);

/// Whether `program` is of the kind that takes a name on the session bus when it starts, as those
/// do that leave their work to a copy which has the name already. On Linux by what it calls.
bool registersOnBus(const ambrel::Path& program);

/// Whether the session bus knows a service of the name `name`, which it starts for whoever asks.
bool isServiceOnBus(const std::string& name, const ambrel::UserPlaces& user,
                    const ambrel::Environment& environment);

/// Whether `program` has a socket by which its copies may find each other wherever their homes are,
/// and does not leave that to the session bus. On Linux by what it calls (QLocalServer,
/// KDBusService).
bool mayMeetBySocket(const ambrel::Path& program);

/// The arguments that give the windows of programs with this engine the name `name`; none where the
/// engine has no such arguments, and on macOS, where windows go by their bundle.
std::vector<std::string> windowNameArguments(ambrel::AppEngine engine, const std::string& name);

/// The variables that keep an application of this system apart beside its home folder. On Linux
/// GSETTINGS_BACKEND: settings are otherwise written by a service that has the user's own home.
ambrel::StringMap separatingVariables();

/// The variables that tell `program` (absolute) its home where it asks the account for that instead
/// of HOME, with the placeholder for an instance's; empty for others. On Linux for Java programs.
ambrel::StringMap homeVariables(const ambrel::Path& program);

} // namespace korvane::installedProgram
