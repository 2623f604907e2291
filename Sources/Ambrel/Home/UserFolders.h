#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/UserFolderSettings.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ambrel {

/// Where the user's own folders lie that an instance shares. Reads the user's settings once, when
/// made. How many other instances there are makes no difference (see HomesElsewhere.h).
class UserFolders {
public:
    /// For the instance whose home is `instanceHome` (absolute).
    UserFolders(UserPlaces user, Path instanceHome);

    /// The user's folder for the shared name `name`, existing or not: the one that the user has
    /// set, else the one of that name in the user's home. Absent when a setting names no usable
    /// place, or one that is or contains, by its text or by where its links lead, the user's home,
    /// or that is, contains or lies in the home of an instance: such a folder is not shared. A
    /// setting that is the folder of that name in the user's home says no more than none at all:
    /// that one is always shared, unless a link stands there.
    std::optional<Path> find(std::string_view name);

    /// Every place that the user has set for one of these folders, whether it would be shared or
    /// not.
    static std::vector<Path> allSet(const UserPlaces& user);

private:
    bool isShareable(std::string_view name, const Path& place);
    /// Whether the place is the one that it would be without a setting. That needs no look at
    /// other instances: a home of one is never there but by the user's own choice.
    bool isUsual(std::string_view name, const Path& place) const;
    /// Where homes of instances are, by name and by where links lead.
    const std::vector<Path>& homes();

    UserPlaces user_;
    Path instanceHome_;
    UserFolderSettings settings_;
    std::optional<std::vector<Path>> homes_;
};

} // namespace ambrel
