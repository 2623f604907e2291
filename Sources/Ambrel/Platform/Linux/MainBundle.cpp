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

std::optional<Path> folderIn(std::string_view parent, std::string_view name) {
    const auto folder = paths::join(parent, name);
    return fileSystem::isFolder(folder) ? std::optional(folder) : std::nullopt;
}

} // namespace

MainBundle MainBundle::current() {
    const auto executable = ownExecutable();
    if (!executable) return {};
    const auto folder = paths::deletingLastComponent(*executable);
    const auto parent = paths::deletingLastComponent(folder);
    if (paths::lastComponent(folder) == "MacOS" && paths::lastComponent(parent) == "Contents") {
        const auto resources = folderIn(parent, "Resources");
        return {executable, resources, resources};
    }
    return {executable, folderIn(parent, "lib/korvane"), folderIn(parent, "share/korvane")};
}

} // namespace ambrel
