#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/OwnedFd.h"

#include <array>
#include <memory>
#include <stdexcept>

namespace ambrel {

/// Why an instance was not started.
struct LaunchError : std::runtime_error {
    enum class Kind { badBundle, unsupported };
    static LaunchError badBundle(const Path& app); ///< "Not a readable .app bundle: " + path
    static LaunchError unsupported(const std::string& reason); ///< "App not clonable: " + reason
    std::string description() const { return what(); }
    Kind kind;
    std::string subject; ///< the path or reason alone

private:
    LaunchError(Kind kind, const std::string& text, const std::string& subject);
};

/// Starts what an instance stands for, and links the user's own folders into its private home.
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
    /// folders, home and log may exist after a failure; no process does.
    static ChildProcess launch(const InstanceConfig& config, const SystemTools& tools = {});

    /// Starts the main executable of `app` with its home folder pointed at `home` (absolute).
    /// `home`, `extraArgs` and `environment` are used exactly as given; `environment` has the last
    /// word over HOME and every inherited variable. `processName` is the program's argv[0], absent:
    /// its path; only launch(config) takes it from a configuration. The keychains and what
    /// ensureDesktopAccess() names are linked, nothing else is shared with the user. Output goes to
    /// the instance log where that can be opened. Throws LaunchError::unsupported for the strategy
    /// of that name; `home` and an empty log then already exist.
    static ChildProcess launch(const AppBundle& app, const Path& home, Strategy strategy,
                               const std::vector<std::string>& extraArgs,
                               const StringMap& environment,
                               const std::optional<std::string>& processName = {});

    /// The same for the bundle at `appURL`. Throws LaunchError::badBundle when it cannot be read.
    static ChildProcess launch(const Path& appURL, const Path& home, Strategy strategy,
                               const std::vector<std::string>& extraArgs,
                               const StringMap& environment, const SystemTools& tools = {},
                               const std::optional<std::string>& processName = {});

    /// Whether a configured process name is used: not empty, no "/", no control character and
    /// nothing but UTF-8. With another one the program gets its path.
    static bool isUsableProcessName(std::string_view name) noexcept;

    /// Links `home`/Library/Keychains to the user's own keychains by the rule of linkIfSafe.
    static void ensureKeychainAccess(const Path& home) noexcept;

    /// Links what programs look for below the home folder although it belongs to the user's session
    /// (see desktopLinks()) to the user's own: input method, fonts, themes and icons. A link is
    /// made only where its target exists, no link stands on the way to its place, and nothing or an
    /// empty folder is there. Nothing at all in a home that is or contains the user's own. Missing
    /// folders on the way are made with mode 0700; failures are swallowed.
    static void ensureDesktopAccess(const Path& home) noexcept;

    /// The same for the trash, so that a file thrown away from a shared folder is found in the
    /// user's, which is made first where the user has none. launch(config) does so when user
    /// folders are shared.
    static void ensureSharedTrash(const Path& home) noexcept;

    /// The instance log opened for appending, made when absent; null when it cannot be opened.
    static std::shared_ptr<const OwnedFd> instanceLogHandle(const Path& home) noexcept;

    /// Links each shared folder of `home` to the user's own by the rule of linkIfSafe. Which one
    /// that is, and whether it is shared at all, is told by UserFolders; the links keep the names
    /// of `sharedUserFolders`.
    static void ensureSharedUserFolders(const Path& home) noexcept;

    /// Makes `link` a symbolic link to `target`, unless `target` does not exist, `link` already is
    /// a link (wherever it points) or a folder with entries, or both are the same item. An empty
    /// folder or a plain file at `link` is replaced. Failures are swallowed.
    static void linkIfSafe(const Path& link, const Path& target) noexcept;

    /// Whether any shared folder of `home` exists as something other than a link. A
    /// folder that UserFolders does not share does not count.
    static bool needsSharedFolderMigration(const Path& home) noexcept;

    /// Moves what private copies of the shared folders hold into the user's own folders, under new
    /// names where a name is taken, and links them. Returns the number of moved items for each
    /// folder that existed as a real one. What cannot be moved stays where it is.
    static std::map<std::string, int> migrateSharedUserFolders(const Path& home);
    /// The same with `into` in place of the user's home.
    static std::map<std::string, int> migrateSharedUserFolders(const Path& home, const Path& into);
};

} // namespace ambrel
