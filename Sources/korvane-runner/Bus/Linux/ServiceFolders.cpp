#include "korvane-runner/Bus/Linux/ServiceFolders.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Linux/DataFolders.h"
#include "korvane-runner/Bus/Linux/SmallFile.h"

#include <algorithm>
#include <sys/stat.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

std::optional<std::int64_t> changeOf(const Path& folder) {
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0) return std::nullopt;
    return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

std::vector<std::string> filesIn(const Path& folder) noexcept {
    try {
        auto names = fileSystem::list(folder);
        std::erase_if(names, [](const auto& name) { return !name.ends_with(".service"); });
        std::ranges::sort(names);
        if (names.size() > ServiceFolders::mostFiles) names.resize(ServiceFolders::mostFiles);
        return names;
    } catch (...) {
        return {}; // most of the folders are not there
    }
}

} // namespace

ServiceFolders::ServiceFolders(const ServicePlaces& places)
    : folders_(dataFolders({places.runtimeFolder, places.instanceData, places.userData},
                           places.dataFolders)) {
    for (auto& folder : folders_) folder += "/dbus-1/services";
}

void ServiceFolders::readFolder(const Path& folder, ServiceTable& into) {
    std::size_t size = 0;
    for (const auto& name : filesIn(folder)) {
        // What cannot be read is passed over, as the bus does.
        const auto text = tryReadSmallFile(folder + "/" + name);
        if (!text) continue;
        size += text->size();
        if (size > mostText) return;
        if (const auto service = ServiceFile::parse(*text)) into.add(*service);
    }
}

ServiceTable ServiceFolders::read() {
    ServiceTable table;
    changed_.clear();
    for (const auto& folder : folders_) {
        // Before its files: what comes meanwhile is seen the next time.
        changed_.push_back(changeOf(folder));
        readFolder(folder, table);
    }
    return table;
}

bool ServiceFolders::haveChanged() const {
    for (std::size_t i = 0; i < folders_.size(); ++i) {
        if (i >= changed_.size() || changeOf(folders_[i]) != changed_[i]) return true;
    }
    return false;
}

} // namespace korvane::runner::bus
