#pragma once

#include "Manager/Programs/Adoption.h"

namespace korvane {

/// The small program that starts `adoption`'s, for /bin/sh.
std::string launcherScript(const Adoption& adoption);

} // namespace korvane
