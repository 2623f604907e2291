#include "Ambrel/Home/HomePreparation.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/HomesElsewhere.h"
#include "Ambrel/Home/SharedUserFolders.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/GuardedFolder.h"
#include "Ambrel/Platform/UserFolderSettings.h"

#include <algorithm>
#include <array>

namespace ambrel {

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

void addVariables(FolderList& list, const StringMap& environment) {
    for (const auto& [name, value] : environment) {
        if (endsWithAny(name, folderVariables) || value.ends_with('/')) list.add(value);
    }
}

/// What programs are to find as the user's folders: the links, or nothing where the user has
/// switched a folder off.
std::map<std::string, bool> foldersIn(const ResolvedInstance& instance, const UserPlaces& user) {
    std::map<std::string, bool> there;
    UserFolders userFolders(user, instance.home);
    for (const auto shared : SharedUserFolders::names) {
        const std::string name(shared);
        there[name] = !instance.config.shareUserFolders || userFolders.find(name);
    }
    return there;
}

/// Runs one step and notes the sentence of its failure.
template <class Step> void note(std::vector<std::string>& failures, const Step& step) {
    try {
        step();
    } catch (const FileError& error) {
        failures.push_back(error.description());
    }
}

bool hasHome(const ResolvedInstance& instance) {
    return instance.config.kind != ShortcutKind::file && instance.home.starts_with('/');
}

std::vector<std::string> tryMakeDataFolders(const ResolvedInstance& instance,
                                            const UserPlaces& user) {
    std::vector<std::string> failures;
    const auto folders = HomePreparation::dataFolders(instance);
    if (folders.empty() || !HomePreparation::isPrivate(instance, user)) return failures;
    note(failures, [&] {
        const auto root = GuardedFolder::open(instance.home);
        for (const auto& folder : folders) {
            note(failures, [&] { root.folder(folder, ownerOnly); });
        }
    });
    return failures;
}

} // namespace

std::vector<Path> HomePreparation::dataFolders(const ResolvedInstance& instance) {
    if (!hasHome(instance)) return {};
    FolderList list(instance.home);
    const bool isApp = instance.config.kind == ShortcutKind::app;
    addArguments(list, isApp ? instance.args : instance.commandArgs);
    addVariables(list, instance.environment);
    return list.found;
}

bool HomePreparation::isPrivate(const ResolvedInstance& instance, const UserPlaces& user) {
    return instance.home.starts_with('/') && !folders::isOrLiesIn(user.home, instance.home);
}

void HomePreparation::make(const ResolvedInstance& instance, NewFolders& folders) {
    if (instance.home.starts_with('/')) folders.makePrivate(instance.home);
}

std::vector<std::string> HomePreparation::furnish(const ResolvedInstance& instance,
                                                  const UserPlaces& user) {
    homesElsewhere::add(instance.home, user);
    auto failures = tryMakeDataFolders(instance, user);
    if (instance.config.kind != ShortcutKind::app || !isPrivate(instance, user)) return failures;
    note(failures, [&] {
        if (const auto file = userFolderFile(foldersIn(instance, user))) {
            GuardedFolder::open(instance.home)
                .folder(file->folder, ownerOnly)
                .putFile(file->name, file->text, ownerFile);
        }
    });
    return failures;
}

void HomePreparation::ensure(const ResolvedInstance& instance, const UserPlaces& user,
                             const std::function<bool()>& mayMake) noexcept {
    try {
        if (!hasHome(instance)) return;
        if (!fileSystem::isMissing(instance.home)) {
            homesElsewhere::add(instance.home, user);
            tryMakeDataFolders(instance, user); // programs go astray without them
            return;
        }
        if (!mayMake()) return;
        NewFolders folders;
        make(instance, folders);
        folders.keep();
        furnish(instance, user);
    } catch (const std::exception&) {
        // The start goes on: the launch makes the home itself, or says why it cannot.
    }
}

} // namespace ambrel
