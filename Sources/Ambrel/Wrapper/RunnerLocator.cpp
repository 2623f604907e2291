#include "Ambrel/Wrapper/RunnerLocator.h"

namespace ambrel {

std::optional<Path> RunnerLocator::locate(const MainBundle& bundle,
                                          const FileManager& fileManager) {
    for (const auto& candidate : candidates(bundle, fileManager)) {
        if (fileManager.isExecutableFile(candidate)) return candidate;
    }
    return std::nullopt;
}

std::vector<Path> RunnerLocator::candidates(const MainBundle& bundle, const FileManager& fm) {
    std::vector<Path> list;
    if (bundle.resourceURL) list.push_back(paths::join(*bundle.resourceURL, runnerName));
    if (bundle.executableURL) {
        const auto folder = paths::deletingLastComponent(*bundle.executableURL);
        list.push_back(paths::join(folder, runnerName));
    }
    const auto builds = paths::join(fm.currentDirectory(), ".build");
    list.push_back(paths::join(paths::join(builds, "debug"), runnerName));
    list.push_back(paths::join(paths::join(builds, "release"), runnerName));
    return list;
}

} // namespace ambrel
