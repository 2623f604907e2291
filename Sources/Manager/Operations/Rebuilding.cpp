#include "Manager/Operations/Rebuilding.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/WrapperGenerator.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/IconOrigin.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/HiddenIcon.h"

namespace korvane {

using ambrel::BundleLayout;
using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserPlaces;
using ambrel::WrapperGenerator;
using Kind = Refusal::Kind;
namespace fileSystem = ambrel::fileSystem;

namespace {

/// The chosen icon, else what the bundle has.
IconSource iconWanted(const std::optional<Path>& chosen, const InstanceRecord& record,
                      const InstanceConfig& wanted, const Path& folder) {
    if (!chosen) return iconSourceOf(record, wanted.iconLabel, folder);
    requirePicture(*chosen);
    return {.picture = iconFileOf(*chosen, folder)};
}

Path generateIn(const Path& folder, const WrapperGenerator::Options& options) {
    try {
        return WrapperGenerator().generate(folder, options);
    } catch (const WrapperGenerator::GenError& error) {
        const bool isRunner = error.kind == WrapperGenerator::GenError::Kind::runnerMissing;
        throw Refusal(isRunner ? Kind::damagedInstance : Kind::unreadableApplication, error.subject,
                      ambrel::utf8::oneLine(error.description()));
    }
}

Path buildIn(const Path& folder, const InstanceRecord& record, const InstanceConfig& wanted,
             const std::optional<Path>& icon) {
    const auto old = bundleAt(record.bundleURL);
    const auto source = iconWanted(icon, record, wanted, folder);
    const auto built = generateIn(folder, {.config = wanted,
                                           .runnerBinary = BundleLayout{old}.runner(),
                                           .customIcon = source.picture,
                                           .hideWrapperIcon = isHidden(record)});
    if (source.isDrawn) {
        fileSystem::replace(BundleLayout{built}.icon(), fileSystem::read(*source.picture));
    }
    return built;
}

/// The old bundle is looked at once nobody else can reach it at its path, and put back where it is
/// not the one that was meant.
void exchangeUnchanged(StagingFolder& staging, const Path& built, const Path& place,
                       const InstanceRecord& record, const UserPlaces& user) {
    staging.exchange(built, place);
    const auto old = ambrel::InstanceRegistry(user).recordFor(built);
    if (old && isUnchanged(record, {record.bundleURL, old->config})) return;
    try {
        staging.exchange(built, place);
    } catch (const ambrel::FileError&) {
        staging.leave(); // it is somebody's
    }
    throw instanceChanged(place);
}

void giveName(StagingFolder& staging, const Path& built, const Path& place, const Path& wanted) {
    if (place == wanted) return;
    try {
        fileSystem::move(place, wanted);
    } catch (const ambrel::FileError&) {
        staging.exchange(built, place);
        throw;
    }
}

void requireFreePlace(const Path& place, const Path& wanted) {
    if (place == wanted || !fileSystem::kindOf(wanted)) return;
    throw Refusal(Kind::placeTaken, wanted,
                  "Something stands at " + ambrel::utf8::oneLine(wanted) +
                      " already. Choose another name.");
}

/// What fails is told by the path that the user knows.
Path buildAside(const StagingFolder& staging, const InstanceRecord& record,
                const InstanceConfig& wanted, const std::optional<Path>& icon) {
    try {
        return buildIn(staging.path(), record, wanted, icon);
    } catch (const ambrel::FileError& error) {
        throw staging.outwards(error);
    }
}

} // namespace

bool needsRebuilding(const InstanceConfig& before, const InstanceConfig& wanted) {
    return before.displayName != wanted.displayName ||
           visibleLabel(before.iconLabel) != visibleLabel(wanted.iconLabel);
}

Path placeFor(const InstanceRecord& record, const InstanceConfig& wanted) {
    auto place = bundleAt(record.bundleURL);
    if (wanted.displayName == record.config.displayName) return place;
    return BundleLayout::wrapper(ambrel::paths::deletingLastComponent(place), wanted.displayName)
        .bundle;
}

Rebuilt rebuild(const InstanceRecord& record, const InstanceConfig& wanted,
                const std::optional<Path>& icon, const UserPlaces& user) {
    const auto place = bundleAt(record.bundleURL);
    Rebuilt rebuilt{.bundle = placeFor(record, wanted), .notices = {}};
    requireFreePlace(place, rebuilt.bundle);
    StagingFolder staging(Path(ambrel::paths::deletingLastComponent(place)));
    const auto built = buildAside(staging, record, wanted, icon);
    exchangeUnchanged(staging, built, place, record, user);
    giveName(staging, built, place, rebuilt.bundle);
    staging.mayGo();
    auto remains = staging.removeOrTell("Remains of what was changed");
    if (remains) rebuilt.notices.push_back(std::move(*remains));
    return rebuilt;
}

} // namespace korvane
