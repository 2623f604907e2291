#include "Ambrel/Launch/ProgramProcesses.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/HomePreparation.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/ProcessDescent.h"
#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

namespace {

/// What a process of an instance is known by that nobody of the instance is above any more.
class Signs {
public:
    Signs(const ResolvedInstance& instance, const UserPlaces& user) {
        if (!instance.home.empty()) {
            log_ =
                folders::canonical(paths::join(instance.home, InstanceLauncher::instanceLogName));
            logNow_ = FileIdentity::ofFileAt(log_);
        }
        if (HomePreparation::isPrivate(instance, user)) home_ = instance.home;
    }

    bool areOn(const ProcessSeen& process) const {
        if (!process.isUsers) return false;
        return isLog(process.output) || isLog(process.error) || (home_ && process.home == home_);
    }

private:
    bool isLog(const std::optional<HeldFile>& file) const {
        return file && file->isOrWas(log_, logNow_);
    }

    Path log_; ///< empty where there is none
    std::optional<FileIdentity> logNow_;
    std::optional<Path> home_; ///< absent where it would be that of every process of the user
};

} // namespace

bool isRunner(const ProcessSeen& process) {
    if (!process.executable) return false;
    const auto& program = process.executable->path;
    const auto folder = paths::deletingLastComponent(program);
    if (paths::lastComponent(program) != BundleLayout::runnerFileName ||
        !folder.ends_with("/Contents/MacOS")) {
        return false;
    }
    // An application may have a program of that name.
    return process.executable->isRemoved ||
           fileSystem::exists(BundleLayout::instanceJsonForExecutable(program));
}

std::set<int> processesOf(int program, const ResolvedInstance& instance, const UserPlaces& user,
                          const std::optional<FileIdentity>& runner) {
    const Signs signs(instance, user);
    const ProcessDescent descent(runningProcesses());
    const auto isOwner = [&](const auto& process) {
        if (process.id == program) return true;
        return isRunner(process) && (!runner || process.executable->identity != *runner);
    };
    std::set<int> found;
    for (const auto& process : descent.processes()) {
        const auto* owner = descent.nearest(process, isOwner);
        if (owner != nullptr ? owner->id == program : signs.areOn(process)) {
            found.insert(process.id);
        }
    }
    return found;
}

} // namespace ambrel
