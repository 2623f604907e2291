#include "Ambrel/Launch/ProgramProcesses.h"

#include "Ambrel/Home/HomePreparation.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>

namespace ambrel {

namespace {

/// Who started whom, as far as that can still be seen.
class Descent {
public:
    explicit Descent(const std::vector<ProcessSeen>& processes) : processes_(processes) {}

    /// The nearest of a process and those above it that is `program` or a runner; null where there
    /// is none.
    const ProcessSeen* ownerOf(const ProcessSeen& process, int program) const {
        // The list was not made at one moment: an id given anew may lead round in a circle.
        std::set<int> passed;
        for (const auto* at = &process; at != nullptr && passed.insert(at->id).second;
             at = find(at->parent)) {
            if (at->id == program || isRunner(*at)) return at;
        }
        return nullptr;
    }

private:
    const ProcessSeen* find(int id) const {
        const auto found = std::ranges::lower_bound(processes_, id, {}, &ProcessSeen::id);
        return found != processes_.end() && found->id == id ? &*found : nullptr;
    }

    const std::vector<ProcessSeen>& processes_;
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

std::set<int> processesOf(int program, const ResolvedInstance& instance, const UserPlaces& user) {
    const bool isHomeTelling = HomePreparation::isPrivate(instance, user);
    const auto processes = runningProcesses();
    const Descent descent(processes);
    std::set<int> found;
    for (const auto& process : processes) {
        const auto* owner = descent.ownerOf(process, program);
        const bool isLeftBehind =
            owner == nullptr && isHomeTelling && process.isUsers && process.home == instance.home;
        if (isLeftBehind || (owner != nullptr && owner->id == program)) found.insert(process.id);
    }
    return found;
}

} // namespace ambrel
