#include "Manager/Programs/Linux/EntryCall.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Programs/PathSearch.h"

#include <algorithm>

namespace korvane {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// Options of env whose value is the word that follows.
bool wantsValue(const std::string& option) {
    constexpr std::string_view options[] = {"-u", "--unset", "-C", "--chdir"};
    return std::ranges::find(options, option) != std::end(options);
}

bool runsSandboxLauncher(const ProgramCall& call) {
    constexpr std::string_view signs[] = {"flatpak run", "snap run", "/snap/bin/"};
    return isShell(call.program) && std::ranges::any_of(call.before, [&](const auto& word) {
               return std::ranges::any_of(signs, [&](std::string_view sign) {
                   return word.find(sign) != std::string::npos;
               });
           });
}

bool isSandboxed(const DesktopEntry& entry, const ProgramCall& call) {
    if (runsSandboxLauncher(call)) return true;
    return entry.has("X-Flatpak") || entry.has("X-SnapInstanceName") ||
           isSandboxLauncher(call.program) || isSandboxLauncher(startedBy(call).program);
}

} // namespace

StartedProgram startedBy(const ProgramCall& call) {
    if (paths::lastComponent(call.program) != "env") return {call.program, call.before, {}};
    StartedProgram started;
    auto word = call.before.begin();
    for (; word != call.before.end(); ++word) {
        const bool isOption = word->starts_with('-');
        if (!isOption && word->find('=') == std::string::npos) break;
        started.isPlain = started.isPlain && !isOption;
        if (!isOption) started.settings.push_back(*word);
        if (wantsValue(*word) && word + 1 != call.before.end()) ++word;
    }
    if (word == call.before.end()) return {call.program, call.before, {}};
    started.program = *word;
    started.arguments.assign(word + 1, call.before.end());
    return started;
}

bool isShell(const std::string& program) {
    constexpr std::string_view shells[] = {"sh", "bash", "dash", "zsh", "ksh", "fish"};
    return std::ranges::find(shells, paths::lastComponent(program)) != std::end(shells);
}

bool isSandboxLauncher(const Path& program) {
    const auto leads = [](const Path& path) {
        const auto name = paths::lastComponent(path);
        return name == "flatpak" || name == "snap" || path.starts_with("/snap/") ||
               path.find("/flatpak/exports/bin/") != Path::npos;
    };
    const auto resolved = fileSystem::resolved(program);
    return leads(program) || (resolved && leads(*resolved));
}

bool isInstalled(const DesktopEntry& entry, const ambrel::Environment& environment) {
    const auto program = entry.string("TryExec").value_or("");
    if (program.empty()) return true;
    return program.starts_with('/') ? fileSystem::isExecutableFile(program)
                                    : findProgram(program, environment).has_value();
}

bool isOfInstance(const DesktopEntry& entry) { return entry.has("X-Korvane-Bundle"); }

ProgramCall requireCall(const DesktopEntry& entry, const Path& file,
                        const ambrel::Environment& environment) {
    if (entry.string("Type").value_or("Application") != "Application") {
        throw DesktopEntryError("it is no application");
    }
    if (entry.isTrue("Hidden")) throw DesktopEntryError("it says that it is deleted");
    if (isOfInstance(entry)) throw DesktopEntryError("it is that of an instance");
    if (!isInstalled(entry, environment)) {
        throw DesktopEntryError("its program is not installed: there is no " +
                                inQuotes(entry.string("TryExec").value_or("")));
    }
    // The name on the bus is that of the entry's file, by the rules for such entries.
    const bool isForBus = !entry.has("Exec") && entry.isTrue("DBusActivatable");
    if (isForBus) return {busStarter, {"launch", std::string(paths::stem(file))}, {}};
    auto call = entry.program(file);
    if (isSandboxed(entry, call)) throw DesktopEntryError(sandboxReason);
    return call;
}

} // namespace korvane
