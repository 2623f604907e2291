#include "korvane/Adoption.h"

#include "Ambrel/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Platform/Text.h"
#include "Ambrel/Support/Utf8.h"
#include "korvane/Applications.h"
#include "korvane/IconFile.h"
#include "korvane/InstalledPrograms.h"
#include "korvane/ManagerError.h"
#include "korvane/Messages.h"
#include "korvane/UserText.h"

#include <algorithm>

namespace korvane {

using ambrel::BundleLayout;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

constexpr std::string_view entryExtension = "desktop";

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

bool isSandboxLauncher(const DesktopEntry& entry, const ProgramCall& call) {
    const auto program = paths::lastComponent(call.program);
    return entry.has("X-Flatpak") || entry.has("X-SnapInstanceName") || program == "flatpak" ||
           program == "snap" || call.program.starts_with("/snap/");
}

/// Throws where a copy would start, but not as the user expects it to.
void requireAdoptable(const DesktopEntry& entry, const ProgramCall& call) {
    if (entry.string("Type").value_or("Application") != "Application") {
        throw DesktopEntryError("it is no application");
    }
    if (entry.isTrue("Hidden")) throw DesktopEntryError("it says that it is deleted");
    if (entry.isTrue("Terminal")) {
        throw DesktopEntryError("its program wants a terminal, which a bundle does not give it");
    }
    if (isSandboxLauncher(entry, call)) {
        throw DesktopEntryError("its program comes as Flatpak or snap, which keep its data in a "
                                "place of their own");
    }
    if (isShell(call.program) && call.hasArguments() && call.before.front() == "-c") {
        throw DesktopEntryError("it starts its program by a shell command");
    }
}

Path requireProgram(const std::string& program, const Surroundings& surroundings) {
    if (program.find('/') == std::string::npos) {
        if (auto found = findProgram(program, surroundings.environment)) return *found;
        throw Refusal("No program called " + inQuotes(program) + " is in the folders of PATH.");
    }
    const auto path = usablePath(program);
    if (fileSystem::isExecutableFile(path)) return path;
    throw Refusal(ambrel::utf8::oneLine(path) + " is no program that can be run.");
}

Adoption fromEntry(const Path& file, const Surroundings& surroundings) {
    const auto entry = DesktopEntry::parse(fileSystem::read(file));
    auto call = entry.program(file);
    requireAdoptable(entry, call);
    const std::string id{paths::stem(file)};
    requireUtf8(id, "the desktop entry's name");
    Adoption adoption;
    const auto name = entry.string("Name").value_or("");
    adoption.name = bundleName(name.empty() ? id : name);
    adoption.identifier = wellKnownIdentifier(id).value_or(id);
    call.program = requireProgram(call.program, surroundings);
    adoption.call = std::move(call);
    adoption.icon = findIcon(entry.string("Icon").value_or(""), surroundings.environment);
    if (entry.isTrue("DBusActivatable")) {
        adoption.warnings.push_back(
            inQuotes(adoption.name) +
            " can be activated over the session bus: a second copy may hand "
            "over to a running one, and will not be kept apart then.");
    }
    return adoption;
}

Adoption fromEntryFile(const Path& file, const Surroundings& surroundings) {
    try {
        return fromEntry(file, surroundings);
    } catch (const DesktopEntryError& error) {
        throw Refusal("The desktop entry " + ambrel::utf8::oneLine(file) +
                      " cannot be adopted: " + error.what() + ".");
    }
}

Adoption fromProgram(const Path& program) {
    const std::string name{paths::lastComponent(program)};
    Adoption adoption;
    adoption.name = bundleName(name);
    adoption.identifier = wellKnownIdentifier(name).value_or(name);
    adoption.call.program = program;
    return adoption;
}

bool isEntry(const std::string& text) { return paths::extension(text) == entryExtension; }

} // namespace

Adoption planAdoption(const std::string& text, const Surroundings& surroundings) {
    if (text.empty()) throw Refusal("The program's name is empty.");
    requireUtf8(text, "the program");
    if (text.find('/') != std::string::npos || text.starts_with('~')) {
        const auto path = usablePath(text);
        return isEntry(path) ? fromEntryFile(path, surroundings)
                             : fromProgram(requireProgram(path, surroundings));
    }
    if (isEntry(text) && fileSystem::exists(text)) {
        return fromEntryFile(usablePath(text), surroundings);
    }
    if (const auto entry = findDesktopEntry(text, surroundings.environment)) {
        return fromEntryFile(*entry, surroundings);
    }
    if (const auto program = findProgram(text, surroundings.environment)) {
        return fromProgram(*program);
    }
    throw Refusal("Neither a desktop entry nor a program is called " + inQuotes(text) + ".");
}

std::string launcherScript(const ProgramCall& call) {
    std::string line = "exec";
    const auto add = [&](const std::string& word) {
        line += " '";
        for (const char c : word) {
            if (c == '\'') {
                line += "'\\''";
            } else {
                line += c;
            }
        }
        line += '\'';
    };
    add(call.program);
    for (const auto& argument : call.before) add(argument);
    line += " \"$@\"";
    for (const auto& argument : call.behind) add(argument);
    return "#!/bin/sh\n" + line + "\n";
}

void writeAdoptedBundle(const Adoption& adoption, const Path& bundle) {
    const BundleLayout layout{bundle};
    const std::string executable{paths::lastComponent(adoption.call.program)};
    ambrel::PropertyListDictionary info{
        {"CFBundleIdentifier", {adoption.identifier}},
        {"CFBundleExecutable", {executable}},
        {"CFBundleName", {adoption.name}},
    };
    fileSystem::createFolders(layout.executables());
    fileSystem::createFolders(layout.resources());
    if (adoption.icon && tryConvertToIconFile(*adoption.icon, layout.icon())) {
        info.insert({"CFBundleIconFile", {std::string(BundleLayout::iconName)}});
    }
    const auto place = paths::join(layout.executables(), executable);
    if (adoption.call.hasArguments()) {
        fileSystem::write(place, launcherScript(adoption.call));
        fileSystem::setPermissions(place, 0755);
    } else {
        fileSystem::createSymbolicLink(adoption.call.program, place);
    }
    fileSystem::write(layout.infoPlist(), ambrel::xmlPropertyList(info));
}

} // namespace korvane
