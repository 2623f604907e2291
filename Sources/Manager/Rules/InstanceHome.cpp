#include "Manager/Rules/InstanceHome.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/HomePreparation.h"
#include "Ambrel/Home/HomesElsewhere.h"
#include "Ambrel/Platform/HomeVariables.h"
#include "Ambrel/Platform/SocketPath.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/InstanceLookup.h"

namespace korvane {

using ambrel::HomePreparation;
using ambrel::InstanceConfig;
using ambrel::Path;
using ambrel::ResolvedInstance;
using ambrel::UserPlaces;

bool isPrivateHome(const InstanceConfig& config, const UserPlaces& user) {
    return HomePreparation::isPrivate(ResolvedInstance::of(config, user), user);
}

bool hasHome(const InstanceConfig& config) { return isHeeded("instanceHome", config.kind); }

void makeHome(const InstanceConfig& config, const UserPlaces& user, ambrel::NewFolders& folders) {
    if (!hasHome(config)) return;
    HomePreparation::make(ResolvedInstance::of(config, user), folders);
}

std::vector<Notice> furnishHome(const InstanceConfig& config, const UserPlaces& user) {
    if (!hasHome(config)) return {};
    const auto instance = ResolvedInstance::of(config, user);
    std::vector<Notice> notices;
    for (const auto& failure : HomePreparation::furnish(instance, user)) {
        notices.push_back({.kind = Notice::Kind::homeNotFurnished,
                           .subject = instance.home,
                           .sentence = failure + "."});
    }
    return notices;
}

void forgetHome(const InstanceConfig& config, const UserPlaces& user) noexcept {
    ambrel::homesElsewhere::forget(config.resolvedHome(user), user);
}

void ensureHome(const InstanceConfig& config, const UserPlaces& user) noexcept {
    HomePreparation::ensure(ResolvedInstance::of(config, user), user);
}

std::optional<Notice> homeObstacle(const Path& home) {
    constexpr std::size_t longestBelow = 37; // what programs call the folders and the socket
    const std::size_t longestHome = ambrel::longestSocketPath() - longestBelow;
    if (home.size() <= longestHome) return std::nullopt;
    return Notice{.kind = Notice::Kind::homeIsLong,
                  .subject = home,
                  .sentence = "Its home has " + std::to_string(home.size()) +
                              " bytes in its path: programs that keep sockets in it may fail "
                              "beyond " +
                              std::to_string(longestHome) + ".",
                  .remedy = Remedy::chooseHome};
}

std::vector<std::string> variablesOverridingHome(const InstanceConfig& config,
                                                 const UserPlaces& user) {
    std::vector<std::string> names;
    if (config.kind != ambrel::ShortcutKind::app) return names;
    const auto instance = ResolvedInstance::of(config, user);
    for (auto& name : ambrel::homeVariableNames()) {
        const auto found = instance.environment.find(name);
        if (found == instance.environment.end()) continue;
        const auto& value = found->second;
        const bool isInside = value == instance.home || value.starts_with(instance.home + "/");
        if (!isInside) names.push_back(std::move(name));
    }
    return names;
}

std::vector<Notice> noticesOnOverriding(const InstanceConfig& config, const InstanceConfig* before,
                                        const UserPlaces& user) {
    std::vector<Notice> notices;
    for (const auto& name : variablesOverridingHome(config, user)) {
        if (before != nullptr) {
            const auto had = before->environment.find(name);
            const bool isSame =
                had != before->environment.end() && had->second == config.environment.at(name);
            if (isSame) continue;
        }
        notices.push_back({.kind = Notice::Kind::homeIsOverridden,
                           .subject = name,
                           .sentence = "Its variable " + name +
                                       " decides where its program keeps its data, instead of its "
                                       "home."});
    }
    return notices;
}

std::optional<Notice> privacyObstacle(const InstanceConfig& config, const UserPlaces& user) {
    if (!hasHome(config) || isPrivateHome(config, user)) return std::nullopt;
    const auto home = usableHome(config, user).value_or("");
    return Notice{.kind = Notice::Kind::homeIsNotPrivate,
                  .subject = home,
                  .sentence = "Its home " + ambrel::utf8::oneLine(home) +
                              " is or contains your own: nothing is prepared in it."};
}

} // namespace korvane
