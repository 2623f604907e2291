#include "korvane/InstanceHome.h"

#include "korvane/FolderRelation.h"
#include "korvane/Instances.h"

#include <algorithm>
#include <array>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::Path;

namespace {

/// The options of the known engines that name a data folder: as the rest of the word, or as the
/// word that follows.
constexpr std::string_view joinedOption = "--user-data-dir=";
constexpr std::array<std::string_view, 3> separateOptions{"-profile", "--profile", "-data"};

bool namesFolderNext(const std::string& argument) {
    return std::find(separateOptions.begin(), separateOptions.end(), argument) !=
           separateOptions.end();
}

} // namespace

std::vector<Path> dataFolders(const InstanceConfig& config) {
    const auto home = usableHome(config);
    if (!home || config.kind != ambrel::ShortcutKind::app) return {};
    std::vector<Path> found;
    bool isNext = false;
    for (const auto& argument : config.resolvedArgs()) {
        if (isNext) found.push_back(argument);
        if (argument.starts_with(joinedOption))
            found.push_back(argument.substr(joinedOption.size()));
        isNext = namesFolderNext(argument);
    }
    // A folder elsewhere is the user's own affair.
    std::erase_if(found, [&](const Path& folder) {
        return !folder.starts_with('/') || !folders::isOrLiesIn(folder, *home);
    });
    return found;
}

void prepareHome(const InstanceConfig& config, NewFolders& folders) {
    const auto home = usableHome(config);
    if (!home) return;
    folders.makePrivate(*home);
    for (const auto& folder : dataFolders(config)) folders.makePrivate(folder);
}

} // namespace korvane
