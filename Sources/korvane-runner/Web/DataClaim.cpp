#include "korvane-runner/Web/DataClaim.h"

#include "Ambrel/Platform/FileSystem.h"

namespace korvane::runner {

using ambrel::SoleProcess;

DataClaim DataClaim::make(const ambrel::Path& folder, std::string_view message,
                          const std::function<bool()>& pause) {
    // A person may keep the data elsewhere, and a link itself can be claimed by nobody.
    const auto place = ambrel::fileSystem::resolved(folder);
    if (!place || !ambrel::fileSystem::isFolder(*place)) return {};
    do {
        if (auto own = SoleProcess::claim(*place)) return {std::move(own), false};
        if (SoleProcess::call(*place, message)) return {std::nullopt, true};
    } while (pause());
    return {};
}

} // namespace korvane::runner
