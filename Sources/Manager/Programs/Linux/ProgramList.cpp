#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Programs/Adoption.h"
#include "Manager/Programs/Linux/EntryCall.h"
#include "Manager/Programs/Linux/EntrySearch.h"
#include "Manager/Programs/PathSearch.h"

#include <algorithm>
#include <tuple>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
using ambrel::UserPlaces;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// What Exec starts; absent for an entry whose Exec cannot be used.
std::optional<StartedProgram> tryStartedBy(const DesktopEntry& entry, const Path& file) {
    try {
        const auto call = entry.program(file);
        auto started = startedBy(call);
        // With nothing behind it, "--" keeps no file from being taken for an option.
        for (const auto& word : call.behind) {
            if (word != "--") started.arguments.push_back(word);
        }
        return started;
    } catch (const DesktopEntryError&) {
        return std::nullopt; // it is found by its names, and refused with the reason
    }
}

bool isApplication(const DesktopEntry& entry) {
    return entry.string("Type").value_or("Application") == "Application" &&
           !entry.isTrue("Hidden") && !isOfInstance(entry);
}

std::optional<DesktopEntry> tryRead(const Path& file) {
    try {
        return DesktopEntry::parse(fileSystem::read(file));
    } catch (const std::exception&) {
        return std::nullopt; // what cannot be read is in no menu
    }
}

ListedProgram listed(const IdentifiedEntry& place, const DesktopEntry& entry,
                     const Environment& environment) {
    ListedProgram program{.file = place.file,
                          .id = place.id,
                          .name = entry.string("Name").value_or(place.id),
                          .translatedNames = {},
                          .command = {}};
    for (auto& [language, name] : entry.translations("Name")) {
        program.translatedNames.push_back(name);
    }
    if (const auto started = tryStartedBy(entry, place.file)) {
        program.command = paths::lastComponent(started->program);
    }
    program.isUsable = isApplication(entry) && isInstalled(entry, environment);
    program.isShown = program.isUsable && !entry.isTrue("NoDisplay");
    return program;
}

/// How well an entry stands for a program; the lesser, the better.
struct Rank {
    int tie; ///< 0: its id is the command's name, 1: its id ends in that, 2: its name is that
    bool isHidden;
    bool isInTerminal;
    std::size_t arguments;

    auto order() const { return std::tuple(isHidden, isInTerminal, tie, arguments); }
};

constexpr int untied = 3;

int tieOf(const std::string& id, const DesktopEntry& entry, const std::string& command) {
    const auto same = [&](const std::string& word) {
        return ambrel::text::lowercased(word) == ambrel::text::lowercased(command);
    };
    if (same(id)) return 0;
    const auto dot = id.rfind('.');
    if (dot != std::string::npos && same(id.substr(dot + 1))) return 1;
    return same(entry.string("Name").value_or("")) ? 2 : untied;
}

bool isSameProgram(const std::string& name, const Path& program, const Environment& environment) {
    const auto file = name.starts_with('/') ? std::optional(name) : findProgram(name, environment);
    return file && fileSystem::isSameItem(*file, program);
}

/// Absent where the entry starts something else, or a feature of the program: with arguments, and
/// called by another name ("libreoffice --writer").
std::optional<Rank> rankOf(const IdentifiedEntry& place, const Path& program,
                           const Environment& environment) {
    const auto entry = tryRead(place.file);
    if (!entry || !isApplication(*entry) || !isInstalled(*entry, environment)) return {};
    const auto started = tryStartedBy(*entry, place.file);
    if (!started || !isSameProgram(started->program, program, environment)) return {};
    const Rank rank{.tie = tieOf(place.id, *entry, std::string(paths::lastComponent(program))),
                    .isHidden = entry->isTrue("NoDisplay"),
                    .isInTerminal = entry->isTrue("Terminal"),
                    .arguments = started->arguments.size()};
    const bool isPlain = rank.arguments == 0 && !rank.isHidden && !rank.isInTerminal;
    const bool isOther = rank.tie == untied && !isPlain;
    return isOther ? std::nullopt : std::optional(rank);
}

} // namespace

std::vector<ListedProgram> listPrograms(const UserPlaces& user, const Environment& environment) {
    std::vector<ListedProgram> programs;
    for (const auto& place : identifiedEntries(user, environment)) {
        const auto entry = tryRead(place.file);
        if (!entry || isOfInstance(*entry)) continue;
        programs.push_back(listed(place, *entry, environment));
    }
    return programs;
}

std::vector<Path> entriesOf(const Path& program, const UserPlaces& user,
                            const Environment& environment) {
    std::vector<Path> best;
    std::optional<Rank> least;
    for (const auto& place : identifiedEntries(user, environment)) {
        const auto rank = rankOf(place, program, environment);
        if (!rank || (least && rank->order() > least->order())) continue;
        if (!least || rank->order() < least->order()) best.clear();
        least = rank;
        best.push_back(place.file);
    }
    return best;
}

} // namespace korvane
