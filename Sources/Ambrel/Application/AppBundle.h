#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/SystemTools.h"

#include <optional>
#include <string>

namespace ambrel {

/// The read-only view of an application bundle, taken once and never refreshed.
struct AppBundle {
    Path url;                                ///< the bundle folder as given by the caller
    std::string bundleId;                    ///< CFBundleIdentifier, or the bundle's file name
    std::string executableName;              ///< CFBundleExecutable, or the bundle's file name
    bool sandboxed = false;                  ///< the signature declares the App Sandbox entitlement
    bool prohibitsMultipleInstances = false; ///< LSMultipleInstancesProhibited; false when absent

    /// `url`/Contents/MacOS/`executableName`; the file need not exist.
    Path executableURL() const;

    /// Reads the bundle at `appURL` and asks the signing tool about it, which blocks for the life
    /// of one external process. Absent when Contents/Info.plist is missing, unreadable or no
    /// dictionary; no process is started then. Throws LibraryError, and nothing else, when the
    /// library that reads property lists is not on this machine.
    static std::optional<AppBundle> read(const Path& appURL, const SystemTools& tools = {});
};

} // namespace ambrel
