#pragma once

#include <string>
#include <string_view>

namespace ambrel {

/// The name by which a desktop knows an instance: of its desktop entry, its icons, its windows and
/// its status item. A function of the wrapper's bundle identifier alone: the identifier itself
/// where it is a name of at least two elements of [A-Za-z_-][A-Za-z0-9_-]* and at most 200 bytes,
/// else "app.korvane.instance.x" and a hash of it.
std::string desktopId(std::string_view bundleId);

} // namespace ambrel
