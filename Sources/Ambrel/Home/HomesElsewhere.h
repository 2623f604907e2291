#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <vector>

/// The homes of instances that do not lie side by side in the usual folder. They can be anywhere,
/// so a list of them is kept in the user's data folder: whether a place has to do with one is then
/// known without a look at every instance, or into the place itself.
namespace ambrel::homesElsewhere {

/// The folder below the user's home in which an instance's home lies unless another one is chosen.
inline constexpr std::string_view usualFolder = "KorvaneInstances";

/// Puts `home` on the list, by its name and by where links lead from there now, unless it lies in
/// the usual folder, is no absolute path, or is or contains the user's own. Several processes may
/// do so at once. Never fails: what cannot be written is tried again when the instance starts
/// again.
void add(const Path& home, const UserPlaces& user) noexcept;

/// Takes `home` off the list, because its instance is gone or has another one now. What the list
/// gets meanwhile may be lost, and comes back when its instance starts again. Never fails.
void forget(const Path& home, const UserPlaces& user) noexcept;

/// The homes on the list as they were named, and where links led from there; some may be gone. A
/// list that is missing or empty is made of the instances in the default folder, which is the only
/// look at all of them.
std::vector<Path> all(const UserPlaces& user);

} // namespace ambrel::homesElsewhere
