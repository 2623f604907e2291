#pragma once

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Programs/ProgramProfile.h"
#include "Manager/Rules/Running.h"

#include <iosfwd>
#include <nlohmann/json.hpp>

/// The manager's answers for programs. Paths are plain absolute paths, absent fields are left out
/// but for "desktopEntry", "profile" and "processName", which are null then.
namespace korvane::json {

nlohmann::json bundle(const ambrel::Path& bundleURL);
/// Without "desktopId" and "desktopEntry" on a system whose desktop has no entries of ours.
nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);
/// The same with how it stands: "running", "processes" while it runs, and "missing", the path of
/// what it opens where that is gone.
nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
                        const Running& running);
nlohmann::json app(const ambrel::AppCatalog::InstalledApp& app);

/// The profile that an instance was made with; null without one.
nlohmann::json profile(const std::optional<ProgramProfile>& found);

/// Text that a file name on disk may have come from: what is not UTF-8 becomes U+FFFD.
std::string text(const std::string& value);

void write(const nlohmann::json& value, std::ostream& out);

} // namespace korvane::json
