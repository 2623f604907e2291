#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

namespace ambrel {

/// The variable by which GDBus, Qt and libdbus are told where the session bus is.
inline constexpr const char* busAddressVariable = "DBUS_SESSION_BUS_ADDRESS";

/// Whether an instance of that configuration is to have names of its own on the session bus, where
/// there is one: an application that neither is to share the user's names nor is given a bus by its
/// configuration.
bool wantsOwnNames(const InstanceConfig& config);

} // namespace ambrel
