#pragma once

#include <string_view>

/// The interfaces of objects on the bus, in the format of introspection. Each is the text of the
/// file of its name, which the build puts into the program.
namespace korvane::runner {

extern const std::string_view dbusMenuInterface;
extern const std::string_view statusNotifierItemInterface;

} // namespace korvane::runner
