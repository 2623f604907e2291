#include "Manager/Desktop/Linux/EntryFiles.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace korvane::registration {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

bool isFile(const Path& path) { return fileSystem::kindOf(path) == fileSystem::ItemKind::file; }

bool holds(const Path& file, const std::string& bytes) {
    try {
        return isFile(file) && fileSystem::read(file) == bytes;
    } catch (const ambrel::FileError&) {
        return false; // what cannot be read is not known to be the same
    }
}

bool isStranger(const Path& place, const std::string& bytes, bool isOurs) {
    if (!fileSystem::kindOf(place)) return false;
    return !(isOurs && isFile(place)) && !holds(place, bytes);
}

/// Returns whether anything was changed.
bool writeFile(const Path& file, const std::string& bytes) {
    if (holds(file, bytes)) return false;
    fileSystem::createFolders(Path(paths::deletingLastComponent(file)));
    fileSystem::replace(file, bytes);
    return true;
}

bool isScript(const Path& file, const std::string& text) {
    return holds(file, text) && fileSystem::isExecutableFile(file);
}

/// In place it is complete and can be run at once.
void writeScript(const Path& file, const std::string& text) {
    if (isScript(file, text)) return;
    constexpr unsigned executable = 0755;
    fileSystem::createFolders(Path(paths::deletingLastComponent(file)));
    fileSystem::replace(file, text, executable);
}

/// Docks and panels look into a theme again when its own folder has changed. One that cannot be
/// told shows the icons later.
void announceIcons(const Places& places) noexcept {
    ::utimensat(AT_FDCWD, places.theme().c_str(), nullptr, 0);
}

bool isAmong(const std::vector<ThemeIcon>& icons, std::uint32_t side) {
    for (const auto& icon : icons) {
        if (icon.side == side) return true;
    }
    return false;
}

/// A file of the entry `existing` that is none of `files`.
std::optional<Path> findSuperfluous(const Places& places, const EntryFiles& files,
                                    const ExistingEntry& existing) {
    if (existing.hasScript && !files.script && isFile(places.script())) return places.script();
    for (const auto side : themeSides) {
        const auto icon = places.icon(side);
        if (existing.hasIcons && !isAmong(files.icons, side) && isFile(icon)) return icon;
    }
    return std::nullopt;
}

/// Removes files one by one, going on after a failure.
class Removal {
public:
    /// Returns whether the file was there and is gone.
    bool remove(const Path& file) {
        try {
            if (!isFile(file)) return false;
            fileSystem::removeItem(file);
            return true;
        } catch (const ambrel::FileError& error) {
            if (!failure_) failure_ = error;
            return false;
        }
    }
    void finish() const {
        if (failure_) throw ambrel::FileError(*failure_);
    }

private:
    std::optional<ambrel::FileError> failure_;
};

/// What the entry `existing` has and `files` has not.
void removeSuperfluous(const Places& places, const EntryFiles& files,
                       const ExistingEntry& existing) {
    Removal removal;
    if (existing.hasScript && !files.script) removal.remove(places.script());
    bool changed = false;
    for (const auto side : themeSides) {
        if (!existing.hasIcons || isAmong(files.icons, side)) continue;
        changed = removal.remove(places.icon(side)) || changed;
    }
    if (changed) announceIcons(places);
    removal.finish();
}

} // namespace

std::optional<Path> findStranger(const Places& places, const EntryFiles& files,
                                 const std::optional<ExistingEntry>& existing) {
    const bool hasScript = existing && existing->hasScript;
    const auto script = places.script();
    if (files.script && isStranger(script, *files.script, hasScript)) return script;
    const bool hasIcons = existing && existing->hasIcons;
    for (const auto& icon : files.icons) {
        const auto place = places.icon(icon.side);
        if (isStranger(place, icon.png, hasIcons)) return place;
    }
    return std::nullopt;
}

std::optional<Path> findOutdated(const Places& places, const EntryFiles& files,
                                 const ExistingEntry& existing) {
    if (!holds(places.entry(), files.entry)) return places.entry();
    if (files.script && !isScript(places.script(), *files.script)) return places.script();
    for (const auto& icon : files.icons) {
        if (!holds(places.icon(icon.side), icon.png)) return places.icon(icon.side);
    }
    return findSuperfluous(places, files, existing);
}

void writeFiles(const Places& places, const EntryFiles& files,
                const std::optional<ExistingEntry>& existing) {
    // What reads the entry looks for its program at once, and may never look again.
    if (files.script) writeScript(places.script(), *files.script);
    bool changed = false;
    for (const auto& icon : files.icons) {
        changed = writeFile(places.icon(icon.side), icon.png) || changed;
    }
    writeFile(places.entry(), files.entry);
    if (changed) announceIcons(places);
    if (existing) removeSuperfluous(places, files, *existing);
}

void removeFiles(const Places& places, const ExistingEntry& existing) {
    // The entry first: where it has to stay, what it shows and starts stays with it.
    Removal removal;
    removal.remove(places.entry());
    removal.finish();
    removeSuperfluous(places, {}, existing);
}

} // namespace korvane::registration
