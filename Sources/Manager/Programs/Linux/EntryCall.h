#pragma once

#include "Ambrel/Application/AdoptedProgram.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Manager/Programs/Linux/DesktopEntry.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What "env NAME=VALUE… PROGRAM ARGUMENT…" starts, taken apart. For a call of anything else
/// `program` and `arguments` are those of the call, and there are no settings.
struct StartedProgram {
    std::string program;
    std::vector<std::string> arguments; ///< those in front of files
    std::vector<std::string> settings;  ///< "NAME=VALUE"
    bool isPlain = true;                ///< env is given settings at the most, and no options
};
StartedProgram startedBy(const ProgramCall& call);

/// Whether `program` is called as a shell is.
bool isShell(const std::string& program);

/// Whether `program`, or what it leads to, is the launcher of a Flatpak or snap.
bool isSandboxLauncher(const ambrel::Path& program);

/// Why programs of Flatpak and snap are refused.
inline constexpr const char* sandboxReason =
    "its program comes as Flatpak or snap, which keep its data in a place of their own";

using ambrel::busStarter;

/// The command of the entry in `file`; for one that the session bus starts, the one that asks it.
/// Throws DesktopEntryError where nothing would start, or not
/// as the user expects: the entry is none of an application, says that it is deleted or that its
/// program is not installed, belongs to an instance, or is started by a sandbox.
ProgramCall requireCall(const DesktopEntry& entry, const ambrel::Path& file,
                        const ambrel::Environment& environment);

/// Whether the program that TryExec names is there; true without that key.
bool isInstalled(const DesktopEntry& entry, const ambrel::Environment& environment);

/// Whether the entry is that of an instance.
bool isOfInstance(const DesktopEntry& entry);

} // namespace korvane
