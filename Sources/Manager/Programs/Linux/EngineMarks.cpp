#include "Manager/Programs/Linux/EngineMarks.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/WrapperFactory.h"

#include <optional>

namespace korvane {

using ambrel::Path;
using ambrel::WrapperFactory;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// The folders where a program's own files may lie.
std::vector<Path> placesOf(const Path& program) {
    const auto file = fileSystem::resolved(program);
    if (!file) return {};
    const Path folder{paths::deletingLastComponent(*file)};
    std::vector<Path> places{folder, paths::join(folder, "resources")};
    if (paths::lastComponent(folder) != "bin") return places;
    const Path above{paths::deletingLastComponent(folder)};
    places.push_back(above);
    places.push_back(paths::join(above, "resources"));
    return places;
}

std::optional<Path> findIn(const std::vector<Path>& places, const std::string& name) {
    for (const auto& place : places) {
        auto file = paths::join(place, name);
        if (fileSystem::exists(file)) return file;
    }
    return std::nullopt;
}

/// A file that only Electron has, or the folder with those that it shares with browsers.
std::optional<Path> electronProof(const std::vector<Path>& places) {
    if (auto archive = findIn(places, "app.asar")) return archive;
    for (const auto& place : places) {
        const bool hasBoth = fileSystem::exists(paths::join(place, "resources.pak")) &&
                             fileSystem::exists(paths::join(place, "chrome_100_percent.pak"));
        if (hasBoth) return place;
    }
    return std::nullopt;
}

} // namespace

std::vector<EngineMark> engineMarksOf(const Path& program, const std::string& identifier) {
    // Told by the identifier alone: a path at which there is no bundle has no other proof.
    using Engine = WrapperFactory::AppEngine;
    const bool isBrowser = WrapperFactory::detectEngine("", identifier) == Engine::chromium;
    const auto places = placesOf(program);
    std::vector<EngineMark> marks;
    const auto add = [&](const char* place, const std::optional<Path>& proof) {
        if (proof) marks.push_back({place, *proof});
    };
    if (!isBrowser) {
        add("Contents/Frameworks/Electron Framework.framework", electronProof(places));
    }
    add("Contents/Eclipse/eclipse.ini", findIn(places, "eclipse.ini"));
    add("Contents/Resources/application.ini", findIn(places, "application.ini"));
    return marks;
}

} // namespace korvane
