#pragma once

#include <string>
#include <string_view>

namespace korvane::runner {

/// The part of a D-Bus address that the engine can be given: the first of its addresses that is not
/// one of a socket in the file system, or whose socket is there. Empty where there is none: the
/// tool that lets the engine's processes reach a bus gives up when the socket's folder is not
/// there, and the engine ends the program then. Both read an address as it stands.
std::string usableBusAddress(std::string_view address);

/// Leaves in the environment what is usable of the addresses of the session's buses. Before
/// anything asks for them, and before any thread starts.
void forgetLostBuses() noexcept;

/// Whether GIO finds a bus of the session where the environment says one is. Where it does not it
/// would start one, which would outlive the program and be nobody else's.
bool hasSessionBusAddress() noexcept;

} // namespace korvane::runner
