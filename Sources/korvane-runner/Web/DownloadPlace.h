#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"

#include <set>
#include <string>
#include <string_view>

namespace korvane::runner {

/// Where files lie that a site hands out: in the user's own Downloads, or in the instance's where
/// it does not share the user's folders, or the user's cannot be used.
class DownloadPlace {
public:
    /// `user` is the person at the machine, whatever this process's home is by now.
    DownloadPlace(const ambrel::ResolvedInstance& instance, ambrel::UserPlaces user);

    /// The absolute path for a file that the site calls `suggested`: directly inside the folder,
    /// which is made when it is missing, under a name at which nothing lies ("name 2.ext"), not
    /// even a file that is still on its way. Empty where there is no folder.
    ambrel::Path choose(const std::string& suggested) noexcept;

    /// What was to lie there does, or never will.
    void ended(const ambrel::Path& place) { onTheWay_.erase(place); }

    /// What a file may be called that somebody else calls `suggested`: one component, not hidden,
    /// not too long, without what is no letter or sign to a reader.
    static std::string safeName(std::string_view suggested);

private:
    ambrel::Path existingFolder() const;
    bool isFree(const ambrel::Path& place) const;

    ambrel::Path home_;
    bool isShared_;
    ambrel::UserPlaces user_;
    std::set<ambrel::Path> onTheWay_;
};

} // namespace korvane::runner
