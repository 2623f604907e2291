#pragma once

#include "Ambrel/Base/Path.h"
#include "korvane-runner/Bus/ServiceFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvane::runner::bus {

/// Where the files of an instance's services are looked for.
struct ServicePlaces {
    ambrel::Path runtimeFolder; ///< XDG_RUNTIME_DIR; empty where there is none
    ambrel::Path instanceData;  ///< the folder for data in the instance's home
    ambrel::Path userData;      ///< that of the user
    std::string dataFolders{};  ///< XDG_DATA_DIRS as it stands; empty where it is missing
};

/// The folders with files "*.service", those first that count more. The programs of the instance
/// can write into one of them: of each no more is read than `mostFiles` files, in the order of
/// their names, and the first that come to `mostText` bytes together.
class ServiceFolders {
public:
    static constexpr std::size_t mostFiles = 4096;
    static constexpr std::size_t mostText = 4 * 1024 * 1024;

    explicit ServiceFolders(const ServicePlaces& places);

    /// What the files in them say. What cannot be read is left out.
    ServiceTable read();
    /// Whether files have come or gone since they were read.
    bool haveChanged() const;

    const std::vector<ambrel::Path>& folders() const { return folders_; }

private:
    static void readFolder(const ambrel::Path& folder, ServiceTable& into);

    /// When a folder got or lost a file the last time; absent for one that is not there.
    using Changed = std::optional<std::int64_t>;

    std::vector<ambrel::Path> folders_;
    std::vector<Changed> changed_;
};

} // namespace korvane::runner::bus
