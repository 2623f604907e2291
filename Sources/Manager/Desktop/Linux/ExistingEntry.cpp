#include "Manager/Desktop/Linux/ExistingEntry.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Desktop/Linux/EntryText.h"
#include "Manager/Programs/Linux/DesktopEntry.h"
#include "Manager/Rules/BundlePlace.h"

namespace korvane::registration {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;

namespace {

/// The program of Exec; empty where it cannot be told.
Path programOf(const DesktopEntry& entry, const Path& file) {
    try {
        return entry.program(file).program;
    } catch (const DesktopEntryError&) {
        return {};
    }
}

} // namespace

bool ExistingEntry::isFor(const Path& path) const { return isSameBundle(bundle, path); }

std::optional<ExistingEntry> readEntry(const Places& places) noexcept {
    if (places.data.empty()) return std::nullopt;
    const auto file = places.entry();
    try {
        if (fileSystem::kindOf(file) != fileSystem::ItemKind::file) return std::nullopt;
        const auto entry = DesktopEntry::parse(fileSystem::read(file));
        const auto bundle = entry.string(bundleKey);
        if (!bundle || !bundle->starts_with('/')) return std::nullopt;
        auto home = entry.string(homeKey);
        if (home && !home->starts_with('/')) home.reset();
        return ExistingEntry{Path(ambrel::paths::withoutTrailingSlashes(*bundle)), std::move(home),
                             entry.string("Icon") == places.id,
                             programOf(entry, file) == places.script(), entry.has("MimeType")};
    } catch (const std::exception&) {
        return std::nullopt; // not readable, or no entry: nothing of ours
    }
}

} // namespace korvane::registration
