#include "korvane/Output/InstanceFacts.h"

#include "Ambrel/Instance/DesktopId.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Programs/ProgramTraits.h"
#include "Manager/Programs/StartPlan.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/ConfigText.h"

namespace korvane {

namespace {

const char* spoken(BusSharing sharing) {
    switch (sharing) {
    case BusSharing::asked:
        return "shared (asked for)";
    case BusSharing::byProfile:
        return "shared (its profile says so)";
    case BusSharing::byVariable:
        return "shared (its environment sets DBUS_SESSION_BUS_ADDRESS)";
    case BusSharing::none:
        break;
    }
    return "names of its own";
}

std::string joined(const std::vector<std::string>& names) {
    std::string list;
    for (const auto& name : names) list.append(list.empty() ? "" : ", ").append(name);
    return list;
}

} // namespace

std::vector<InstanceFact> factsOf(const ambrel::InstanceRecord& record,
                                  const ambrel::UserPlaces& user) {
    const auto& config = record.config;
    std::vector<InstanceFact> facts{{"name", config.displayName},
                                    {"bundle", record.bundleURL},
                                    {"identifier", config.bundleId},
                                    {"kind", std::string(rawValue(config.kind))},
                                    {"opens", configText::subject(config)}};
    if (const auto home = usableHome(config, user)) facts.push_back({"home", *home});
    if (const auto icon = record.iconURL()) facts.push_back({"icon", *icon});
    if (config.kind == ambrel::ShortcutKind::app) {
        for (auto& fact : factsOf(busStandingOf(config, user))) facts.push_back(std::move(fact));
    }
    if (!registration::isOffered()) return facts;
    facts.push_back({"desktopId", ambrel::desktopId(config.bundleId)});
    if (const auto entry = registration::findEntry(record, user)) {
        facts.push_back({"desktopEntry", entry->file});
    }
    return facts;
}

std::vector<InstanceFact> factsOf(const BusStanding& standing) {
    if (!installedProgram::meetOnBus()) return {};
    std::vector<InstanceFact> facts{{"sessionBus", spoken(standing.sharing)}};
    // Of a bus that the environment names nothing is known, nor who keeps secrets there.
    if (standing.sharing == BusSharing::byVariable) return facts;
    const bool isHidden = standing.hidesSecrets && standing.hasOwnNames();
    facts.push_back({"secrets", isHidden ? "hidden" : "shared"});
    const bool hasMore = standing.hasOwnNames() && !standing.sharedNames.empty();
    if (hasMore) facts.push_back({"busNames", joined(standing.sharedNames)});
    return facts;
}

} // namespace korvane
