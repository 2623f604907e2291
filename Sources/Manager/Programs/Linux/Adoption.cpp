#include "Manager/Programs/Linux/Adoption.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Programs/Linux/BrowserIdentifiers.h"
#include "Manager/Programs/Linux/DesktopEntry.h"
#include "Manager/Programs/Linux/EngineMarks.h"
#include "Manager/Programs/Linux/EntrySearch.h"
#include "Manager/Programs/Linux/IconSearch.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Programs/ProgramProfile.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>
#include <array>

namespace korvane {

using ambrel::BundleLayout;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

constexpr std::string_view entryExtension = "desktop";

/// What an instance's home is made of (XDG Base Directory Specification).
constexpr std::array homeVariables{"HOME",          "CFFIXED_USER_HOME", "XDG_CONFIG_HOME",
                                   "XDG_DATA_HOME", "XDG_STATE_HOME",    "XDG_CACHE_HOME"};

/// `name` as the name of a bundle, with what a file name cannot hold replaced.
std::string bundleName(std::string name) {
    std::replace(name.begin(), name.end(), '/', '-');
    return checkedName(name);
}

bool isShell(const std::string& program) {
    constexpr std::string_view shells[] = {"sh", "bash", "dash", "zsh", "ksh", "fish"};
    return std::find(std::begin(shells), std::end(shells), paths::lastComponent(program)) !=
           std::end(shells);
}

/// What "env NAME=VALUE PROGRAM" starts; the call's own program for others.
std::string programBehind(const ProgramCall& call) {
    if (paths::lastComponent(call.program) != "env") return call.program;
    const auto isSetting = [](const std::string& word) {
        return word.starts_with('-') || word.find('=') != std::string::npos;
    };
    const auto found = std::find_if_not(call.before.begin(), call.before.end(), isSetting);
    return found == call.before.end() ? call.program : *found;
}

/// Whether `program` leads to the launcher of a Flatpak or snap.
bool isSandboxLauncher(const Path& program) {
    const auto leads = [](const Path& path) {
        const auto name = paths::lastComponent(path);
        return name == "flatpak" || name == "snap" || path.starts_with("/snap/") ||
               path.find("/flatpak/exports/bin/") != Path::npos;
    };
    const auto resolved = fileSystem::resolved(program);
    return leads(program) || (resolved && leads(*resolved));
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
           isSandboxLauncher(call.program) || isSandboxLauncher(programBehind(call));
}

constexpr const char* sandboxReason =
    "its program comes as Flatpak or snap, which keep its data in a place of their own";

/// Throws where a copy would start, but not as the user expects it to.
void requireAdoptable(const DesktopEntry& entry, const ProgramCall& call) {
    if (entry.string("Type").value_or("Application") != "Application") {
        throw DesktopEntryError("it is no application");
    }
    if (entry.isTrue("Hidden")) throw DesktopEntryError("it says that it is deleted");
    if (isSandboxed(entry, call)) throw DesktopEntryError(sandboxReason);
}

/// The file that a desktop's "open a terminal" would start, and how it is given a program.
std::optional<ProgramCall> findTerminal(const ambrel::Environment& environment) {
    constexpr std::pair<const char*, const char*> terminals[] = {
        {"xdg-terminal-exec", nullptr}, // takes the command as it stands
        {"x-terminal-emulator", "-e"},  // Debian's choice of the user's
        {"xterm", "-e"},
        {"konsole", "-e"},
        {"xfce4-terminal", "-x"},
        {"gnome-terminal", "--"},
    };
    for (const auto& [name, option] : terminals) {
        const auto found = findProgram(name, environment);
        if (!found) continue;
        ProgramCall call{.program = *found, .before = {}, .behind = {}};
        if (option != nullptr) call.before.emplace_back(option);
        return call;
    }
    return std::nullopt;
}

ProgramCall requireTerminal(const ambrel::Environment& environment) {
    if (auto found = findTerminal(environment)) return *found;
    throw DesktopEntryError("its program wants a terminal, and none is in the folders of PATH");
}

/// "sh -c SCRIPT": what is added behind it are the script's arguments, the first of which counts
/// as its name. Options may stand together, as in "bash -lc".
void completeShellCall(ProgramCall& call) {
    if (!isShell(call.program)) return;
    const auto isLast = [](const std::string& word) {
        return !word.starts_with('-') || (!word.starts_with("--") && word.ends_with('c'));
    };
    const auto option = std::find_if(call.before.begin(), call.before.end(), isLast);
    if (option == call.before.end() || !option->starts_with('-')) return;
    const bool isNamed = std::distance(option, call.before.end()) > 2;
    if (!isNamed) call.before.emplace_back("sh");
}

Path requireProgram(const std::string& program, const ambrel::UserPlaces& user,
                    const ambrel::Environment& environment) {
    if (program.find('/') == std::string::npos) {
        return korvane::requireProgram(program, environment);
    }
    const auto path = usablePath(program, user);
    if (fileSystem::isExecutableFile(path)) return path;
    throw Refusal(Refusal::Kind::unknownProgram, path,
                  ambrel::utf8::oneLine(path) + " is no program that can be run.");
}

/// Whether a profile says by which argument the program does without the bus.
bool isKeptApart(const std::string& identifier, const ambrel::UserPlaces& user) {
    try {
        const auto found = findProfile(identifier, user);
        return found && !found->profile.extraArgs.empty() &&
               found->profile.confidence != ambrel::Confidence::broken;
    } catch (const Refusal&) {
        return false; // "create" will say what is wrong with it
    }
}

Adoption fromEntry(const Path& file, const ambrel::UserPlaces& user,
                   const ambrel::Environment& environment) {
    const auto entry = DesktopEntry::parse(fileSystem::read(file));
    auto call = entry.program(file);
    requireAdoptable(entry, call);
    const std::string id{paths::stem(file)};
    requireUtf8(id, "the desktop entry's name");
    Adoption adoption;
    const auto name = entry.string("Name").value_or("");
    adoption.name = bundleName(name.empty() ? id : name);
    adoption.identifier = wellKnownIdentifier(id).value_or(id);
    call.program = requireProgram(call.program, user, environment);
    completeShellCall(call);
    // With nothing behind it, it keeps no file from being taken for an option.
    if (call.behind == std::vector<std::string>{"--"}) call.behind.clear();
    adoption.program = requireProgram(programBehind(call), user, environment);
    adoption.call = std::move(call);
    if (entry.isTrue("Terminal")) adoption.terminal = requireTerminal(environment);
    adoption.categories = entry.string("Categories").value_or("");
    adoption.mimeTypes = entry.string("MimeType").value_or("");
    adoption.icon = findIcon(entry.string("Icon").value_or(""), user, environment);
    if (entry.isTrue("DBusActivatable") && !isKeptApart(adoption.identifier, user)) {
        adoption.notices.push_back(
            {.kind = Notice::Kind::handsOverToRunningCopy,
             .subject = adoption.name,
             .sentence = inQuotes(adoption.name) +
                         " can be activated over the session bus: a second copy may hand "
                         "over to a running one, and will not be kept apart then."});
    }
    return adoption;
}

Adoption fromEntryFile(const Path& file, const ambrel::UserPlaces& user,
                       const ambrel::Environment& environment) {
    try {
        return fromEntry(file, user, environment);
    } catch (const DesktopEntryError& error) {
        throw Refusal(Refusal::Kind::notAdoptable, file,
                      "The desktop entry " + ambrel::utf8::oneLine(file) +
                          " cannot be adopted: " + error.what() + ".");
    }
}

Adoption fromProgram(const Path& program) {
    if (isSandboxLauncher(program)) {
        throw Refusal(Refusal::Kind::notAdoptable, program,
                      ambrel::utf8::oneLine(program) + " cannot be adopted: " + sandboxReason +
                          ".");
    }
    const std::string name{paths::lastComponent(program)};
    Adoption adoption;
    adoption.name = bundleName(name);
    adoption.identifier = wellKnownIdentifier(name).value_or(name);
    adoption.call.program = program;
    adoption.program = program;
    return adoption;
}

/// Whether `file` is the entry of the program alone, as a menu shows it.
bool startsPlainly(const Path& file, const Path& program, const ambrel::Environment& environment) {
    try {
        const auto entry = DesktopEntry::parse(fileSystem::read(file));
        if (entry.isTrue("NoDisplay") || entry.isTrue("Hidden") || entry.isTrue("Terminal")) {
            return false;
        }
        const auto call = entry.program(file);
        const bool hasArguments = !call.before.empty() || call.behind.size() > 1;
        const auto found = call.program.starts_with('/') ? std::optional(call.program)
                                                         : findProgram(call.program, environment);
        return !hasArguments && found && fileSystem::isSameItem(*found, program);
    } catch (const std::exception&) {
        return false; // an entry that cannot be read is not what was meant
    }
}

/// The only entry for a program: it knows more of it than the file.
std::optional<Path> entryOf(const Path& program, const ambrel::UserPlaces& user,
                            const ambrel::Environment& environment) {
    std::optional<Path> found;
    for (const auto& file : listDesktopEntries(user, environment)) {
        if (!startsPlainly(file, program, environment)) continue;
        if (found) return std::nullopt;
        found = file;
    }
    return found;
}

Adoption fromProgramOrEntry(const Path& program, const ambrel::UserPlaces& user,
                            const ambrel::Environment& environment) {
    const auto entry = entryOf(program, user, environment);
    return entry ? fromEntryFile(*entry, user, environment) : fromProgram(program);
}

bool isEntry(const std::string& text) { return paths::extension(text) == entryExtension; }

} // namespace

