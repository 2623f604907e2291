#include "korvane-runner/Web/DataClaim.h"

#include "Ambrel/Platform/FileSystem.h"

namespace korvane::runner {

using ambrel::SoleProcess;

DataClaim DataClaim::make(const ambrel::Path& folder, std::string_view message,
                          const std::function<bool()>& pause) {
    if (!ambrel::fileSystem::isFolder(folder)) return {};
    do {
        if (auto own = SoleProcess::claim(folder)) return {std::move(own), false};
        if (SoleProcess::call(folder, message)) return {std::nullopt, true};
    } while (pause());
    return {};
}

} // namespace korvane::runner
