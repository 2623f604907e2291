#pragma once

#include "korvane-runner/Bus/NamePolicy.h"
#include "korvane-runner/Bus/PrivateNames.h"

namespace korvane::runner::bus {

/// The names that the programs of an instance use, and those on the user's bus: some are shared,
/// all others are private.
class InstanceNames {
public:
    InstanceNames(PrivateNames names, NamePolicy policy)
        : names_(std::move(names)), policy_(std::move(policy)) {}

    /// What the bus is told for the valid bus name `name`.
    std::string toBus(std::string_view name, NameUse use);
    /// What programs of the instance are told for a name on the bus. Absent where they must not see
    /// it: it is private to the user or to another instance.
    std::optional<std::string> fromBus(std::string_view name, NameUse use) const;

    /// What names of a name space have in front on the bus, beside those that are shared.
    std::optional<std::string> nameSpaceToBus(std::string_view nameSpace) const {
        return names_.nameSpaceToBus(nameSpace);
    }

    /// A sentence of the bus with the instance's names in place of those on the bus.
    std::string textFromBus(std::string_view text) const;

    const NamePolicy& policy() const { return policy_; }

private:
    std::string wordFromBus(std::string_view word) const;

    PrivateNames names_;
    NamePolicy policy_;
};

} // namespace korvane::runner::bus
