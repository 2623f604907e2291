#include "Manager/Desktop/Registration.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/LibraryError.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Linux/Categories.h"
#include "Manager/Desktop/Linux/EntryFiles.h"
#include "Manager/Desktop/Linux/EntryText.h"
#include "Manager/Desktop/Linux/TypeIndex.h"
#include "Manager/Programs/Linux/EntrySearch.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/InfoPlistKeys.h"

#include <algorithm>

namespace korvane::registration {

using ambrel::BundleLayout;
using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::ShortcutKind;
namespace fileSystem = ambrel::fileSystem;

namespace {

Places placesFor(const std::string& bundleId, const ambrel::UserPlaces& user) {
    return {ambrel::desktopId(bundleId), user.data};
}

std::optional<ExistingEntry> findOwn(const Places& places, const Path& bundle) {
    auto existing = readEntry(places);
    if (existing && !existing->isFor(bundle)) existing.reset();
    return existing;
}

/// Whether an entry stands for nothing any more. One whose bundle only cannot be seen is no stray.
bool isStray(const Places& places, const ExistingEntry& existing) {
    if (fileSystem::isMissing(existing.bundle)) return true;
    const auto config = ambrel::configIn(existing.bundle);
    return config && ambrel::desktopId(config->bundleId) != places.id;
}

/// Why what stands in the place of the entry is not touched.
std::string foreignEntry(const Places& places) {
    const auto file = ambrel::utf8::oneLine(places.entry());
    const auto other = readEntry(places);
    if (!other) return "A desktop entry of the same name is there already: " + file + ".";
    const auto bundle = ambrel::utf8::oneLine(other->bundle);
    if (fileSystem::isMissing(other->bundle)) {
        return "The desktop entry " + file + " stands for " + bundle +
               ", which is gone. Remove that file if nothing needs it.";
    }
    return "The desktop entry " + file + " belongs to the instance at " + bundle + ".";
}

/// Where nothing can be chosen otherwise, it is to be said that nothing was done.
std::string endOf(Remedy remedy) { return remedy == Remedy::none ? " It stays as it is." : ""; }

void requireOwnPlace(const Places& places, const Path& bundle, Remedy remedy) {
    if (!fileSystem::kindOf(places.entry()) || findOwn(places, bundle)) return;
    throw Refusal(Refusal::Kind::entryTaken, places.entry(), foreignEntry(places) + endOf(remedy),
                  remedy);
}

void requireNoOther(const Places& places, const ambrel::UserPlaces& user,
                    const ambrel::Environment& environment, Remedy remedy) {
    for (const auto& file : findDesktopEntries(places.fileName(), user, environment)) {
        // The user's folder may be among the others too.
        if (fileSystem::isSameItem(file, places.entry())) continue;
        throw Refusal(Refusal::Kind::entryTaken, file,
                      "A program is called " + inQuotes(places.id) +
                          " on the desktop already: " + ambrel::utf8::oneLine(file) + ".",
                      remedy);
    }
}

std::string strangeFile(const Path& file) {
    return "In the place of a file that belongs to the desktop entry is another one: " +
           ambrel::utf8::oneLine(file) + ".";
}

[[noreturn]] void refuseStranger(const Path& file, Remedy remedy) {
    throw Refusal(Refusal::Kind::entryTaken, file, strangeFile(file) + endOf(remedy), remedy);
}

/// Without an entry nothing may lie where its script and icons go.
void requireEmptyPlaces(const Places& places, Remedy remedy) {
    if (fileSystem::kindOf(places.entry())) return;
    if (fileSystem::kindOf(places.script())) refuseStranger(places.script(), remedy);
    for (const auto side : themeSides) {
        if (fileSystem::kindOf(places.icon(side))) refuseStranger(places.icon(side), remedy);
    }
}

std::string overrideOf(const InstanceConfig& config, const char* key) {
    const auto found = config.infoPlistOverrides.find(key);
    return found == config.infoPlistOverrides.end() ? "" : found->second;
}

std::string windowClassOf(const InstanceConfig& config, const std::string& id) {
    if (config.kind == ShortcutKind::web) return id; // the window is the runner's own
    for (const auto* key : {windowClassKey, ambrel::processNameKey}) {
        if (auto name = overrideOf(config, key); !name.empty()) return name;
    }
    return id;
}

std::string categoriesOfTarget(const Path& target) {
    try {
        const auto info = ambrel::readPropertyList(BundleLayout{target}.infoPlist());
        if (!info) return {};
        const auto found = info->find(adoptedCategoriesKey);
        const auto* text = found == info->end() ? nullptr : found->second.string();
        return text == nullptr ? std::string() : mainCategoriesIn(*text);
    } catch (const ambrel::LibraryError&) {
        return {}; // a menu has a place for the others too
    }
}

std::string categoriesOf(const InstanceConfig& config) {
    if (config.kind == ShortcutKind::web) return "Network;";
    std::string categories;
    if (config.kind == ShortcutKind::app) categories = categoriesOfTarget(config.targetAppPath);
    return categories.empty() ? "Utility;" : categories;
}

/// An icon that every desktop's theme has.
std::string themeIconFor(ShortcutKind kind) {
    switch (kind) {
    case ShortcutKind::web:
        return "applications-internet";
    case ShortcutKind::file:
        return "text-x-generic";
    case ShortcutKind::command:
        return "utilities-terminal";
    case ShortcutKind::app:
        break;
    }
    return "application-x-executable";
}

/// The home for the entry; empty where there is none, or none that an entry can hold: the instance
/// is shown all the same.
Path homeFor(const InstanceConfig& config, const ambrel::UserPlaces& user) {
    auto home = config.resolvedHome(user);
    const bool isPlain = home.starts_with('/') && ambrel::utf8::oneLine(home) == home;
    return isPlain ? home : Path();
}

EntryFiles filesFor(const InstanceConfig& config, const Path& bundle, const Places& places,
                    const ambrel::UserPlaces& user) {
    const BundleLayout layout{bundle};
    EntryFiles files;
    files.icons = themeIconsOf(layout.icon());
    auto program = layout.runner();
    auto types = offeredTypes(config);
    files.offersItself = !types.empty();
    // Openers are sure to pass on what they open to one plain word alone.
    if (files.offersItself) files.script = passingScript(program);
    if (!files.offersItself && !isPlainWord(program)) files.script = openerScript(program);
    if (files.script) program = places.script();
    files.entry = entryText({.name = config.displayName,
                             .program = program,
                             .icon = files.icons.empty() ? themeIconFor(config.kind) : places.id,
                             .windowClass = windowClassOf(config, places.id),
                             .categories = categoriesOf(config),
                             .types = std::move(types),
                             .bundle = bundle,
                             .home = homeFor(config, user)});
    return files;
}

/// The names of the entries in the user's folder, whosever they are, without their ending. Throws
/// FileError for a folder that is there, or may be, and cannot be listed.
std::vector<std::string> idsIn(const ambrel::UserPlaces& user) {
    constexpr std::string_view ending = ".desktop";
    std::vector<std::string> ids;
    const Path folder(ambrel::paths::deletingLastComponent(Places{"x", user.data}.entry()));
    if (fileSystem::isMissing(folder) && !fileSystem::kindOf(folder)) return ids;
    for (const auto& name : fileSystem::list(folder)) {
        if (name.ends_with(ending)) ids.push_back(name.substr(0, name.size() - ending.size()));
    }
    return ids;
}

void requirePlace(const Places& places) {
    if (!places.data.empty()) return;
    throw Refusal(Refusal::Kind::homeIsMissing, "", "There is no home folder for desktop entries.");
}

/// Openers look for programs in an index, which has to follow.
void updateTypeIndex(const Places& places) noexcept {
    ensureTypeIndex(Path(ambrel::paths::deletingLastComponent(places.entry())));
}

/// Writes the entry of `record` over `existing`, which is its own or a stray, or where none is.
Entry write(const InstanceRecord& record, const Places& places,
            const std::optional<ExistingEntry>& existing, const ambrel::UserPlaces& user) {
    // One bundle can have several paths; the entry keeps its own.
    const bool isKept = existing && existing->isFor(record.bundleURL);
    const auto bundle = isKept ? existing->bundle : bundleAt(record.bundleURL);
    const auto files = filesFor(record.config, bundle, places, user);
    if (const auto file = findStranger(places, files, existing)) {
        refuseStranger(*file, Remedy::none);
    }
    writeFiles(places, files, existing);
    const bool wasOffered = existing && existing->offersItself;
    if (wasOffered || files.offersItself) updateTypeIndex(places);
    return {places.id, places.entry(), bundle};
}

} // namespace

bool isOffered() noexcept { return true; }

std::optional<Entry> findEntry(const InstanceRecord& record, const ambrel::UserPlaces& user) {
    const auto places = placesFor(record.config.bundleId, user);
    const auto existing = findOwn(places, record.bundleURL);
    if (!existing) return std::nullopt;
    return Entry{places.id, places.entry(), existing->bundle};
}

std::vector<Entry> listEntries(const ambrel::UserPlaces& user) noexcept {
    try {
        return requireEntries(user);
    } catch (const std::exception&) {
        return {}; // what cannot be listed shows nothing either
    }
}

std::vector<Entry> requireEntries(const ambrel::UserPlaces& user) {
    std::vector<Entry> entries;
    if (user.data.empty()) return entries;
    for (const auto& id : idsIn(user)) {
        const Places places{id, user.data};
        const auto existing = readEntry(places);
        if (existing) entries.push_back({id, places.entry(), existing->bundle, existing->home});
    }
    std::ranges::sort(entries, {}, &Entry::id);
    return entries;
}

std::vector<Entry> findFormer(const InstanceRecord& record,
                              const ambrel::UserPlaces& user) noexcept {
    const auto own = ambrel::desktopId(record.config.bundleId);
    auto former = listEntries(user);
    std::erase_if(former, [&](const Entry& entry) {
        return entry.id == own || !isSameBundle(entry.bundle, record.bundleURL);
    });
    return former;
}

void requireFree(const std::string& bundleId, const Path& bundle, const ambrel::UserPlaces& user,
                 const ambrel::Environment& environment, Remedy remedy) {
    const auto places = placesFor(bundleId, user);
    // A user without a home can have instances, but no entries.
    if (places.data.empty()) return;
    requireOwnPlace(places, bundle, remedy);
    requireNoOther(places, user, environment, remedy);
    // With the bundle there, add() can tell what an earlier try has left.
    if (fileSystem::isMissing(bundle)) requireEmptyPlaces(places, remedy);
}

Entry add(const InstanceRecord& record, const ambrel::UserPlaces& user) {
    const auto places = placesFor(record.config.bundleId, user);
    requirePlace(places);
    requireOwnPlace(places, record.bundleURL, Remedy::none);
    return write(record, places, findOwn(places, record.bundleURL), user);
}

EntryCheck check(const InstanceRecord& record, const ambrel::UserPlaces& user) {
    using State = EntryCheck::State;
    const auto places = placesFor(record.config.bundleId, user);
    if (places.data.empty()) return {};
    if (!fileSystem::kindOf(places.entry())) return {State::missing, places.entry()};
    const auto existing = readEntry(places);
    if (!existing) return {State::taken, places.entry(), foreignEntry(places)};
    if (!existing->isFor(record.bundleURL)) {
        if (isStray(places, *existing)) return {State::stray, existing->bundle};
        return {State::taken, places.entry(), foreignEntry(places)};
    }
    const auto files = filesFor(record.config, existing->bundle, places, user);
    if (const auto file = findStranger(places, files, existing)) {
        return {State::taken, *file, strangeFile(*file)};
    }
    const auto outdated = findOutdated(places, files, *existing);
    return outdated ? EntryCheck{State::outdated, *outdated} : EntryCheck{};
}

Entry mend(const InstanceRecord& record, const ambrel::UserPlaces& user) {
    const auto places = placesFor(record.config.bundleId, user);
    const auto existing = readEntry(places);
    const bool takesOver =
        existing && !existing->isFor(record.bundleURL) && isStray(places, *existing);
    return takesOver ? write(record, places, existing, user) : add(record, user);
}

void remove(const Entry& entry, const ambrel::UserPlaces& user) {
    const Places places{entry.id, user.data};
    const auto existing = readEntry(places);
    if (!existing || existing->bundle != entry.bundle) return;
    removeFiles(places, *existing);
    if (existing->offersItself) updateTypeIndex(places);
}

} // namespace korvane::registration
