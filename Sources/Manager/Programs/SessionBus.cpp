#include "Manager/Programs/SessionBus.h"

#include "Ambrel/Base/BusName.h"
#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Instance/OwnNames.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/ProgramTraits.h"
#include "Manager/Rules/FieldEffect.h"

#include <algorithm>

namespace korvane {

using ambrel::isWellKnownBusName;
using ambrel::StringMap;
using ambrel::valueOf;
using Kind = Refusal::Kind;

namespace {

constexpr std::string_view callWord = "call ";
constexpr std::string_view ownWord = "own ";

std::vector<std::string> partsOf(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) parts.emplace_back(ambrel::takeUntil(list, ';'));
    return parts;
}

bool isNameRule(std::string_view part) {
    for (const auto word : {callWord, ownWord}) {
        if (part.starts_with(word)) return isWellKnownBusName(part.substr(word.size()));
    }
    return false;
}

void requireChoice(const StringMap& overrides, const char* key) {
    const auto found = overrides.find(key);
    const bool isChoice =
        found == overrides.end() || found->second == "true" || found->second == "false";
    if (isChoice) return;
    throw Refusal(Kind::badBusSetting, found->second,
                  std::string(key) + " wants true or false, not " + inQuotes(found->second) + ".");
}

/// Of an instance without names of its own.
std::string whyShared(const BusStanding& standing) {
    return standing.sharing == BusSharing::byVariable
               ? std::string("its environment sets ") + ambrel::busAddressVariable
               : "it shares the names on the session bus";
}

/// Absent where secrets are not to be hidden, or are.
std::optional<std::string> whyNotHidden(const BusStanding& standing) {
    if (!standing.hidesSecrets || standing.hasOwnNames()) return std::nullopt;
    return "hideSecrets means nothing to this instance: " + whyShared(standing) +
           ", so that its programs meet what keeps your secrets.";
}

} // namespace

StringMap overridesFor(const BusUse& use) {
    StringMap overrides;
    if (use.isShared) overrides.emplace(ambrel::sharedBusKey, "true");
    if (use.hidesSecrets) overrides.emplace(ambrel::hidesSecretsKey, "true");
    std::string names;
    const auto add = [&](std::string_view word, const std::vector<std::string>& added) {
        for (const auto& name : added) {
            names.append(names.empty() ? "" : ";").append(word).append(name);
        }
    };
    add(callWord, use.call);
    add(ownWord, use.own);
    if (!names.empty()) overrides.emplace(ambrel::busNamesKey, names);
    return overrides;
}

bool isUsable(const BusUse& use) {
    return std::ranges::all_of(use.call, isWellKnownBusName) &&
           std::ranges::all_of(use.own, isWellKnownBusName);
}

std::optional<bool> busChoice(const StringMap& overrides, const char* key) {
    const auto found = overrides.find(key);
    if (found == overrides.end()) return std::nullopt;
    return found->second == "true";
}

void setBusChoice(StringMap& overrides, const char* key, std::optional<bool> choice) {
    overrides.erase(key);
    if (choice) overrides.emplace(key, *choice ? "true" : "false");
}

void requireBusSettings(const StringMap& overrides) {
    requireChoice(overrides, ambrel::sharedBusKey);
    requireChoice(overrides, ambrel::hidesSecretsKey);
    for (const auto& part : partsOf(valueOf(overrides, ambrel::busNamesKey))) {
        if (isNameRule(part)) continue;
        throw Refusal(Kind::badBusSetting, part,
                      std::string(ambrel::busNamesKey) +
                          " wants \"call NAME\" or \"own NAME\" with a name on the session bus, "
                          "not " +
                          inQuotes(part) + ".");
    }
}

void requireBusHeeded(const std::string& name, ambrel::ShortcutKind kind) {
    requireHeeded(name, "targetAppPath", kind);
    if (installedProgram::meetOnBus()) return;
    throw Refusal(Kind::hasNoEffect, name,
                  name + " means nothing on this system, where programs do not meet by name on a "
                         "session bus.");
}

BusStanding busStanding(const StringMap& overrides, const StringMap& environment,
                        const std::optional<BusUse>& profile) {
    BusStanding standing;
    if (environment.contains(ambrel::busAddressVariable)) {
        standing.sharing = BusSharing::byVariable;
    } else if (busChoice(overrides, ambrel::sharedBusKey).value_or(false)) {
        const bool isSaid = profile && profile->isShared;
        standing.sharing = isSaid ? BusSharing::byProfile : BusSharing::asked;
    }
    standing.hidesSecrets = busChoice(overrides, ambrel::hidesSecretsKey).value_or(false);
    standing.sharedNames = partsOf(valueOf(overrides, ambrel::busNamesKey));
    return standing;
}

std::vector<Notice> noticesOnUnheeded(const BusStanding& standing) {
    std::vector<Notice> notices;
    if (auto sentence = whyNotHidden(standing)) {
        notices.push_back({.kind = Notice::Kind::busSettingUnheeded,
                           .subject = "hideSecrets",
                           .sentence = std::move(*sentence)});
    }
    if (!standing.hasOwnNames() && !standing.sharedNames.empty()) {
        notices.push_back({.kind = Notice::Kind::busSettingUnheeded,
                           .severity = Notice::Severity::information,
                           .subject = ambrel::busNamesKey,
                           .sentence = std::string(ambrel::busNamesKey) +
                                       " means nothing to this instance: " + whyShared(standing) +
                                       "."});
    }
    return notices;
}

void requireSecretsHideable(const BusStanding& standing) {
    if (const auto sentence = whyNotHidden(standing)) {
        throw Refusal(Kind::hasNoEffect, "hideSecrets", *sentence);
    }
}

} // namespace korvane
