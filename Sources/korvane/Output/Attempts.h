#pragma once

#include "korvane/Output/Surroundings.h"

#include <cstddef>
#include <functional>

namespace korvane {

/// Does `action` for each number below `count`: what fails for one is told, and keeps no other from
/// being tried. Returns the exit status, 1 where any failed. The failure of the only one is thrown
/// on.
int attemptEach(std::size_t count, const Surroundings& surroundings,
                const std::function<void(std::size_t)>& action);

} // namespace korvane
