#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Launch/LaunchError.h"
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/OwnedFd.h"

#include <array>
#include <memory>

namespace ambrel {

/// Starts what an instance stands for, and links the user's own folders into its private home.
/// `user` is the person at the machine, `inherited` the environment that this process was given.
struct InstanceLauncher {
    InstanceLauncher() = delete;

    /// The instance's log, directly inside its home.
    static constexpr std::string_view instanceLogName = "korvane-instance.log";
    /// The user's folders that instances share, in the order in which they are handled.
    static constexpr std::array<std::string_view, 3> sharedUserFolders{"Downloads", "Documents",
                                                                       "Desktop"};

    /// Starts the instance and returns its running process, which the caller owns and must wait
    /// for. Throws LaunchError for a web instance, a missing path or command, and an unreadable or
    /// unclonable application; ChildProcessError, FileError and LibraryError pass through. Shared
    /// folders, home and log may exist after a failure; no process does. An application gets
    /// `opened` behind its arguments, with the mark of its openMarkKey in front; other kinds have
    /// no use for it.
    static ChildProcess launch(const ResolvedInstance& instance, const UserPlaces& user,
                               const Environment& inherited, const SystemTools& tools = {},
                               const std::vector<std::string>& opened = {});

    /// All of launch() but the start itself, for whoever has to know what the process is going to
    /// have before it has it: it is still to be launched. Throws the same, but for what is only
    /// known of a start.
    static ChildProcess prepare(const ResolvedInstance& instance, const UserPlaces& user,
                                const Environment& inherited, const SystemTools& tools = {},
                                const std::vector<std::string>& opened = {});

    /// Starts the main executable of `app` with its home folder pointed at `home` (absolute).
    /// `home`, `extraArgs` and `environment` are used exactly as given; `environment` has the last
    /// word over HOME and every inherited variable. `processName` is the program's argv[0], absent:
    /// its path; only launch(instance) takes it from a configuration. The keychains and what
    /// ensureDesktopAccess() names are linked, nothing else is shared with the user. Output goes to
    /// the instance log where that can be opened. Throws LaunchError::unsupported for the strategy
    /// of that name; `home` and an empty log then already exist.
    static ChildProcess launch(const AppBundle& app, const Path& home, Strategy strategy,
                               const std::vector<std::string>& extraArgs,
                               const StringMap& environment, const UserPlaces& user,
                               const Environment& inherited,
                               const std::optional<std::string>& processName = {});

    /// The same for the bundle at `appURL`. Throws LaunchError::badBundle when it cannot be read.
    static ChildProcess launch(const Path& appURL, const Path& home, Strategy strategy,
                               const std::vector<std::string>& extraArgs,
                               const StringMap& environment, const UserPlaces& user,
                               const Environment& inherited, const SystemTools& tools = {},
                               const std::optional<std::string>& processName = {});

    /// Whether a configured process name is used: not empty, no "/", no control character and
    /// nothing but UTF-8. With another one the program gets its path.
    static bool isUsableProcessName(std::string_view name) noexcept;

    /// Links `home`/Library/Keychains to the user's own keychains by the rule of linkIfSafe;
    /// nothing for an empty `home`.
    static void ensureKeychainAccess(const Path& home, const UserPlaces& user) noexcept;

    /// DesktopAccess::ensure() and ensureTrash(). launch(instance) does the latter when user
    /// folders are shared.
    static void ensureDesktopAccess(const Path& home, const UserPlaces& user) noexcept;
    static void ensureSharedTrash(const Path& home, const UserPlaces& user) noexcept;

    /// The instance log opened for appending, made when absent; null when it cannot be opened.
    static std::shared_ptr<const OwnedFd> instanceLogHandle(const Path& home) noexcept;

    // The operations of SharedUserFolders.
    static void ensureSharedUserFolders(const Path& home, const UserPlaces& user) noexcept;
    static void linkIfSafe(const Path& link, const Path& target) noexcept;
    static bool needsSharedFolderMigration(const Path& home, const UserPlaces& user) noexcept;
    static std::map<std::string, int> migrateSharedUserFolders(const Path& home,
                                                               const UserPlaces& user);
    static std::map<std::string, int> migrateSharedUserFolders(const Path& home, const Path& into);
};

} // namespace ambrel
