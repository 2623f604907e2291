#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Manager/Programs/StartPlan.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What becomes of an instance that stands where the new one is to stand.
enum class Existing { refuse, replace };

/// What a new instance is to be. Only `name`, `kind` and what the kind opens have to be given; all
/// else has a default, which is what the instance that is replaced has, where that has something of
/// the user's own. Paths are absolute; those that are stored may begin with "~" instead.
struct CreateRequest {
    std::string name; ///< of the instance and its bundle; blanks around it are taken away
    ambrel::ShortcutKind kind{};
    ambrel::Path targetApp; ///< app kind: the application's bundle
    /// App kind, in place of `targetApp`: what requireMeantProgram() is asked for. An installed
    /// program that is no application yet becomes one with the instance.
    std::optional<std::string> program;
    std::string url;                      ///< web kind
    ambrel::Path openPath;                ///< file kind, stored
    ambrel::Path commandPath;             ///< command kind, stored
    std::vector<std::string> commandArgs; ///< command kind
    bool inTerminal = false;              ///< command kind: opened in a terminal's window

    std::optional<ambrel::Path> home;         ///< stored; absent: "~/KorvaneInstances/" + name
    std::optional<ambrel::Path> outputFolder; ///< absent: "~/Applications"
    std::optional<std::string> bundleId; ///< absent: made of the name, with a counter if need be
    std::optional<ambrel::Path> runner;  ///< absent: the installed one
    Existing existing = Existing::refuse;

    std::optional<ambrel::Strategy> strategy; ///< absent: the profile's, else homeOverride
    std::vector<std::string> args;            ///< in place of those worked out; empty: these
    std::vector<std::string> addedArgs;       ///< behind those
    ambrel::StringMap environment;            ///< beside the variables worked out, and before them
    std::optional<std::string> processName;   ///< before one worked out
    std::optional<bool> sharedBus;            ///< absent: the profile's, else false
    std::optional<bool> hideSecrets;          ///< the same
    UseProfile useProfile = UseProfile::yes;
    std::optional<ambrel::Path> workingDirectory; ///< stored
    std::optional<bool> shareUserFolders;         ///< absent: true; the next ones: false

    std::optional<ambrel::Path> icon;           ///< any picture
    std::optional<ambrel::IconLabel> iconLabel; ///< one of blanks is none
    std::optional<bool> hideIcon;
    ambrel::StringMap infoPlistOverrides;
    std::optional<bool> registerAsBrowser;
    std::optional<bool> openWithPassthrough;
    std::optional<bool> menuBarIcon;
    std::optional<bool> menuBarIconTemplate;
};

/// Throws Refusal for a request that can become no instance, whatever there is on disk: badName,
/// badText, badPath, badAddress, badColor, badIdentifier, badProcessName, badBusSetting and
/// nothingToOpen, and hasNoEffect for a field that means nothing to the kind or on this system.
void requireSensible(const CreateRequest& request);

/// The process name that the request asks for, by its field or by its overrides.
std::optional<std::string> processNameOf(const CreateRequest& request);

} // namespace korvane
