#include "Manager/Programs/Adoption.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/Linux/BrowserIdentifiers.h"
#include "Manager/Programs/Linux/EntryCall.h"
#include "Manager/Programs/Linux/IconSearch.h"
#include "Manager/Programs/Linux/ProgramFile.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Programs/Terminal.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>

namespace korvane {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// `name` as the name of a bundle, with what a file name cannot hold replaced.
std::string bundleName(std::string name) {
    std::replace(name.begin(), name.end(), '/', '-');
    return checkedName(name);
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

/// Only bash can start a program by another name, and only what is no script heeds it.
std::optional<Path> namingShellFor(const Adoption& adoption,
                                   const ambrel::Environment& environment) {
    const bool isLaunched = adoption.call.hasArguments() && !adoption.terminal;
    const bool hasUse = isLaunched && startedBy(adoption.call).isPlain &&
                        !isShell(adoption.program) && !isScript(adoption.program);
    auto shell = hasUse ? findProgram("bash", environment) : std::nullopt;
    // The kernel takes the first line of a script apart at blanks.
    return shell && shell->find_first_of(" \t\n") == Path::npos ? shell : std::nullopt;
}

void addNames(Adoption& adoption, const DesktopEntry& entry, const std::string& id) {
    const auto name = entry.string("Name").value_or("");
    adoption.name = bundleName(name.empty() ? id : name);
    adoption.names = entry.translations("Name");
    std::erase_if(adoption.names, [&](const auto& translated) {
        return translated.second.empty() || translated.second == name;
    });
}

Adoption fromEntry(const Path& file, const ambrel::UserPlaces& user,
                   const ambrel::Environment& environment) {
    const auto entry = DesktopEntry::parse(fileSystem::read(file));
    auto call = requireCall(entry, file, environment);
    const std::string id{paths::stem(file)};
    requireUtf8(id, "the desktop entry's name");
    Adoption adoption;
    addNames(adoption, entry, id);
    adoption.identifier = wellKnownIdentifier(id).value_or(id);
    call.program = requireProgram(call.program, user, environment);
    completeShellCall(call);
    // With nothing behind it, it keeps no file from being taken for an option. Where there are
    // files the start of an instance puts it there again: some take no others.
    adoption.wantsOpenMark = call.behind == std::vector<std::string>{"--"};
    if (adoption.wantsOpenMark) call.behind.clear();
    adoption.program = requireProgram(startedBy(call).program, user, environment);
    adoption.call = std::move(call);
    if (entry.isTrue("Terminal")) adoption.terminal = requireTerminal(environment);
    adoption.categories = entry.string("Categories").value_or("");
    adoption.mimeTypes = entry.string("MimeType").value_or("");
    adoption.icon = findIcon(entry.string("Icon").value_or(""), user, environment);
    adoption.namingShell = namingShellFor(adoption, environment);
    adoption.isActivatable = entry.isTrue("DBusActivatable");
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

} // namespace

bool adoptionIsOffered() noexcept { return true; }

Adoption planAdoption(const Path& file, const ambrel::UserPlaces& user,
                      const ambrel::Environment& environment) {
    if (paths::extension(file) == "desktop") return fromEntryFile(file, user, environment);
    return fromProgram(requireProgram(file, user, environment));
}

} // namespace korvane
