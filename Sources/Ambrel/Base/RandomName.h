#pragma once

#include <string>

namespace ambrel {

/// A hidden name, never the same again, for what is built beside the place where it will stand.
std::string randomName();

} // namespace ambrel
