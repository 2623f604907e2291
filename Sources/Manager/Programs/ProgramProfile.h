#pragma once

#include "Ambrel/Application/AppProfile.h"
#include "Ambrel/Base/Path.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Manager/Programs/SessionBus.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// The placeholder for an instance's desktop id inside a profile.
inline constexpr std::string_view desktopIdPlaceholder = "{{desktopId}}";

/// The same with "_" for each ".", as programs have it that make an X resource name of it.
inline constexpr std::string_view underscoredIdPlaceholder = "{{desktopIdUnderscored}}";

/// The same with a capital letter in front, as GTK makes a class of a program's name.
inline constexpr std::string_view capitalizedIdPlaceholder = "{{desktopIdCapitalized}}";

/// How a program's windows are given the name of its instance. In all texts the placeholders
/// stand for the instance's desktop id.
struct WindowName {
    std::vector<std::string> arguments;        ///< behind those of the engine and the profile
    ambrel::StringMap environment;             ///< added variables
    bool byProcessName = false;                ///< the desktop id as the started program's argv[0]
    std::optional<std::string> startupWmClass; ///< the name that windows have; absent: the id
};

/// What earlier versions of a profile gave, and this one does not: nobody's own in an instance that
/// was made with one of them.
struct FormerStart {
    std::vector<std::string> arguments;
    ambrel::StringMap environment;

    bool operator==(const FormerStart&) const = default;
};

/// A profile with what this manager adds to its format: variables for the environment, the name of
/// windows, how the program stands to the session's bus, and what it had said before.
struct ProgramProfile {
    ambrel::AppProfile profile;
    ambrel::StringMap environment;        ///< values with the placeholder for the instance home
    std::optional<WindowName> windowName; ///< absent: told by the program's libraries
    BusUse bus;
    FormerStart former;
    ambrel::Path file; ///< where it was read

    /// Throws DecodingError. The added keys "environment", "windowName",
    /// "bus" and "former" may be missing.
    static ProgramProfile decode(std::string_view json);
    /// The same as JSON text, pretty-printed with sorted keys; the added keys where they say
    /// something. Throws EncodingError when a text is not UTF-8.
    std::string encodedJSON() const;
};

/// Whether programs can be started as the profile says: no text in it has a NUL character, its
/// variables have names, and its names on the bus can be such.
bool isUsable(const ProgramProfile& profile);

/// The keys in the text of a profile that mean nothing, as paths; `json` is one that decodes.
std::vector<std::string> unknownKeys(std::string_view json);

/// All keys that mean something, as paths.
std::vector<std::string> profileKeys();

/// Reads the profile `file`, whatever application it describes. Throws Refusal unusableProfile.
ProgramProfile readProfile(const ambrel::Path& file);

/// Where a profile of the user's own for the application `bundleId` stands; empty where the user
/// has no folder for settings.
ambrel::Path ownProfileFile(const std::string& bundleId, const ambrel::UserPlaces& user);

/// The profile of the application `bundleId`: BUNDLEID.json in the user's own folder
/// (korvane/profiles in the user's configuration folder), else the one installed with the manager.
/// Absent when there is none. Throws Refusal unusableProfile for one that cannot be read or
/// describes another application.
std::optional<ProgramProfile> findProfile(const std::string& bundleId,
                                          const ambrel::UserPlaces& user);

} // namespace korvane
