#pragma once

#include "korvane-runner/Bus/MessageHeader.h"
#include "korvane-runner/Bus/OwnerTable.h"

/// The user's service manager, which programs of an instance share.
namespace korvane::runner::bus {

/// Whether a message would change the environment of the user's own services, as what
/// UpdateActivationEnvironment asks of the bus would. The manager is meant by its name, and by any
/// unique name that is not in `owners`, those of the instance, where its object is.
bool changesUsersServices(const MessageHeader& header, const OwnerTable& owners);

} // namespace korvane::runner::bus
