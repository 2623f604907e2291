#include "korvane/Output/InstanceFacts.h"

#include "Ambrel/Instance/DesktopId.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/ConfigText.h"

namespace korvane {

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
    if (!registration::isOffered()) return facts;
    facts.push_back({"desktopId", ambrel::desktopId(config.bundleId)});
    if (const auto entry = registration::findEntry(record, user)) {
        facts.push_back({"desktopEntry", entry->file});
    }
    return facts;
}

} // namespace korvane
