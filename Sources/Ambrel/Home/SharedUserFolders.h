#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace ambrel {

/// Links the user's own folders into an instance's home, and moves what lies in private copies of
/// them there. `home` is absolute; nothing is done for an empty one.
struct SharedUserFolders {
    SharedUserFolders() = delete;

    /// The user's folders that instances share, in the order in which they are handled.
    static constexpr std::array<std::string_view, 3> names{"Downloads", "Documents", "Desktop"};

    using Obstacle = std::function<void(const std::string& sentence)>;

    /// Links each shared folder of `home` to the user's own by the rule of linkIfSafe. Which one
    /// that is, and whether it is shared at all, is told by UserFolders; the links keep their
    /// `names`.
    static void ensure(const Path& home, const UserPlaces& user) noexcept;

    /// Makes `link` a symbolic link to `target`, unless `target` does not exist, `link` already is
    /// a link (wherever it points) or a folder with entries, or both are the same item. An empty
    /// folder or a plain file at `link` is replaced. Failures are swallowed.
    static void linkIfSafe(const Path& link, const Path& target) noexcept;

    /// Whether any shared folder of `home` exists as something other than a link. A folder that
    /// UserFolders does not share does not count.
    static bool needsMigration(const Path& home, const UserPlaces& user) noexcept;

    /// Moves what private copies of the shared folders hold into the user's own folders, under new
    /// names where a name is taken, and links them. Returns the number of moved items for each
    /// folder that existed as a real one. What cannot be moved stays where it is, and `obstacle` is
    /// told why, in a sentence that names it.
    static std::map<std::string, int> migrate(const Path& home, const UserPlaces& user,
                                              const Obstacle& obstacle = {});
    /// The same with `into` in place of the user's home.
    static std::map<std::string, int> migrate(const Path& home, const Path& into);
};

} // namespace ambrel
