#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Platform/HostedProgram.h"
#include "korvane-runner/Desktop/Desktop.h"
#include "korvane-runner/StatusItem/KorvaneStatusItem.h"

#include <optional>

namespace korvane::runner {

/// What an instance with a status item beside its program does, decided without a desktop: "Show"
/// brings the program's windows to the front, and "Quit" asks it to end.
class MenuBarDelegate {
public:
    /// `process` is the program. All but `icons` must outlive it.
    MenuBarDelegate(const ambrel::ResolvedInstance& instance, const ambrel::UserPlaces& user,
                    StatusIconFiles icons, ambrel::HostedProgram& process, Desktop& desktop);
    MenuBarDelegate(const MenuBarDelegate&) = delete;
    MenuBarDelegate& operator=(const MenuBarDelegate&) = delete;

    /// Has the item shown in a moment: a program that hands over to a copy that runs already ends
    /// before, and its item would only flicker. The program's end is for an AttendedProgram on the
    /// same loop.
    void applicationDidFinishLaunching();

private:
    void showItem();
    void focus();
    void quit();

    const ambrel::ResolvedInstance& instance_;
    const ambrel::UserPlaces& user_;
    StatusIconFiles icons_;
    ambrel::HostedProgram& process_;
    Desktop& desktop_;
    std::optional<KorvaneStatusItem> statusItem_; ///< last: it goes first
};

} // namespace korvane::runner
