#include "Manager/Desktop/Linux/TypeIndex.h"

#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileSystem.h"

#include <memory>

namespace korvane::registration {

namespace {

/// Of desktop-file-utils.
constexpr const char* indexTool = "/usr/bin/update-desktop-database";

} // namespace

void ensureTypeIndex(const ambrel::Path& folder) noexcept {
    try {
        if (!ambrel::fileSystem::isExecutableFile(indexTool)) return;
        // It complains of entries of others, too.
        const auto nowhere = std::make_shared<const ambrel::OwnedFd>(
            ambrel::fileSystem::openForAppending("/dev/null"));
        ambrel::ChildProcess tool({.executable = indexTool,
                                   .arguments = {"-q", folder},
                                   .standardOutput = nowhere,
                                   .standardError = nowhere});
        tool.launch();
        tool.waitUntilExit();
    } catch (const std::exception&) {
        // The entry is as it was asked for all the same.
    }
}

} // namespace korvane::registration
