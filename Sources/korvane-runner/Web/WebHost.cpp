#include "korvane-runner/Web/WebHost.h"

#include "Ambrel/Home/DesktopAccess.h"
#include "Ambrel/Home/HomePreparation.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Launch/LaunchError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/HomeVariables.h"
#include "Ambrel/Platform/SignalSource.h"
#include "korvane-runner/Web/DataClaim.h"
#include "korvane-runner/Web/InstanceIcon.h"
#include "korvane-runner/Web/WebAppDelegate.h"
#include "korvane-runner/Web/WebStorage.h"

#include <chrono>
#include <thread>

namespace korvane::runner {

namespace {

using namespace ambrel;
using Watching = AppLoop::Watching;

/// What a second start of an instance asks of the first.
constexpr const char* presentCall = "present";

/// A relative home lies where this process was started, and stays there.
ResolvedInstance withAbsoluteHome(ResolvedInstance instance) {
    if (instance.home.empty()) throw LaunchError::unsupported("web shortcut has no home folder");
    instance.home = fileSystem::absolute(instance.home);
    return instance;
}

/// A site is shown without a home, too: it only remembers nothing.
void tryMakeHome(const ResolvedInstance& instance, const UserPlaces& user) noexcept {
    HomePreparation::ensure(instance, user);
    WebStorage{instance.home}.ensure();
}

/// From here on libraries that ask for the home folder find the instance's.
void moveHome(const Path& home, const WebSurroundings& surroundings) {
    auto environment = surroundings.environment;
    environment["HOME"] = home;
    environment["CFFIXED_USER_HOME"] = home;
    redirectHomeVariables(environment, home, surroundings.user);
    setProcessVariables(environment);
}

/// Waits a moment, and no longer than an instance takes to end.
class Patience {
public:
    bool operator()() {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return --tries_ > 0;
    }

private:
    int tries_ = 40;
};

void endOnSignals(SignalSource& signals, WebAppDelegate& delegate, AppLoop& loop) {
    loop.whenReadable(signals.descriptor(), [&] {
        while (signals.next()) delegate.terminate();
        return Watching::goesOn;
    });
}

void presentOnCalls(std::optional<SoleProcess>& claim, WebAppDelegate& delegate, AppLoop& loop) {
    if (!claim) return; // a file system without locks: every start has a window then
    loop.whenReadable(claim->descriptor(), [&] {
        while (claim->nextMessage()) delegate.present();
        return Watching::goesOn;
    });
}

} // namespace

int WebHost::run(const ResolvedInstance& given, const WebSurroundings& surroundings,
                 const SignalHold& hold, const DesktopOpener& openDesktop) {
    const auto instance = withAbsoluteHome(given);
    const auto& [user, environment, icon, tools] = surroundings;
    const WebStorage storage{instance.home};
    tryMakeHome(instance, user);
    auto claim = DataClaim::make(storage.root(), presentCall, Patience());
    if (claim.isLeftToOther) return 0;
    DesktopAccess::ensure(instance.home, user);
    moveHome(instance.home, surroundings);

    SignalSource signals(hold); // before the toolkit, which starts threads
    const auto desktop = openDesktop({.id = desktopId(instance.config.bundleId),
                                      .name = instance.config.displayName,
                                      .icon = ensurePicture(icon, storage.icon())});
    WebAppDelegate delegate(instance, user, LinkOpener(tools, environment), icon, *desktop);
    endOnSignals(signals, delegate, desktop->loop());
    presentOnCalls(claim.own, delegate, desktop->loop());
    delegate.applicationDidFinishLaunching();
    const int status = desktop->loop().run();
    if (claim.own) claim.own->stopListening(); // who starts the instance now waits for the end
    return status;
}

} // namespace korvane::runner
