#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

#include <functional>
#include <optional>
#include <vector>

namespace ambrel {

/// One instance that exists on disk. Two records of the same bundle are equal, whatever their
/// configurations.
struct InstanceRecord {
    Path bundleURL;        ///< the wrapper bundle
    InstanceConfig config; ///< what its instance.json held

    const Path& id() const { return bundleURL; }
    /// The wrapper's icon file, if it exists at the moment of the call.
    std::optional<Path> iconURL() const;

    bool operator==(const InstanceRecord& other) const { return bundleURL == other.bundleURL; }
};

/// What becomes of an instance's private home when the instance is removed.
enum class UserData { keep, remove };

/// Finds, changes and removes wrappers. Keeps no index; every listing reads the disk afresh.
class InstanceRegistry {
public:
    /// `searchDirs` absent: the default folder. Present, even empty: exactly these.
    explicit InstanceRegistry(UserPlaces user,
                              const std::optional<std::vector<Path>>& searchDirs = {});

    /// The user's "~/Applications", expanded.
    static std::vector<Path> defaultSearchDirs(const UserPlaces& user);

    /// The instances lying directly in the search folders, sorted by display name without regard
    /// to case. Unreadable folders and bundles are skipped; never fails.
    std::vector<InstanceRecord> list() const;

    /// The instance at `bundleURL`, whatever the folder is called and wherever it lies; absent
    /// when it holds no decodable instance.json.
    std::optional<InstanceRecord> recordFor(const Path& bundleURL) const;

    /// Removes the bundle for good; throws FileError, with the data untouched, when that fails. A
    /// bundle that is already gone is no error. With UserData::remove the instance home goes too,
    /// unless its path is empty or it is or contains the user's own home, however that is spelled;
    /// a failure there is not reported. Symbolic links are removed, never followed.
    void remove(const InstanceRecord& record, UserData data) const;

    /// Applies `edit` to a copy of the record's configuration and writes it over instance.json in
    /// place. Failures are not reported and leave the file as far as the write got. Neither
    /// `record` nor Info.plist, icon or bundle name change.
    void update(const InstanceRecord& record,
                const std::function<void(InstanceConfig&)>& edit) const;

    std::vector<Path> searchDirs;

private:
    UserPlaces user_;
};

} // namespace ambrel

template <> struct std::hash<ambrel::InstanceRecord> {
    std::size_t operator()(const ambrel::InstanceRecord& record) const noexcept {
        return std::hash<ambrel::Path>{}(record.bundleURL);
    }
};
