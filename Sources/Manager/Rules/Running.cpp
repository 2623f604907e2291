#include "Manager/Rules/Running.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/OwnNames.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/ProgramProcesses.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"

#include <algorithm>
#include <map>
#include <set>

namespace korvane {

using ambrel::FileIdentity;
using ambrel::HeldFile;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::ProcessSeen;
using ambrel::UserPlaces;
namespace folders = ambrel::folders;

namespace {

/// Whether the file is the log of some instance, to judge by its name.
bool isAnyLog(const std::optional<HeldFile>& file) {
    return file &&
           ambrel::paths::lastComponent(file->path) == ambrel::InstanceLauncher::instanceLogName;
}

/// A file by its place and by what it is now.
struct Place {
    Path path;
    std::optional<FileIdentity> identity;

    bool isHeldAs(const std::optional<HeldFile>& file) const {
        return file && file->isOrWas(path, identity);
    }
};

} // namespace

/// What the processes of one instance are known by.
struct Running::Signs {
    static Signs of(const InstanceRecord& record, const UserPlaces& user);

    Place runner;
    std::optional<Place> log;
    std::optional<Place> home; ///< absent where it would be that of every process of the user

    bool isRunnerOf(const ProcessSeen& process) const {
        return runner.isHeldAs(process.executable);
    }
    bool isLogOf(const ProcessSeen& process) const {
        return log && (log->isHeldAs(process.output) || log->isHeldAs(process.error));
    }
    bool isHomeOf(const Known& known) const {
        if (!home || !known.process->home) return false;
        return *known.process->home == home->path || (known.home && known.home == home->identity);
    }
};

Running::Signs Running::Signs::of(const InstanceRecord& record, const UserPlaces& user) {
    const auto runner = folders::canonical(ambrel::BundleLayout{record.bundleURL}.runner());
    Signs signs{.runner = {runner, FileIdentity::ofFileAt(runner)}, .log = {}, .home = {}};
    const auto home = usableHome(record.config, user);
    if (!home) return signs;
    const auto log =
        folders::canonical(ambrel::paths::join(*home, ambrel::InstanceLauncher::instanceLogName));
    signs.log = {log, FileIdentity::ofFileAt(log)};
    if (isPrivateHome(record.config, user)) signs.home = {*home, FileIdentity::at(*home)};
    return signs;
}

Running::Running(std::vector<ProcessSeen> processes, UserPlaces user)
    : descent_(std::move(processes)), user_(std::move(user)) {
    // Most processes have the same home.
    std::map<Path, std::optional<FileIdentity>> homes;
    for (const auto& process : descent_.processes()) {
        Known known{.process = &process, .runner = descent_.nearest(process, ambrel::isRunner)};
        if (const auto& home = process.home; home && home->starts_with('/')) {
            const auto [entry, isNew] = homes.try_emplace(*home);
            if (isNew) entry->second = FileIdentity::at(*home);
            known.home = entry->second;
        }
        known_.push_back(known);
    }
}

Running Running::now(const UserPlaces& user) { return {ambrel::runningProcesses(), user}; }

bool Running::belongs(const Known& known, const Signs& signs) const {
    const auto& process = *known.process;
    if (process.id == ambrel::ownProcessId()) return false;
    const auto* above = known.runner;
    if (above != nullptr && signs.isRunnerOf(*above)) return true;
    // One that was removed may be from before this bundle was made, and tells nothing.
    const bool isOthers = above != nullptr && !above->executable->isRemoved;
    const bool isOthersRunner = isOthers && above == &process;
    if (!process.isUsers || isOthersRunner) return false;
    if (signs.isLogOf(process)) return true;
    const bool hasOthersLog = isAnyLog(process.output) || isAnyLog(process.error);
    return !isOthers && !hasOthersLog && signs.isHomeOf(known);
}

/// Whether it is another run of this program that has started a runner of the instance.
bool Running::waitsForRunner(const ProcessSeen& process, const Signs& signs) const {
    const auto* self = descent_.find(ambrel::ownProcessId());
    if (self == nullptr || process.id == self->id) return false;
    const auto& own = self->executable;
    if (!own || !process.executable || own->identity != process.executable->identity) return false;
    return std::ranges::any_of(descent_.processes(), [&](const ProcessSeen& other) {
        return other.parent == process.id && signs.isRunnerOf(other);
    });
}

std::vector<int> Running::waiting(const Signs& signs) const {
    std::vector<int> found;
    for (const auto& process : descent_.processes()) {
        if (waitsForRunner(process, signs)) found.push_back(process.id);
    }
    return found;
}

/// Whether `process`, which belongs to the instance, means that its program runs. A runner waits
/// for that, and where there is a second one below the first, the program may be a service of the
/// bus, which is below that one. With nothing below it is what is going to be a service, and is
/// still called like whoever starts it.
bool Running::isProgram(const ProcessSeen& process, const Signs& signs) const {
    if (!signs.isRunnerOf(process)) return !process.isStartedByBus;
    const auto* above = descent_.find(process.parent);
    return above != nullptr && signs.isRunnerOf(*above) &&
           std::ranges::find(descent_.processes(), process.id, &ProcessSeen::parent) !=
               descent_.processes().end();
}

RunningProcesses Running::of(const InstanceRecord& record) const {
    const auto signs = Signs::of(record, user_);
    const bool hasServices = ambrel::wantsOwnNames(record.config);
    std::set<int> members;
    for (const auto& known : known_) {
        if (belongs(known, signs)) members.insert(known.process->id);
    }
    RunningProcesses found;
    std::vector<int> runners;
    std::vector<int> below;
    for (const int id : members) {
        const auto& process = *descent_.find(id);
        found.hasProgram |= !hasServices || isProgram(process, signs);
        if (signs.isRunnerOf(process)) {
            runners.push_back(id);
        } else if (members.contains(process.parent)) {
            below.push_back(id);
        } else {
            found.heads.push_back(id);
        }
    }
    found.heads.insert(found.heads.begin(), runners.begin(), runners.end());
    found.ids = waiting(signs);
    std::erase_if(found.ids, [&](int id) { return members.contains(id); });
    found.ids.insert(found.ids.end(), found.heads.begin(), found.heads.end());
    found.ids.insert(found.ids.end(), below.begin(), below.end());
    for (const int id : found.ids) {
        const auto& file = descent_.find(id)->executable;
        if (file) found.programs.emplace(id, ambrel::paths::lastComponent(file->path));
    }
    return found;
}

std::vector<int> Running::in(const Path& home) const {
    InstanceRecord anybody;
    anybody.config.instanceHome = home;
    const auto signs = Signs::of(anybody, user_);
    std::vector<int> found;
    for (const auto& known : known_) {
        const auto& process = *known.process;
        if (!process.isUsers || process.id == ambrel::ownProcessId()) continue;
        if (signs.isLogOf(process) || signs.isHomeOf(known)) found.push_back(process.id);
    }
    return found;
}

void requireNotRunning(const InstanceRecord& record, const UserPlaces& user) {
    const auto found = Running::now(user).of(record);
    if (found.none()) return;
    throw Refusal(Refusal::Kind::instanceRuns, nameFor(record, user),
                  "The instance " + inQuotes(record.config.displayName) +
                      " is running: " + spokenProcesses(found.ids, found.programs) + ".",
                  Remedy::stopFirst);
}

std::string spokenProcesses(const std::vector<int>& all,
                            const std::map<int, std::string>& programs) {
    constexpr std::size_t mostNamed = 3;
    const auto nameOf = [&](int id) {
        const auto program = programs.find(id);
        return program == programs.end() ? std::string() : program->second;
    };
    auto ids = all;
    std::stable_partition(ids.begin(), ids.end(), [&](int id) {
        return nameOf(id) != ambrel::BundleLayout::runnerFileName;
    });
    std::string text = ids.size() == 1 ? "process " : "processes ";
    const auto named = std::min(ids.size(), mostNamed);
    for (std::size_t at = 0; at < named; ++at) {
        if (at > 0) text += at + 1 == ids.size() ? " and " : ", ";
        text += std::to_string(ids[at]);
        const auto name = nameOf(ids[at]);
        if (!name.empty()) text += " (" + ambrel::utf8::oneLine(name) + ")";
    }
    if (ids.size() > named) text += " and " + std::to_string(ids.size() - named) + " more";
    return text;
}

} // namespace korvane
