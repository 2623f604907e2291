#pragma once

#include "Ambrel/Base/CodingError.h"
#include "Ambrel/Base/Path.h"
#include "Ambrel/Instance/Strategy.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ambrel {

using StringMap = std::map<std::string, std::string>;

/// What an instance opens.
enum class ShortcutKind {
    app,     ///< an installed application, run in isolation
    web,     ///< a web site, shown in the runner's own window
    file,    ///< a document, opened with the system's default handler
    command, ///< an executable with arguments
};

template <> struct RawValues<ShortcutKind> {
    static constexpr std::array<std::pair<ShortcutKind, std::string_view>, 4> table{{
        {ShortcutKind::app, "app"},
        {ShortcutKind::web, "web"},
        {ShortcutKind::file, "file"},
        {ShortcutKind::command, "command"},
    }};
};

/// The label drawn onto a wrapper's icon.
struct IconLabel {
    /// Where the label sits on the icon.
    enum class Position {
        bottom, ///< bottom of the text 8 % of the icon's height above the bottom edge
        center, ///< vertical centre of the text at the icon's vertical centre
        top,    ///< top of the text at 92 % of the icon's height, measured from the bottom
    };

    std::string text;     ///< drawn in capitals; an empty text draws no label
    std::string colorHex; ///< six hexadecimal digits, optionally after "#"
    Position position;

    /// Whether there is anything to draw, which blanks (spaces and tabs) alone are not.
    bool isVisible() const;
    bool operator==(const IconLabel&) const = default;
};

template <> struct RawValues<IconLabel::Position> {
    static constexpr std::array<std::pair<IconLabel::Position, std::string_view>, 3> table{{
        {IconLabel::Position::bottom, "bottom"},
        {IconLabel::Position::center, "center"},
        {IconLabel::Position::top, "top"},
    }};
};

/// The placeholder for the resolved instance home inside stored arguments and environment values.
inline constexpr std::string_view instanceHomePlaceholder = "{{instanceHome}}";

/// The key of `infoPlistOverrides` whose value is, on Linux, the name (argv[0]) that the started
/// application is given: programs of several toolkits make it the name of their windows.
inline constexpr const char* processNameKey = "KorvaneProcessName";

/// More such keys, for Linux alone and for applications: how the instance stands on the session's
/// bus, where its programs otherwise have names of their own. "true" for the first has them use the
/// user's names, for the second hides the user's secrets; the third adds to the names of the user
/// that they may call or own, "call NAME" and "own NAME" with ";" between them.
inline constexpr const char* sharedBusKey = "KorvaneSharedBus";
inline constexpr const char* hidesSecretsKey = "KorvaneHidesSecrets";
inline constexpr const char* busNamesKey = "KorvaneBusNames";

/// The configuration of one instance, stored in its wrapper as Contents/Resources/instance.json.
/// The record never validates its contents: what cannot be run is refused when it is launched.
/// The fields stand in the order in which they are decoded; ConfigFields.h tells of each.
struct InstanceConfig {
    std::string displayName;              ///< the instance's visible name; required in JSON
    std::string bundleId;                 ///< the wrapper's bundle identifier; required in JSON
    ShortcutKind kind{};                  ///< what the instance runs
    Path targetAppPath;                   ///< app kind: absolute path of the bundle, no tilde
    Path instanceHome;                    ///< private home, may start with "~"; required in JSON
    Strategy strategy{};                  ///< isolation strategy
    std::vector<std::string> extraArgs;   ///< arguments of the application, with placeholders
    StringMap environment;                ///< added variables, values with placeholders
    StringMap infoPlistOverrides;         ///< keys written into the wrapper's Info.plist
    bool registerAsBrowser = false;       ///< the wrapper declares itself a web browser
    bool openWithPassthrough = false;     ///< the wrapper accepts documents and passes them on
    std::optional<IconLabel> iconLabel;   ///< label drawn on the wrapper's icon
    bool menuBarIcon = false;             ///< the instance shows a status item
    bool menuBarIconTemplate = false;     ///< the status item's image is a template image
    bool shareUserFolders = true;         ///< Downloads, Documents and Desktop are the user's own
    std::optional<std::string> url;       ///< web kind: the site's address
    std::optional<Path> openPath;         ///< file kind: what to open, may start with "~"
    std::optional<Path> commandPath;      ///< command kind: the executable, may start with "~"
    std::vector<std::string> commandArgs; ///< the command's arguments, with placeholders
    std::optional<Path> workingDirectory; ///< the command's folder, may start with "~"

    /// Reads the JSON form. Unknown keys are ignored whatever they hold; absent optional keys and
    /// optional keys given as null take their defaults. Throws DecodingError at the first key, in
    /// field order, that is missing or of the wrong type, and for anything that is not JSON in
    /// UTF-8 or is nested deeper than 512 levels.
    static InstanceConfig decode(std::string_view json);

    /// The JSON form: pretty-printed, keys sorted, "/" escaped. Every field that is not optional is
    /// written, absent optional fields are left out. Throws EncodingError when a text is not UTF-8.
    std::string encode() const;

    /// `targetAppPath` as it stands, without tilde expansion.
    Path targetAppURL() const;
    /// `instanceHome` with its tilde expanded; otherwise unchanged.
    Path resolvedHome(const UserPlaces& user) const;
    /// `extraArgs` with every placeholder replaced by `resolvedHome`.
    std::vector<std::string> resolvedArgs(const UserPlaces& user) const;
    /// `environment` with the placeholders in its values replaced; keys stay as they are.
    StringMap resolvedEnvironment(const UserPlaces& user) const;
    /// `commandArgs` with every placeholder replaced by `resolvedHome`.
    std::vector<std::string> resolvedCommandArgs(const UserPlaces& user) const;
};

} // namespace ambrel
