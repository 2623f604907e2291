#include "Ambrel/Platform/MainBundle.h"

#include "Ambrel/Platform/FileSystem.h"

#include <string>
#include <unistd.h>
#include <vector>

namespace ambrel {

namespace {

std::optional<Path> ownExecutable() {
    for (std::size_t size = 1024; size <= 1024 * 1024; size *= 2) {
        std::string target(size, '\0');
        const auto length = ::readlink("/proc/self/exe", target.data(), target.size());
        if (length < 0) return std::nullopt;
        if (static_cast<std::size_t>(length) == size) continue; // perhaps cut short
        target.resize(static_cast<std::size_t>(length));
        return target;
    }
    return std::nullopt;
}

std::optional<Path> resourcesFor(const Path& executable) {
    const auto folder = paths::deletingLastComponent(executable);
    const auto parent = paths::deletingLastComponent(folder);
    const bool inBundle =
        paths::lastComponent(folder) == "MacOS" && paths::lastComponent(parent) == "Contents";
    const auto resources = paths::join(parent, inBundle ? "Resources" : "lib/korvane");
    return fileSystem::isFolder(resources) ? std::optional(resources) : std::nullopt;
}

} // namespace

MainBundle MainBundle::current() {
    const auto executable = ownExecutable();
    if (!executable) return {};
    return {executable, resourcesFor(*executable)};
}

} // namespace ambrel
