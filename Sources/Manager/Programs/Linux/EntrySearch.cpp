#include "Manager/Programs/Linux/EntrySearch.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Programs/Linux/ProgramFolders.h"

#include <set>

namespace korvane {

using ambrel::Environment;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

/// An id may name a file in a sub-folder with "-" in place of "/".
void addEntriesIn(const Path& folder, const std::string& id, std::vector<Path>& found) {
    const auto direct = paths::join(folder, id);
    if (fileSystem::exists(direct) && !fileSystem::isFolder(direct)) found.push_back(direct);
    for (auto dash = id.find('-'); dash != std::string::npos; dash = id.find('-', dash + 1)) {
        const auto below = paths::join(folder, id.substr(0, dash));
        if (dash == 0 || !fileSystem::isFolder(below)) continue;
        addEntriesIn(below, id.substr(dash + 1), found);
    }
}

/// Walks the folders for entries. Folders that link back to one above them end the walk.
class EntryWalk {
public:
    void add(const Path& folder, const std::string& prefix = "", std::size_t depth = 0) {
        constexpr std::size_t deepest = 8;
        constexpr std::string_view ending = ".desktop";
        for (const auto& name : sortedNamesIn(folder)) {
            const auto file = paths::join(folder, name);
            if (fileSystem::isFolder(file)) {
                if (depth < deepest) add(file, prefix + name + "-", depth + 1);
            } else if (name.ends_with(ending)) {
                auto id = prefix + name.substr(0, name.size() - ending.size());
                if (seen_.insert(id).second) found.push_back({std::move(id), file});
            }
        }
    }
    std::vector<IdentifiedEntry> found;

private:
    std::set<std::string> seen_;
};

} // namespace

std::vector<IdentifiedEntry> identifiedEntries(const ambrel::UserPlaces& user,
                                               const Environment& environment) {
    EntryWalk walk;
    for (const auto& root : programDataFolders(user, environment)) {
        walk.add(paths::join(root, "applications"));
    }
    return std::move(walk.found);
}

std::vector<Path> findDesktopEntries(const std::string& id, const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    std::vector<Path> found;
    if (id.empty() || id.find('/') != std::string::npos) return found;
    const auto file = id.ends_with(".desktop") ? id : id + ".desktop";
    for (const auto& folder : programDataFolders(user, environment)) {
        addEntriesIn(paths::join(folder, "applications"), file, found);
    }
    return found;
}

std::optional<Path> findDesktopEntry(const std::string& id, const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    // An id may end like a file name itself, as org.telegram.desktop does.
    auto found = findDesktopEntries(id + ".desktop", user, environment);
    if (found.empty()) found = findDesktopEntries(id, user, environment);
    return found.empty() ? std::nullopt : std::optional(std::move(found.front()));
}

std::vector<Path> listDesktopEntries(const ambrel::UserPlaces& user,
                                     const Environment& environment) {
    std::vector<Path> files;
    std::set<std::string> seen;
    for (const auto& root : programDataFolders(user, environment)) {
        const auto folder = paths::join(root, "applications");
        for (const auto& name : sortedNamesIn(folder)) {
            if (!name.ends_with(".desktop") || !seen.insert(name).second) continue;
            files.push_back(paths::join(folder, name));
        }
    }
    return files;
}

} // namespace korvane
