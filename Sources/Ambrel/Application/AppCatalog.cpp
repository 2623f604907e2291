#include "Ambrel/Application/AppCatalog.h"

#include "Ambrel/Application/DeclaredIcon.h"
#include "Ambrel/Base/SideBySide.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"

#include <algorithm>
#include <unordered_set>

namespace ambrel {

namespace {

/// Absent for one of our wrappers, and for what cannot be read.
std::optional<AppBundle> readApplication(const Path& entry, const SystemTools& tools) {
    if (fileSystem::exists(BundleLayout{entry}.instanceJson())) return std::nullopt;
    return AppBundle::read(entry, tools);
}

} // namespace

std::optional<Path> AppCatalog::InstalledApp::iconURL() const { return declaredIcon(url); }

std::vector<Path> AppCatalog::defaultSearchDirs(const UserPlaces& user) {
    return {"/Applications", "/Applications/Utilities", user.expandingTilde("~/Applications"),
            "/System/Applications"};
}

std::vector<AppCatalog::InstalledApp> AppCatalog::scan(const std::vector<Path>& dirs,
                                                       const Progress& progress,
                                                       const SystemTools& tools) {
    std::vector<InstalledApp> found;
    std::unordered_set<std::string> seen;
    const auto entries = bundlesIn(dirs);
    const auto read = [&](std::size_t index) { return readApplication(entries[index], tools); };
    const auto take = [&](const std::optional<AppBundle>& bundle) {
        if (!bundle || !seen.insert(bundle->bundleId).second) return;
        found.push_back({bundle->url, std::string(paths::stem(bundle->url)), bundle->bundleId});
        if (progress) progress(found.size());
    };
    sideBySide(entries.size(), read, take);
    const text::NameOrder order;
    std::ranges::stable_sort(found, [&order](const auto& left, const auto& right) {
        return order.precedes(left.name, right.name);
    });
    return found;
}

} // namespace ambrel

std::size_t std::hash<ambrel::AppCatalog::InstalledApp>::operator()(
    const ambrel::AppCatalog::InstalledApp& app) const noexcept {
    const std::hash<std::string> hashOf;
    std::size_t result = 0;
    for (const auto* field : {&app.url, &app.name, &app.bundleId}) {
        result = result * 31 + hashOf(*field);
    }
    return result;
}
