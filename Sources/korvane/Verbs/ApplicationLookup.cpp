#include "korvane/Verbs/ApplicationLookup.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Rules/UserText.h"
#include "korvane/Output/Messages.h"

namespace korvane {

using ambrel::AppBundle;
using ambrel::AppCatalog;
using ambrel::Path;

namespace {

using InstalledApps = std::vector<AppCatalog::InstalledApp>;

bool isPath(const std::string& text) {
    if (text.find('/') != std::string::npos || text.starts_with('~')) return true;
    return text.ends_with(".app") && ambrel::fileSystem::isFolder(text);
}

/// The only application whose name holds `text`, whatever the case, else one with a similar name.
std::string meantName(const std::string& text, const InstalledApps& apps) {
    const auto wanted = ambrel::text::lowercased(text);
    std::vector<std::string> names;
    std::vector<std::string> holding;
    for (const auto& app : apps) {
        names.push_back(app.name);
        const bool holds = ambrel::text::lowercased(app.name).find(wanted) != std::string::npos;
        if (holds) holding.push_back(app.name);
    }
    return holding.size() == 1 ? holding.front() : nearest(text, names);
}

[[noreturn]] void refuseUnknown(const std::string& text, const InstalledApps& apps,
                                const Surroundings& surroundings) {
    const auto meant = meantName(text, apps);
    auto message = "No application is called " + inQuotes(text) + ".";
    if (!meant.empty()) {
        message += " Did you mean " + inQuotes(meant) + "?";
    } else if (findProgram(text, surroundings.environment)) {
        message +=
            " An installed program becomes an application with: " + commandLine("adopt", {text});
    } else {
        message += " See: korvane apps";
    }
    throw Refusal(message);
}

Path findInCatalog(const std::string& text, const Surroundings& surroundings) {
    const auto apps = AppCatalog::scan(AppCatalog::defaultSearchDirs(surroundings.user));
    InstalledApps found;
    for (const auto& app : apps) {
        if (app.name == text || app.bundleId == text) found.push_back(app);
    }
    if (found.empty()) refuseUnknown(text, apps, surroundings);
    if (found.size() == 1) return found.front().url;
    auto message =
        "Several applications are called " + inQuotes(text) + ". Name one of them by its path:";
    for (const auto& app : found) message += "\n  " + ambrel::utf8::oneLine(app.url);
    throw Refusal(message);
}

} // namespace

AppBundle requireApplication(const std::string& text, const Surroundings& surroundings) {
    if (text.empty()) throw Refusal("The application's name is empty.");
    const auto path =
        isPath(text) ? usablePath(text, surroundings.user) : findInCatalog(text, surroundings);
    auto app = AppBundle::read(path);
    if (!app) throw Refusal("Not a readable .app: " + ambrel::utf8::oneLine(path));
    return *app;
}

} // namespace korvane
