#pragma once

namespace ambrel {

/// Whether programs of this system make the name that they are started under (argv[0]) the name of
/// their windows: true on Linux, where GTK, wx, Qt and Xt do so, false on macOS.
bool processNameNamesWindows() noexcept;

} // namespace ambrel
