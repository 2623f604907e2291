#include "korvane-runner/MenuBarHost.h"

#include "korvane-runner/AttendedProgram.h"
#include "korvane-runner/MenuBarDelegate.h"

namespace korvane::runner {

int MenuBarHost::run(const ambrel::ResolvedInstance& instance, const ambrel::UserPlaces& user,
                     const StatusIconFiles& icons, ambrel::HostedProgram& process,
                     const ambrel::SignalHold& signals, const DesktopOpener& openDesktop) {
    if (!process.isRunning()) return process.terminationStatus();
    AttendedProgram attended(process, signals); // before the desktop, which starts threads
    const auto desktop = openDesktop();
    attended.attachTo(desktop->loop());
    MenuBarDelegate delegate(instance, user, icons, process, *desktop);
    delegate.applicationDidFinishLaunching();
    const int status = desktop->loop().run();
    desktop->flush(); // with the item still there, for panels that are about to ask it
    return status;
}

} // namespace korvane::runner
