#include "Manager/Rules/DataSafety.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/SharedUserFolders.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Platform/SessionLinks.h"
#include "Ambrel/Platform/UserFolderSettings.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/InstanceLookup.h"

#include <array>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::Path;
namespace folders = ambrel::folders;

namespace {

/// Beside those that instances share.
constexpr std::array<std::string_view, 2> ownFolders{"Library", "Applications"};

/// Everything of the user's that instances share or that this system keeps.
std::vector<Path> ownPlaces(const ambrel::UserPlaces& user) {
    const auto& [home, config, data] = user;
    std::vector<Path> places{home,
                             config,
                             data,
                             ambrel::paths::join(config, "korvane"),
                             ambrel::paths::join(data, "korvane"),
                             ambrel::paths::join(data, "applications")};
    for (const auto name : ambrel::SharedUserFolders::names) {
        places.push_back(ambrel::paths::join(home, name));
    }
    for (const auto name : ownFolders) places.push_back(ambrel::paths::join(home, name));
    for (auto& folder : ambrel::UserFolders::allSet(user)) places.push_back(std::move(folder));
    for (const auto& links : {ambrel::sessionLinks(user), ambrel::trashLinks(user)}) {
        for (const auto& link : links) places.push_back(link.target);
    }
    return places;
}

void requireApartFromUser(const Path& home, const ambrel::UserPlaces& user) {
    for (const auto& place : ownPlaces(user)) {
        if (!folders::isOrLiesIn(place, home)) continue;
        throw Refusal(Refusal::Kind::homeIsUsers, home,
                      "The data is not deleted: " + ambrel::utf8::oneLine(home) +
                          " is or contains your own folder " + ambrel::utf8::oneLine(place) + ".");
    }
}

void requireApartFrom(const InstanceRecord& other, const Path& home,
                      const ambrel::UserPlaces& user) {
    const auto theirs = usableHome(other.config, user);
    if (!theirs) return;
    // One that has the user's own home has nothing there that is its own.
    if (folders::isOrLiesIn(user.home, *theirs)) return;
    if (!folders::isOrLiesIn(*theirs, home) && !folders::isOrLiesIn(home, *theirs)) return;
    throw Refusal(Refusal::Kind::homeIsShared, home,
                  "The data is not deleted: " + ambrel::utf8::oneLine(home) +
                      " shares files with the home of the instance " +
                      inQuotes(other.config.displayName) + ", " + ambrel::utf8::oneLine(*theirs) +
                      ".");
}

/// The folders that instances share, where the user has them.
std::vector<Path> sharedFolders(const ambrel::UserPlaces& user) {
    auto places = ambrel::UserFolders::allSet(user);
    const auto settings = ambrel::userFolderSettings(user);
    for (const auto name : ambrel::SharedUserFolders::names) {
        if (settings.contains(name)) continue;
        places.push_back(ambrel::paths::join(user.home, name));
    }
    return places;
}

} // namespace

void requireNoUserFolder(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user,
                         Remedy remedy) {
    const auto home = usableHome(config, user);
    // The whole of the user's home is a choice of its own, which is told of.
    if (!home || folders::isOrLiesIn(user.home, *home)) return;
    for (const auto& place : sharedFolders(user)) {
        if (!folders::isOrLiesIn(place, *home)) continue;
        throw Refusal(Refusal::Kind::homeIsUsers, *home,
                      "The home " + ambrel::utf8::oneLine(*home) +
                          " is or contains your own folder " + ambrel::utf8::oneLine(place) +
                          ", in which the instance would scatter its files.",
                      remedy);
    }
}

void requireDeletableData(const InstanceRecord& record,
                          const std::vector<InstanceRecord>& instances,
                          const ambrel::UserPlaces& user) {
    if (record.config.instanceHome.empty()) return;
    const auto home = usableHome(record.config, user);
    if (!home) {
        throw Refusal(Refusal::Kind::homeIsMissing, record.config.instanceHome,
                      "The data is not deleted: its home " + inQuotes(record.config.instanceHome) +
                          " is not an absolute path.");
    }
    if (isLink(record.bundleURL)) {
        throw Refusal(Refusal::Kind::bundleIsLink, record.bundleURL,
                      "The data is not deleted: " + ambrel::utf8::oneLine(record.bundleURL) +
                          " is only a link to the instance.");
    }
    requireApartFromUser(*home, user);
    for (const auto& other : instances) {
        if (!isSameBundle(other.bundleURL, record.bundleURL)) requireApartFrom(other, *home, user);
    }
    if (isLink(*home)) {
        throw Refusal(Refusal::Kind::homeIsLink, *home,
                      "The data is not deleted: its home " + ambrel::utf8::oneLine(*home) +
                          " is a link to another folder.");
    }
}

} // namespace korvane
