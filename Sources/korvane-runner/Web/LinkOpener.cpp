#include "korvane-runner/Web/LinkOpener.h"

#include "Ambrel/Platform/DetachedProcess.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/StartTokens.h"

#include <utility>

namespace korvane::runner {

LinkOpener::LinkOpener(ambrel::SystemTools tools, ambrel::Environment environment)
    : tools_(std::move(tools)), environment_(std::move(environment)) {
    ambrel::eraseStartTokens(environment_);
}

void LinkOpener::open(const std::string& url) noexcept {
    try {
        std::erase_if(started_, [](const auto& process) { return !process.isRunning(); });
        started_.push_back(ambrel::launchDetached(tools_.open, {url}, {}, environment_));
    } catch (const std::exception&) {
        // Said in the header.
    }
}

} // namespace korvane::runner
