#include "korvane-runner/Web/WebStorage.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/GuardedFolder.h"

namespace korvane::runner {

namespace {

using namespace ambrel;

bool mayBeEntered(const Path& folder) { return fileSystem::isFolder(folder + "/."); }

/// A link that stands there already is the person's, who keeps the data elsewhere.
void makeWhereMissing(const Path& parent, std::string_view relative) noexcept {
    constexpr unsigned ownerOnly = 0700;
    if (mayBeEntered(paths::join(parent, relative))) return;
    try {
        GuardedFolder::open(parent).folder(relative, ownerOnly);
    } catch (const std::exception&) {
        // What is there in the end is asked for then.
    }
}

} // namespace

bool WebStorage::ensure() const noexcept {
    makeWhereMissing(home, relativeRoot);
    for (const auto& folder : {data(), cache()})
        makeWhereMissing(root(), paths::lastComponent(folder));
    return mayBeEntered(data()) && mayBeEntered(cache());
}

} // namespace korvane::runner
