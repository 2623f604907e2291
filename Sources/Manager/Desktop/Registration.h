#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Manager/Base/Remedy.h"

#include <optional>
#include <string>
#include <vector>

/// How the system's desktop knows an instance: its entry in menus and docks, with name and icons.
/// One backend for each system. On Linux the entry is a file by the Desktop Entry Specification
/// called desktopId(bundleId), with icons in the theme hicolor and, where the bundle's path needs
/// it, a script that opens the instance; all lie below user.data.
///
/// A bundle's entry says whose it is, and no other is ever changed or removed. An instance that is
/// named by a link counts as the bundle that the link leads to.
namespace korvane::registration {

/// Whether this system has entries of its own for instances; not macOS, where the desktop knows
/// every application by its bundle. Where it has not, instances have no desktop id and no entry,
/// and requireFree() lets everything pass; nobody calls add().
bool isOffered() noexcept;

/// An entry that stands for the bundle at `bundle`.
struct Entry {
    std::string id;
    ambrel::Path file;
    ambrel::Path bundle; ///< as the entry names it
    /// Of the instance when the entry was written; absent where the entry does not name it.
    std::optional<ambrel::Path> home{};
};

/// The entry of this instance; absent when it has none, also where another's stands in its place.
std::optional<Entry> findEntry(const ambrel::InstanceRecord& record,
                               const ambrel::UserPlaces& user);

/// All entries of instances in the user's folder, sorted by their ids; the bundles of some may be
/// gone. Never fails.
std::vector<Entry> listEntries(const ambrel::UserPlaces& user) noexcept;

/// The same. Throws FileError where there are entries, or may be, and they cannot be listed.
std::vector<Entry> requireEntries(const ambrel::UserPlaces& user);

/// Entries that stand for this bundle under other ids: those of an identifier that it had before.
/// Never fails.
std::vector<Entry> findFormer(const ambrel::InstanceRecord& record,
                              const ambrel::UserPlaces& user) noexcept;

/// What the entry of such an instance offers it for, as types of files and addresses: those that
/// its application opens with openWithPassthrough, those of a browser with registerAsBrowser. Empty
/// where neither has an effect: only the runner of an application passes on what is to be opened.
/// Never makes an instance the default for anything.
std::vector<std::string> offeredTypes(const ambrel::InstanceConfig& config);

/// Throws Refusal entryTaken, with this remedy, where an instance with this identifier at `bundle`
/// could not be registered or would hide something: an entry of its name that is not its own lies
/// in one of the folders for entries, or a file lies in the place of its icons or script. Writes
/// nothing.
void requireFree(const std::string& bundleId, const ambrel::Path& bundle,
                 const ambrel::UserPlaces& user, const ambrel::Environment& environment,
                 Remedy remedy);

/// Makes the entry with all that belongs to it, or brings it up to date. Each file is written in
/// one step, and only where it changes. Throws Refusal, with nothing written, where the place is
/// not free (entryTaken), the user has no home (homeIsMissing) or the instance cannot be described
/// in an entry (notDescribable), and FileError, with a part written
/// perhaps; done again it continues.
Entry add(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// How the entry of an instance stands to what add() would make of it.
struct EntryCheck {
    enum class State {
        current,  ///< it is as it should be, or there is no place for entries at all
        missing,  ///< subject: where it should be
        outdated, ///< subject: the first file of it that is not as it should be
        stray,    ///< subject: the bundle that it names, which is gone or goes by another id
        taken,    ///< subject: a file in its place that belongs to something else
    };
    State state = State::current;
    ambrel::Path subject{};
    std::string reason{}; ///< for `taken`, a sentence
};

/// Looks at the entry of this instance and changes nothing. Throws Refusal notDescribable as add()
/// does.
EntryCheck check(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// As add(); an entry that is a stray to check() becomes this instance's.
Entry mend(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// Removes the entry with all that belongs to it; none that stands for another bundle by now. The
/// bundle itself may be gone. Throws FileError: where the entry could not be removed, with all left
/// as it was, else for the first of what belongs to it, with the others removed.
void remove(const Entry& entry, const ambrel::UserPlaces& user);

} // namespace korvane::registration
