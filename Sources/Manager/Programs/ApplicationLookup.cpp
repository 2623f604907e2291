#include "Manager/Programs/ApplicationLookup.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Rules/UserText.h"

namespace korvane {

using ambrel::AppBundle;
using ambrel::AppCatalog;
using ambrel::Path;
using ambrel::UserPlaces;

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
                                const ambrel::Environment& environment) {
    const auto meant = meantName(text, apps);
    const auto remedy = !meant.empty()                   ? Remedy::nameSuggested
                        : findProgram(text, environment) ? Remedy::adoptFirst
                                                         : Remedy::listApplications;
    throw Refusal(Refusal::Kind::unknownApplication, text,
                  "No application is called " + inQuotes(text) + ".", remedy,
                  meant.empty() ? std::vector<std::string>() : std::vector{meant});
}

Path findInCatalog(const std::string& text, const UserPlaces& user,
                   const ambrel::Environment& environment) {
    const auto apps = AppCatalog::scan(AppCatalog::defaultSearchDirs(user));
    std::vector<std::string> found;
    for (const auto& app : apps) {
        if (app.name == text || app.bundleId == text) found.push_back(app.url);
    }
    if (found.empty()) refuseUnknown(text, apps, environment);
    if (found.size() == 1) return found.front();
    throw Refusal(Refusal::Kind::severalApplications, text,
                  "Several applications are called " + inQuotes(text) + ".", Remedy::nameByPath,
                  std::move(found));
}

} // namespace

AppBundle requireApplication(const std::string& text, const UserPlaces& user,
                             const ambrel::Environment& environment) {
    if (text.empty()) {
        throw Refusal(Refusal::Kind::unknownApplication, text, "The application's name is empty.");
    }
    const auto path =
        isPath(text) ? usablePath(text, user) : findInCatalog(text, user, environment);
    auto app = AppBundle::read(path);
    if (app) return *app;
    throw Refusal(Refusal::Kind::unreadableApplication, path,
                  "Not a readable .app: " + ambrel::utf8::oneLine(path));
}

} // namespace korvane
