#pragma once

namespace korvane::runner {

/// Opens GLib and GIO, before any of their functions is called. Throws DesktopError, which names
/// the library and its package, when they are missing or unusable. Not for several threads at once.
void openGio();

/// The same for the web engine with its toolkit, and for GLib and GIO. Takes far longer.
void openEngine();

/// Opens the library that talks to X servers, and the one for their extension that tells whose a
/// window is. False where it is missing, which is no error: there are desktops without X.
bool openXcb() noexcept;
bool openXRes() noexcept;

} // namespace korvane::runner
