#pragma once

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Programs/ProgramProfile.h"
#include "Manager/Rules/Running.h"

#include <iosfwd>
#include <nlohmann/json.hpp>

/// The manager's answers for programs, in the words of the tables that it shows people. Paths are
/// plain absolute paths; what is absent is left out.
namespace korvane::json {

/// What factsOf() tells, "config", the configuration as the file has it, and how the instance
/// stands: "running", "processes" while it runs, and "missing", the path of what it opens where
/// that is gone.
nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);
/// The same by one look at what runs, for several.
nlohmann::json instance(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user,
                        const Running& running);
nlohmann::json app(const ambrel::AppCatalog::InstalledApp& app);

/// What is told of a profile that an instance is made with.
nlohmann::json profile(const ProgramProfile& found);

/// Text that a file name on disk may have come from: what is not UTF-8 becomes U+FFFD.
std::string text(const std::string& value);
/// The same for each element.
std::vector<std::string> texts(const std::vector<std::string>& values);

void write(const nlohmann::json& value, std::ostream& out);

} // namespace korvane::json
