#pragma once

namespace korvane::runner {

/// Opens GLib and GIO, before any of their functions is called. Throws DesktopError, which names
/// the library and its package, when they are missing or unusable. Not for several threads at once.
void openGio();

/// The same for the web engine with its toolkit, and for GLib and GIO. Takes far longer.
void openEngine();

} // namespace korvane::runner
