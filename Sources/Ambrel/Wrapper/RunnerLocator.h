#pragma once

#include "Ambrel/Platform/FileManager.h"
#include "Ambrel/Platform/MainBundle.h"

#include <optional>
#include <vector>

namespace ambrel {

/// Finds the runner executable that wrappers are made with.
struct RunnerLocator {
    RunnerLocator() = delete;

    static constexpr std::string_view runnerName = "korvane-runner";

    /// The first candidate that is an executable file, or absent.
    static std::optional<Path> locate(const MainBundle& bundle, const FileManager& fileManager);

    /// Where a runner may lie, in order: the bundle's resources, the folder of its executable, and
    /// .build/debug and .build/release below the working directory. Two to four entries, unchecked.
    static std::vector<Path> candidates(const MainBundle& bundle, const FileManager& fm);
};

} // namespace ambrel
