#pragma once

#include "Manager/Programs/Adoption.h"

namespace korvane {

/// The small program that starts `adoption`'s. With a naming shell it starts it by the name in
/// processNameVariable, which it keeps from it; else for /bin/sh.
std::string launcherScript(const Adoption& adoption);

} // namespace korvane
