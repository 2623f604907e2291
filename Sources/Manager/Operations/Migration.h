#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/TreeSize.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// An instance's own Downloads, Documents or Desktop, whose contents go to the user's.
struct PrivateFolder {
    std::string name;         ///< one of the three names
    ambrel::Path place;       ///< in the instance's home
    ambrel::Path destination; ///< the user's, whatever it is called
    TreeSize size;            ///< of the folder with all that is in it; nothing with Measure::no

    bool operator==(const PrivateFolder&) const = default;
};

/// What migrating an instance would move.
struct MigrationPlan {
    ambrel::InstanceRecord record;
    ambrel::Path home;
    std::vector<PrivateFolder> folders; ///< in the order of SharedUserFolders::names; may be empty
};

/// Finds out what would be moved; changes nothing, but that the library may make its list of homes.
/// Throws Refusal homeIsMissing for an instance
/// without a home, homeIsUsers for one in the user's own, foldersNotShared for one that is to keep
/// its folders and instanceRuns for one that runs; FileError for a home that cannot be looked into.
MigrationPlan planMigration(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
                            Measure measure = Measure::yes);

/// What was moved out of one folder.
struct MovedFolder {
    std::string name;
    ambrel::Path destination;
    std::size_t items = 0; ///< those directly in the folder

    bool operator==(const MovedFolder&) const = default;
};

struct Migrated {
    ambrel::InstanceRecord record;
    std::vector<MovedFolder> folders; ///< for each folder that existed, by name
    /// notAllMoved where something could not be moved, and stays in the instance's home.
    std::optional<Refusal> failure;
};

/// Moves what private copies of the shared folders hold into the user's own, under new names where
/// a name is taken, and links them. Looks again at what may have changed since the plan was made,
/// and throws changedMeanwhile for the instance and for a destination, or what planMigration()
/// throws; nothing is moved then.
Migrated perform(const MigrationPlan& plan, const ambrel::UserPlaces& user);

} // namespace korvane
