#include "korvane/Output/JsonOutput.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/MissingTarget.h"

#include <ostream>

namespace korvane::json {

std::string text(const std::string& value) { return ambrel::utf8::replacingInvalid(value); }

nlohmann::json bundle(const ambrel::Path& bundleURL) { return {{"bundleURL", text(bundleURL)}}; }

nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user) {
    auto object = bundle(record.bundleURL);
    object["config"] = nlohmann::json::parse(record.config.encode());
    if (const auto icon = record.iconURL()) object["iconURL"] = text(*icon);
    if (!registration::isOffered()) return object;
    object["desktopId"] = ambrel::desktopId(record.config.bundleId);
    const auto entry = registration::findEntry(record, user);
    object["desktopEntry"] = entry ? nlohmann::json(text(entry->file)) : nlohmann::json();
    return object;
}

nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
                        const Running& running) {
    auto object = instance(record, user);
    const auto found = running.of(record);
    object["running"] = !found.none();
    if (!found.none()) object["processes"] = found.ids;
    if (const auto missing = missingTarget(record, user)) object["missing"] = text(*missing);
    return object;
}

nlohmann::json profile(const std::optional<ProgramProfile>& found) {
    if (!found) return nullptr;
    return {{"bundleId", found->profile.bundleId},
            {"confidence", rawValue(found->profile.confidence)},
            {"displayName", found->profile.displayName},
            {"file", text(found->file)}};
}

nlohmann::json app(const ambrel::AppCatalog::InstalledApp& app) {
    nlohmann::json object{
        {"url", text(app.url)}, {"name", text(app.name)}, {"bundleId", text(app.bundleId)}};
    if (const auto icon = app.iconURL()) object["iconURL"] = text(*icon);
    return object;
}

void write(const nlohmann::json& value, std::ostream& out) { out << value.dump(2) << '\n'; }

} // namespace korvane::json
