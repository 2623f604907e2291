#include "Ambrel/Platform/ProcessName.h"

namespace ambrel {

bool processNameNamesWindows() noexcept { return true; }

} // namespace ambrel