bool adoptionIsOffered() noexcept { return true; }

Adoption planAdoption(const std::string& text, const ambrel::UserPlaces& user,
                      const ambrel::Environment& environment) {
    if (text.empty())
        throw Refusal(Refusal::Kind::unknownProgram, text, "The program's name is empty.");
    requireUtf8(text, "the program");
    if (text.find('/') != std::string::npos || text.starts_with('~')) {
        const auto path = usablePath(text, user);
        return isEntry(path)
                   ? fromEntryFile(path, user, environment)
                   : fromProgramOrEntry(requireProgram(path, user, environment), user, environment);
    }
    if (isEntry(text) && fileSystem::exists(text)) {
        return fromEntryFile(usablePath(text, user), user, environment);
    }
    if (const auto entry = findDesktopEntry(text, user, environment)) {
        return fromEntryFile(*entry, user, environment);
    }
    if (const auto program = findProgram(text, environment)) {
        return fromProgramOrEntry(*program, user, environment);
    }
    throw Refusal(Refusal::Kind::unknownProgram, text,
                  "Neither a desktop entry nor a program is called " + inQuotes(text) + ".");
}

std::string launcherScript(const Adoption& adoption) {
    std::string line = "exec";
    const auto add = [&](const std::string& word) { line += " " + shellQuoted(word); };
    const auto addCall = [&](const ProgramCall& call) {
        add(call.program);
        for (const auto& argument : call.before) add(argument);
    };
    if (adoption.terminal) {
        addCall(*adoption.terminal);
        // A terminal may hand over to a server, which has the user's home.
        line += " env";
        for (const auto* name : homeVariables) {
            line.append(" \"").append(name).append("=$").append(name).append("\"");
        }
    }
    addCall(adoption.call);
    line += " \"$@\"";
    for (const auto& argument : adoption.call.behind) add(argument);
    return "#!/bin/sh\n" + line + "\n";
}

