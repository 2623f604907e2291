#include "korvane/Verbs/IconLintVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Formats/IcnsLint.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"

#include <ostream>

namespace korvane {

namespace icns = ambrel::icns;

namespace {

std::string sizeText(const icns::LintEntry& entry) {
    if (entry.width == 0) return "-";
    return std::to_string(entry.width) + " x " + std::to_string(entry.height);
}

std::string_view showingText(icns::Showing showing) {
    switch (showing) {
    case icns::Showing::shows:
        return "shows";
    case icns::Showing::doesNotShow:
        return "does not show";
    case icns::Showing::noPicture:
        break;
    }
    return "no picture";
}

void writeTable(const icns::LintReport& report, const Surroundings& surroundings) {
    Table table;
    table.add({"TYPE", "PIXELS", "DATA", "BYTES", "IN A BUNDLE", "REMARK"});
    for (const auto& entry : report.entries) {
        table.add({entry.type.name(), sizeText(entry), std::string(nameOf(entry.payload)),
                   std::to_string(entry.bytes), std::string(showingText(entry.showing)),
                   entry.remark});
    }
    table.write(surroundings.results, surroundings.width);
}

void writeJson(const ambrel::Path& file, const icns::LintReport& report,
               const Surroundings& surroundings) {
    auto elements = nlohmann::json::array();
    for (const auto& entry : report.entries) {
        nlohmann::json element{{"type", entry.type.name()},
                               {"data", nameOf(entry.payload)},
                               {"bytes", entry.bytes},
                               {"inBundle", showingText(entry.showing)}};
        if (entry.width > 0) element["pixels"] = {entry.width, entry.height};
        if (!entry.remark.empty()) element["remark"] = entry.remark;
        elements.push_back(std::move(element));
    }
    nlohmann::json object{
        {"icon", json::text(file)}, {"elements", std::move(elements)}, {"clean", report.isClean()}};
    if (!report.defect.empty()) object["defect"] = report.defect;
    json::write(object, surroundings.results);
}

struct LintOptions {
    std::string file;
    bool asJson = false;
};

int lint(const LintOptions& options, const Surroundings& surroundings) {
    const auto file = usablePath(options.file, surroundings.user);
    const auto bytes = ambrel::fileSystem::read(file);
    if (!bytes.starts_with("icns")) {
        throw Refusal(ambrel::utf8::oneLine(file) + " is no Apple icon file.");
    }
    const auto report = icns::lint(bytes, ambrel::decodePayload);
    if (options.asJson) {
        writeJson(file, report, surroundings);
    } else {
        writeTable(report, surroundings);
    }
    if (!report.defect.empty()) warn(surroundings, "The file is not whole: " + report.defect + ".");
    say(surroundings, report.isClean() ? "Everything in it shows in a bundle."
                                       : "Not everything in it shows in a bundle.");
    return report.isClean() ? 0 : 1;
}

} // namespace

Verb iconLintVerb() {
    return {"icon lint",
            "Tell what in an icon file will not show in a bundle, and why.",
            {"korvane icon lint App.icns"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<LintOptions>();
                options::text(app, "FILE", given->file, "The icon file")->required();
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) { return lint(*given, surroundings); };
            }};
}

} // namespace korvane
