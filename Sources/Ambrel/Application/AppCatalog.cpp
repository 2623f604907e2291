#include "Ambrel/Application/AppCatalog.h"

#include "Ambrel/Application/DeclaredIcon.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"

#include <algorithm>
#include <unordered_set>

namespace ambrel {

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
    for (const auto& entry : bundlesIn(dirs)) {
        if (fileSystem::exists(BundleLayout{entry}.instanceJson())) continue; // one of our wrappers
        const auto bundle = AppBundle::read(entry, tools);
        if (!bundle || !seen.insert(bundle->bundleId).second) continue;
        found.push_back({entry, std::string(paths::stem(entry)), bundle->bundleId});
        if (progress) progress(found.size());
    }
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
