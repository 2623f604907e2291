#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/TreeSize.h"

#include <optional>
#include <vector>

namespace korvane {

/// What deleting an instance would take away. `bundleSize` and `dataSize` go, and are nothing with
/// Measure::no; with UserData::keep, and where the bundle is only a link to the instance, the data
/// stays.
struct DeletionPlan {
    ambrel::InstanceRecord record;
    ambrel::UserData data{};
    bool isLink = false;              ///< only the link goes; the instance stays as it is
    TreeSize bundleSize;              ///< of what stands at the bundle's path
    std::optional<ambrel::Path> home; ///< where the data lies; absent without an absolute home
    bool hasData = false;             ///< something stands there
    TreeSize dataSize;                ///< of the home; nothing where it stays
};

/// Finds out what would go; changes nothing. Throws Refusal instanceRuns for an instance of which
/// something runs, unless only a link to it would go. With UserData::remove throws it for data that
/// cannot go alone too, as requireDeletableData() does: homeIsMissing, homeIsUsers, homeIsShared,
/// homeIsLink, bundleIsLink.
DeletionPlan planDeletion(const ambrel::InstanceRecord& record, ambrel::UserData data,
                          const ambrel::UserPlaces& user, Measure measure = Measure::yes);

/// What is gone, and what is not.
struct Deleted {
    ambrel::InstanceRecord record;
    bool wasLink = false;
    std::optional<ambrel::Path> keptHome;    ///< the data that stays, where there is any
    std::optional<ambrel::Path> removedHome; ///< the data that went, where there was any
    std::vector<Notice> notices;
};

/// Deletes the instance: removes its data, takes it off the desktop, and removes the bundle, which
/// goes out of its place in one step. The bundle is last, so that after a failure, or when this
/// process is killed, the same can be asked for again. Looks again at what may have changed since
/// the plan was made, and throws changedMeanwhile, or what planDeletion() throws for it; notRemoved
/// for a bundle that cannot go; and dataRemains where the data could not be removed, or not all of
/// it. After each of these the instance is there as before; its data is so too where not even the
/// folder of the bundle can be written, and where something had changed before anything was done.
Deleted perform(const DeletionPlan& plan, const ambrel::UserPlaces& user);

} // namespace korvane
