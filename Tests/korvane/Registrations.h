#pragma once

#include "Manager.h"
#include "Manager/Programs/Linux/DesktopEntry.h"
#include "Support/Pictures.h"

#include <array>

namespace korvane::test {

/// Pixels of a side of the icons that an instance has.
inline constexpr std::array<std::uint32_t, 7> iconSides{16, 32, 48, 64, 128, 256, 512};

/// The desktop id of an instance called "Work".
inline const std::string work = "app.korvane.instance.work";

/// A manager, and where it registers instances.
struct Registrations {
    Manager manager;

    Path data(const std::string& name = "") const { return manager.home / (".local/share" + name); }
    Path entry(const std::string& id) const { return data("/applications/" + id + ".desktop"); }
    Path script(const std::string& id) const { return data("/korvane/open/" + id); }
    Path icon(const std::string& id, std::uint32_t side) const;

    /// A picture file of one color.
    Path picture(const Pixel& color) const;
    /// Creates an instance that writes "hello"; returns its bundle.
    Path createCommand(const std::string& name, Strings more = {}) const;
    ProgramResult tryToCreate(const std::string& name, const Strings& more = {}) const;
    /// All there is of registrations.
    std::multiset<std::string> registered() const;
    /// Checks that `done` was refused for `reason` and left everything as it was.
    void checkRefused(const ProgramResult& done, const std::multiset<std::string>& before,
                      const std::string& reason) const;
};

DesktopEntry readEntryFile(const Path& file);
Path runnerIn(const Path& bundle);

/// Reads an entry as we and as desktops do, and compares; the checker must find nothing wrong.
void checkEntry(const Path& file, const std::string& name, const Path& program, const Path& bundle);

} // namespace korvane::test
