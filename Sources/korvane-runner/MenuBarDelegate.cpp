#include "korvane-runner/MenuBarDelegate.h"

#include "Ambrel/Launch/ProgramProcesses.h"
#include "Ambrel/Platform/MainBundle.h"

#include <utility>

namespace korvane::runner {

MenuBarDelegate::MenuBarDelegate(const ambrel::ResolvedInstance& instance,
                                 const ambrel::UserPlaces& user, StatusIconFiles icons,
                                 ambrel::HostedProgram& process, Desktop& desktop)
    : instance_(instance), user_(user), icons_(std::move(icons)), process_(process),
      desktop_(desktop) {}

void MenuBarDelegate::applicationDidFinishLaunching() {
    constexpr std::chrono::milliseconds moment(300);
    desktop_.loop().after(moment, [this] { showItem(); });
}

void MenuBarDelegate::showItem() {
    statusItem_.emplace(
        instance_.config, icons_, desktop_.statusArea(), [this] { focus(); }, [this] { quit(); });
}

void MenuBarDelegate::focus() {
    if (!process_.isRunning()) return;
    const auto file = ambrel::MainBundle::current().executableURL;
    const auto runner = file ? ambrel::FileIdentity::at(*file) : std::nullopt;
    desktop_.windows().bringToFront(
        processesOf(process_.processIdentifier(), instance_, user_, runner));
}

// The loop ends when the program has: until then it may ask whether to save, and say no.
void MenuBarDelegate::quit() { process_.terminate(); }

} // namespace korvane::runner
