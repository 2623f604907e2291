#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Manager/Programs/StartPlan.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What is worked out for the start of an instance, and so what in its configuration is its user's
/// own. Empty for other kinds than applications, and where the application cannot be read.
struct WorkedOut {
    StartPlan plan;
    UseProfile use = UseProfile::yes; ///< no: the configuration was made without a profile
    std::string desktopId{};          ///< which nobody gives as a name by hand

    /// By what planStart() gives now for the application of `config`, or for the one at
    /// `otherwise` where that is gone. A profile that cannot be used counts as none. Throws
    /// LibraryError where the system lacks what applications are read with.
    static WorkedOut of(const ambrel::InstanceConfig& config, const ambrel::Path& otherwise,
                        const ambrel::UserPlaces& user, const ambrel::Environment& environment);

    ambrel::Strategy strategy() const;
    /// Whether all arguments that are worked out are in `arguments`, in order.
    bool isIn(const std::vector<std::string>& arguments) const;
    /// Those that are worked out and not among `arguments`.
    std::vector<std::string> missingIn(const std::vector<std::string>& arguments) const;
    /// `arguments` without those that are worked out, or were by an earlier version of the profile.
    std::vector<std::string> ownArguments(const std::vector<std::string>& arguments) const;
    /// Those of `arguments` that are not worked out any more.
    std::vector<std::string> formerArguments(const std::vector<std::string>& arguments) const;
    /// The variables of `config` without those that are worked out, or were.
    ambrel::StringMap ownVariables(const ambrel::InstanceConfig& config) const;
    /// Those that are not worked out any more, by their names.
    std::vector<std::string> formerVariables(const ambrel::InstanceConfig& config) const;
    /// Takes what is said of the session's bus out of `overrides`, and returns what was not worked
    /// out. Names that are shared stay there where none are worked out.
    struct BusChoices {
        std::optional<bool> shared;
        std::optional<bool> hideSecrets;
    };
    BusChoices takeBus(ambrel::StringMap& overrides) const;
    /// Takes the names of process and windows out of `overrides`, and returns a process name that
    /// was not worked out, now or before.
    std::optional<std::string> takeNames(ambrel::StringMap& overrides) const;
};

/// How the application of `config` is started by what is worked out for it now, with its profile
/// and its process name. Throws Refusal unreadableApplication and unusableProfile.
StartPlan requireStart(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user,
                       const ambrel::Environment& environment);

} // namespace korvane