void writeAdoptedBundle(const Adoption& adoption, const Path& bundle) {
    const BundleLayout layout{bundle};
    const std::string executable{paths::lastComponent(adoption.call.program)};
    ambrel::PropertyListDictionary info{
        {"CFBundleIdentifier", {adoption.identifier}},
        {"CFBundleExecutable", {executable}},
        {"CFBundleName", {adoption.name}},
        {adoptedProgramKey, {adoption.program}},
    };
    if (adoption.terminal) {
        info.insert({adoptedTerminalKey, {adoption.terminal->program}});
    }
    if (!adoption.categories.empty()) {
        info.insert({adoptedCategoriesKey, {adoption.categories}});
    }
    if (!adoption.mimeTypes.empty()) info.insert({adoptedMimeTypesKey, {adoption.mimeTypes}});
    fileSystem::createFolders(layout.executables());
    fileSystem::createFolders(layout.resources());
    if (adoption.icon && tryConvertToIconFile(*adoption.icon, layout.icon())) {
        info.insert({"CFBundleIconFile", {std::string(BundleLayout::iconName)}});
    }
    const auto place = paths::join(layout.executables(), executable);
    if (adoption.call.hasArguments() || adoption.terminal) {
        fileSystem::write(place, launcherScript(adoption));
        fileSystem::setPermissions(place, 0755);
    } else {
        fileSystem::createSymbolicLink(adoption.call.program, place);
    }
    for (const auto& mark : engineMarksOf(adoption.program, adoption.identifier)) {
        const auto link = paths::join(bundle, mark.place);
        fileSystem::createFolders(Path(paths::deletingLastComponent(link)));
        fileSystem::createSymbolicLink(mark.proof, link);
    }
    fileSystem::write(layout.infoPlist(), ambrel::xmlPropertyList(info));
}

} // namespace korvane
