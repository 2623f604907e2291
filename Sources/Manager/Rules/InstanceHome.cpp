#include "Manager/Rules/InstanceHome.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/GuardedFolder.h"
#include "Ambrel/Platform/SocketPath.h"
#include "Ambrel/Platform/UserFolderSettings.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>
#include <array>

namespace korvane {

using ambrel::GuardedFolder;
using ambrel::InstanceConfig;
using ambrel::Path;
namespace folders = ambrel::folders;
namespace paths = ambrel::paths;

namespace {

constexpr unsigned ownerOnly = 0700;
constexpr unsigned ownerFile = 0600;

/// Options of the known engines whose value is the word that follows.
constexpr std::array<std::string_view, 3> separateOptions{"-profile", "--profile", "-data"};
/// How the names of options and variables end that name a folder.
constexpr std::array<std::string_view, 4> folderOptions{"dir", "directory", "folder", "prefix"};
constexpr std::array<std::string_view, 7> folderVariables{"DIR",    "HOME", "TMP",   "TEMP",
                                                          "PREFIX", "ROOT", "FOLDER"};

template <class Ends> bool endsWithAny(std::string_view name, const Ends& ends) {
    return std::ranges::any_of(ends, [&](std::string_view end) { return name.ends_with(end); });
}

/// The folders that texts name, collected as paths relative to the home.
class FolderList {
public:
    explicit FolderList(const Path& home) : home_(paths::withoutTrailingSlashes(home)) {}

    /// What lies elsewhere is the user's own affair, and so is what leads back out.
    void add(std::string_view value) {
        if (!value.starts_with(home_ + "/")) return;
        Path relative;
        for (auto rest = value.substr(home_.size()); !rest.empty();) {
            rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
            const auto name = rest.substr(0, rest.find('/'));
            rest.remove_prefix(name.size());
            if (name == "..") return;
            if (name.empty() || name == ".") continue;
            relative = relative.empty() ? Path(name) : paths::join(relative, name);
        }
        if (!relative.empty()) found.push_back(relative);
    }

    std::vector<Path> found;

private:
    Path home_;
};

void addArguments(FolderList& list, const std::vector<std::string>& arguments) {
    bool isNext = false;
    for (const std::string_view argument : arguments) {
        const auto equals = argument.find('=');
        const bool isOption = argument.starts_with('-') && equals != std::string_view::npos;
        const auto value = isOption ? argument.substr(equals + 1) : argument;
        const auto name = argument.substr(0, isOption ? equals : 0);
        if (isNext || endsWithAny(name, folderOptions) || name == "--profile" ||
            value.ends_with('/')) {
            list.add(value);
        }
        isNext = std::ranges::find(separateOptions, argument) != separateOptions.end() ||
                 (argument.starts_with("--") && !isOption && endsWithAny(argument, folderOptions));
    }
}

void addVariables(FolderList& list, const ambrel::StringMap& environment) {
    for (const auto& [name, value] : environment) {
        if (endsWithAny(name, folderVariables) || value.ends_with('/')) list.add(value);
    }
}

/// What programs are to find as the user's folders: the links, or nothing where the user has
/// switched a folder off.
std::map<std::string, bool> foldersIn(const InstanceConfig& config, const Path& home,
                                      const ambrel::UserPlaces& user) {
    std::map<std::string, bool> there;
    ambrel::UserFolders userFolders(user, home);
    for (const auto shared : ambrel::InstanceLauncher::sharedUserFolders) {
        const std::string name(shared);
        there[name] = !config.shareUserFolders || userFolders.find(name);
    }
    return there;
}

/// Runs one step and notes the sentence of its failure.
template <class Step> void note(std::vector<std::string>& failures, const Step& step) {
    try {
        step();
    } catch (const ambrel::FileError& error) {
        failures.push_back(error.description());
    }
}

} // namespace

std::vector<Path> dataFolders(const InstanceConfig& config, const ambrel::UserPlaces& user) {
    const auto home = usableHome(config, user);
    using Kind = ambrel::ShortcutKind;
    if (!home || (config.kind != Kind::app && config.kind != Kind::command)) return {};
    FolderList list(*home);
    const bool isApp = config.kind == Kind::app;
    addArguments(list, isApp ? config.resolvedArgs(user) : config.resolvedCommandArgs(user));
    addVariables(list, config.resolvedEnvironment(user));
    return list.found;
}

bool isPrivateHome(const InstanceConfig& config, const ambrel::UserPlaces& user) {
    const auto home = usableHome(config, user);
    return home && !folders::isOrLiesIn(user.home, *home);
}

void makeHome(const InstanceConfig& config, const ambrel::UserPlaces& user, NewFolders& folders) {
    if (const auto home = usableHome(config, user)) folders.makePrivate(*home);
}

namespace {

std::vector<std::string> tryMakeDataFolders(const InstanceConfig& config,
                                            const ambrel::UserPlaces& user) {
    std::vector<std::string> failures;
    const auto folders = dataFolders(config, user);
    if (folders.empty() || !isPrivateHome(config, user)) return failures;
    note(failures, [&] {
        const auto root = GuardedFolder::open(*usableHome(config, user));
        for (const auto& folder : folders) {
            note(failures, [&] { root.folder(folder, ownerOnly); });
        }
    });
    return failures;
}

} // namespace

std::vector<std::string> furnishHome(const InstanceConfig& config, const ambrel::UserPlaces& user) {
    auto failures = tryMakeDataFolders(config, user);
    if (config.kind != ambrel::ShortcutKind::app || !isPrivateHome(config, user)) return failures;
    const auto home = *usableHome(config, user);
    note(failures, [&] {
        if (const auto file = ambrel::userFolderFile(foldersIn(config, home, user))) {
            GuardedFolder::open(home)
                .folder(file->folder, ownerOnly)
                .putFile(file->name, file->text, ownerFile);
        }
    });
    return failures;
}

void ensureHome(const InstanceConfig& config, const ambrel::UserPlaces& user) noexcept {
    try {
        const auto home = usableHome(config, user);
        if (!home || !ambrel::fileSystem::isMissing(*home)) {
            tryMakeDataFolders(config, user); // programs go astray without them
            return;
        }
        NewFolders folders;
        makeHome(config, user, folders);
        folders.keep();
        furnishHome(config, user);
    } catch (const std::exception&) {
        // The start goes on: the library makes the home itself, or says why it cannot.
    }
}

std::optional<std::string> homeObstacle(const Path& home) {
    constexpr std::size_t longestBelow = 37; // what programs call the folders and the socket
    const std::size_t longestHome = ambrel::longestSocketPath() - longestBelow;
    if (home.size() <= longestHome) return std::nullopt;
    return "Its home has " + std::to_string(home.size()) +
           " bytes in its path: programs that keep sockets in it may fail beyond " +
           std::to_string(longestHome) + ". Choose a shorter one with --home.";
}

} // namespace korvane
