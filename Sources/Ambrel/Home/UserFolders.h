#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/UserFolderSettings.h"

#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace ambrel {

/// Where the user's own folders lie that an instance shares. Reads the user's settings once, when
/// made, and the other instances at most once, when a folder is asked for that is set.
class UserFolders {
public:
    /// For the instance whose home is `instanceHome` (absolute).
    UserFolders(UserPlaces user, Path instanceHome);

    /// The user's folder for the shared name `name`, existing or not: the one that the user has
    /// set, else the one of that name in the user's home. Absent when a setting names no usable
    /// place, or one that is or contains, by its text or by where its links lead, the user's home
    /// or the home of an instance: such a folder is not shared.
    std::optional<Path> find(std::string_view name);

    /// Every place that the user has set for one of these folders, whether it would be shared or
    /// not.
    static std::vector<Path> allSet(const UserPlaces& user);

private:
    /// Homes of the known instances, by their paths and by where links lead from there. What
    /// contains one is or contains a parent, and those are few: most homes lie side by side.
    struct OtherHomes {
        std::set<Path> homes;
        std::set<Path> parents;
    };

    bool isShareable(const Path& place);
    const OtherHomes& otherHomes();

    UserPlaces user_;
    Path instanceHome_;
    UserFolderSettings settings_;
    std::optional<OtherHomes> otherHomes_;
};

} // namespace ambrel
