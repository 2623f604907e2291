#include "Manager/Rules/InstanceLookup.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>
#include <map>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;
using ambrel::UserPlaces;
namespace folders = ambrel::folders;

namespace {

std::vector<InstanceRecord> instancesCalled(const std::string& name,
                                            const ambrel::UserPlaces& user) {
    auto records = InstanceRegistry(user).list();
    std::erase_if(records,
                  [&](const InstanceRecord& record) { return record.config.displayName != name; });
    return records;
}

[[noreturn]] void refuseUnknown(const std::string& name, const ambrel::UserPlaces& user) {
    std::vector<std::string> names;
    for (const auto& record : InstanceRegistry(user).list())
        names.push_back(record.config.displayName);
    const auto meant = nearest(name, names);
    throw Refusal(Refusal::Kind::unknownInstance, name,
                  "No instance is called " + inQuotes(name) + ".", Remedy::listInstances,
                  meant.empty() ? std::vector<std::string>() : std::vector{meant});
}

[[noreturn]] void refuseSeveral(const std::string& name, const std::vector<InstanceRecord>& found) {
    std::vector<std::string> places;
    for (const auto& record : found) places.push_back(record.bundleURL);
    throw Refusal(Refusal::Kind::severalInstances, name,
                  "Several instances are called " + inQuotes(name) + ".", Remedy::nameByPath,
                  std::move(places));
}

/// Says what is wrong with the configuration at `bundle`, if one is there.
void refuseUnreadable(const Path& bundle) {
    const auto file = ambrel::BundleLayout{bundle}.instanceJson();
    if (!ambrel::fileSystem::exists(file)) return;
    try {
        InstanceConfig::decode(ambrel::fileSystem::read(file));
    } catch (const ambrel::DecodingError& error) {
        throw Refusal(Refusal::Kind::damagedInstance, bundle,
                      "The instance at " + ambrel::utf8::oneLine(bundle) +
                          " is damaged: its configuration cannot be read. " + error.description());
    }
}

} // namespace

InstanceRecord requireInstance(const std::string& name, const ambrel::UserPlaces& user) {
    const bool isPath = name.find('/') != std::string::npos;
    if (!isPath) {
        const auto found = instancesCalled(name, user);
        if (found.size() > 1) refuseSeveral(name, found);
        if (found.size() == 1) return found.front();
    }
    if (name.empty()) refuseUnknown(name, user);
    const auto path = usablePath(name, user);
    if (auto record = InstanceRegistry(user).recordFor(path)) return *record;
    if (!isPath) refuseUnknown(name, user);
    refuseUnreadable(path);
    throw Refusal(Refusal::Kind::unknownInstance, path,
                  "There is no instance at " + ambrel::utf8::oneLine(path) + ".",
                  Remedy::listInstances);
}

std::vector<InstanceRecord> instancesWith(const Path& folder, const ambrel::UserPlaces& user) {
    auto folders = InstanceRegistry::defaultSearchDirs(user);
    const bool known = std::any_of(folders.begin(), folders.end(), [&](const Path& candidate) {
        return folders::areSame(candidate, folder);
    });
    if (!known) folders.push_back(folder);
    return InstanceRegistry(user, folders).list();
}

std::string nameFor(const InstanceRecord& record, const ambrel::UserPlaces& user) {
    const auto found = instancesCalled(record.config.displayName, user);
    const bool finds = found.size() == 1 && isSameBundle(found.front().bundleURL, record.bundleURL);
    return finds ? record.config.displayName : record.bundleURL;
}

std::optional<Path> usableHome(const InstanceConfig& config, const ambrel::UserPlaces& user) {
    auto home = config.resolvedHome(user);
    if (!home.starts_with('/')) return std::nullopt;
    return home;
}

std::string nameAmong(const std::vector<InstanceRecord>& instances, const InstanceRecord& record,
                      const UserPlaces& user) {
    const auto folder = InstanceRegistry::defaultSearchDirs(user).front();
    const auto isListed = [&](const Path& bundle) {
        return ambrel::paths::deletingLastComponent(bundle) == folder;
    };
    const bool isAmbiguous = std::ranges::any_of(instances, [&](const InstanceRecord& other) {
        return other.config.displayName == record.config.displayName && isListed(other.bundleURL) &&
               !isSameBundle(other.bundleURL, record.bundleURL);
    });
    const Path own{ambrel::paths::deletingLastComponent(record.bundleURL)};
    if (isAmbiguous || !folders::areSame(own, folder)) return record.bundleURL;
    return record.config.displayName;
}

namespace {

/// Compares many homes with one, each with as few looks at the file system as that takes: most
/// homes lie side by side, so that the folder that holds them is looked at once.
class HomeComparison {
public:
    explicit HomeComparison(Path home)
        : home_(std::move(home)), real_(folders::canonical(home_)),
          isThere_(ambrel::fileSystem::exists(home_)) {}

    bool isSame(const Path& other) {
        if (other == home_) return true;
        if (isThere_ && ambrel::fileSystem::isSameItem(home_, other)) return true;
        return realPlace(other) == real_;
    }

private:
    Path realPlace(const Path& path) {
        const Path place{ambrel::paths::withoutTrailingSlashes(path)};
        const auto name = ambrel::paths::lastComponent(place);
        const bool isPlain = name != "." && name != "..";
        if (!isPlain || isLink(place)) return folders::canonical(place);
        const Path above{ambrel::paths::deletingLastComponent(place)};
        const auto known = parents_.find(above);
        if (known != parents_.end()) return ambrel::paths::join(known->second, name);
        return ambrel::paths::join(parents_.emplace(above, folders::canonical(above)).first->second,
                                   name);
    }

    Path home_;
    Path real_;
    bool isThere_;
    std::map<Path, Path> parents_;
};

} // namespace

void requireOwnHome(const InstanceConfig& config, const Path& self,
                    const std::vector<InstanceRecord>& instances, const ambrel::UserPlaces& user,
                    Remedy remedy) {
    const auto home = usableHome(config, user);
    if (!home) return;
    HomeComparison comparison(*home);
    for (const auto& other : instances) {
        const auto theirs = usableHome(other.config, user);
        if (!theirs || !comparison.isSame(*theirs)) continue;
        if (isSameBundle(other.bundleURL, self)) continue;
        throw Refusal(Refusal::Kind::homeTaken, *home,
                      "The home " + ambrel::utf8::oneLine(*home) + " belongs to the instance " +
                          inQuotes(other.config.displayName) + " (" +
                          ambrel::utf8::oneLine(other.bundleURL) + ").",
                      remedy);
    }
}

void requireOwnBundleId(const InstanceConfig& config, const Path& self,
                        const std::vector<InstanceRecord>& instances) {
    const auto own = ambrel::text::lowercased(config.bundleId);
    for (const auto& other : instances) {
        if (ambrel::text::lowercased(other.config.bundleId) != own) continue;
        if (isSameBundle(other.bundleURL, self)) continue;
        throw Refusal(Refusal::Kind::identifierTaken, config.bundleId,
                      "The bundle identifier " + inQuotes(config.bundleId) +
                          " belongs to the instance " + inQuotes(other.config.displayName) + " (" +
                          ambrel::utf8::oneLine(other.bundleURL) + ").",
                      Remedy::chooseIdentifier);
    }
}

} // namespace korvane
