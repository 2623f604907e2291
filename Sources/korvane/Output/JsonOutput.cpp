#include "korvane/Output/JsonOutput.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Rules/MissingTarget.h"
#include "korvane/Output/InstanceFacts.h"

#include <ostream>

namespace korvane::json {

std::string text(const std::string& value) { return ambrel::utf8::replacingInvalid(value); }

std::vector<std::string> texts(const std::vector<std::string>& values) {
    std::vector<std::string> result;
    for (const auto& value : values) result.push_back(text(value));
    return result;
}

nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user) {
    return instance(record, user, Running::now(user));
}

nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
                        const Running& running) {
    nlohmann::json object;
    for (const auto& fact : factsOf(record, user)) object[fact.word] = text(fact.text);
    object["config"] = nlohmann::json::parse(record.config.encode());
    const auto found = running.of(record);
    object["running"] = !found.none();
    if (!found.none()) object["processes"] = found.ids;
    if (const auto missing = missingTarget(record, user)) object["missing"] = text(*missing);
    return object;
}

nlohmann::json profile(const ProgramProfile& found) {
    return {{"name", found.profile.displayName},
            {"identifier", found.profile.bundleId},
            {"confidence", rawValue(found.profile.confidence)},
            {"file", text(found.file)}};
}

nlohmann::json app(const ambrel::AppCatalog::InstalledApp& app) {
    nlohmann::json object{
        {"name", text(app.name)}, {"identifier", text(app.bundleId)}, {"bundle", text(app.url)}};
    if (const auto icon = app.iconURL()) object["icon"] = text(*icon);
    return object;
}

void write(const nlohmann::json& value, std::ostream& out) { out << value.dump(2) << '\n'; }

} // namespace korvane::json
