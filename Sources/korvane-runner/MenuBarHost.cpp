#include "korvane-runner/MenuBarHost.h"

#include "korvane-runner/AttendedProgram.h"
#include "korvane-runner/MenuBarDelegate.h"

namespace korvane::runner {

int MenuBarHost::run(const ambrel::ResolvedInstance& instance, const ambrel::UserPlaces& user,
                     const StatusIconFiles& icons, ambrel::ChildProcess& process,
                     const ambrel::SignalHold& signals, const DesktopOpener& openDesktop) {
    if (!process.isRunning()) return process.terminationStatus();
    AttendedProgram attended(process, signals); // before the desktop, which starts threads
    const auto desktop = openDesktop();
    attended.attachTo(desktop->loop());
    int status = 0;
    {
        MenuBarDelegate delegate(instance, user, icons, process, *desktop);
        delegate.applicationDidFinishLaunching();
        status = desktop->loop().run();
    }
    desktop->flush(); // whoever chose "Quit" waits for an answer
    return status;
}

} // namespace korvane::runner
