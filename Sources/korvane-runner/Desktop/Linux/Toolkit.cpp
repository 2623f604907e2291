#include "korvane-runner/Desktop/Linux/Toolkit.h"

#include "Ambrel/Platform/LibraryError.h"
#include "LazyGio.h"
#include "LazyWebKit.h"
#include "LazyXRes.h"
#include "LazyXcb.h"
#include "korvane-runner/Desktop/WebDesktop.h"

namespace korvane::runner {

namespace {

/// `package` is Debian's, whose names most who read the message can translate to their own.
void open(void (*load)(), const char* package) {
    try {
        load();
    } catch (const ambrel::LibraryError& error) {
        throw DesktopError(error.description() + "; it is part of the package " + package);
    }
}

bool tryOpen(void (*load)()) noexcept {
    try {
        load();
        return true;
    } catch (const ambrel::LibraryError&) {
        return false;
    }
}

} // namespace

void openGio() { open(ambrel::loadGio, "libglib2.0-0"); }

void openEngine() {
    openGio();
    open(ambrel::loadWebKit, "libwebkitgtk-6.0-4");
}

bool openXcb() noexcept { return tryOpen(ambrel::loadXcb); }
bool openXRes() noexcept { return tryOpen(ambrel::loadXRes); }

} // namespace korvane::runner
