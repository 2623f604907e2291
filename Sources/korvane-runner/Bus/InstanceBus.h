#pragma once

#include "korvane-runner/Bus/InstanceNames.h"
#include "korvane-runner/Bus/OwnerTable.h"

#include <set>

namespace korvane::runner::bus {

/// What all programs of an instance have in common on the bus.
struct InstanceBus {
    InstanceNames names;
    OwnerTable owners{};
    /// The names that something can be started for, as programs of the instance know them.
    std::set<std::string, std::less<>> activatable{};
    /// What programs want the environment of services to be that are started later.
    std::map<std::string, std::string, std::less<>> environment{};

    /// Whether `name`, as programs know it, is private and something can be started for it.
    bool canStart(std::string_view name) const {
        return activatable.contains(name) && !names.policy().isHidden(name) &&
               !names.policy().isShared(name, NameUse::call);
    }
};

} // namespace korvane::runner::bus
