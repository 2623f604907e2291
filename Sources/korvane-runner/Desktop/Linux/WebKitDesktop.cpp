#include "korvane-runner/Desktop/Linux/WebKitDesktop.h"

#include "korvane-runner/Desktop/Linux/BusAddress.h"
#include "korvane-runner/Desktop/Linux/HomeFolders.h"
#include "korvane-runner/Desktop/Linux/Toolkit.h"
#include "korvane-runner/Desktop/Linux/WebKitWindow.h"

#include <gtk/gtk.h>

namespace korvane::runner {

namespace {

/// No GtkApplication: it would make a second start of the instance a message to the first.
void openDisplay(const DesktopIdentity& identity) {
    // The class of the windows on X11 and their application on Wayland, by which docks find the
    // desktop entry.
    g_set_prgname(identity.id.c_str());
    if (!gtk_init_check()) throw DesktopError("no display can be opened");
    g_set_application_name(identity.name.c_str());
}

} // namespace

std::unique_ptr<WebDesktop> WebDesktop::open(DesktopIdentity identity) {
    forgetLostBuses();
    // The trial goes on while the toolkit is opened.
    EngineSandbox sandbox(ambrel::processEnvironment());
    openGio();
    settleHomeFolders();
    openEngine();
    openDisplay(identity);
    return std::make_unique<WebKitDesktop>(std::move(identity), std::move(sandbox));
}

WebKitDesktop::WebKitDesktop(DesktopIdentity identity, EngineSandbox sandbox)
    : identity_(std::move(identity)), sandbox_(std::move(sandbox)),
      banners_(identity_, bus_, loop_), badge_(identity_.id, bus_), statusArea_(bus_, loop_) {}

std::unique_ptr<WebWindow> WebKitDesktop::openWindow(const WebWindowSetup& setup,
                                                     WebWindowEvents& events) {
    if (sandbox_) sandbox_->require();
    sandbox_.reset();
    return std::make_unique<WebKitWindow>(setup, identity_.icon, events);
}

void WebKitDesktop::flush() { bus_.flush(SessionBus::moment); }

} // namespace korvane::runner
