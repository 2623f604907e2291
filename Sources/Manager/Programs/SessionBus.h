#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Manager/Base/Notice.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How instances stand to the bus of their user's session, where programs meet by name. On it each
/// instance of an application has names of its own, unless its overrides say otherwise.
namespace korvane {

/// What a profile says of its program and the bus.
struct BusUse {
    bool isShared = false;         ///< without names of its own
    bool hidesSecrets = false;     ///< the service that keeps the user's passwords is not there
    std::vector<std::string> call; ///< names of the user's that the program may call
    std::vector<std::string> own;  ///< names that it may have as the user's own copy would
    /// Whether a copy leaves its work to one that runs where they share the bus; absent: not known.
    std::optional<bool> handsOver{};

    bool operator==(const BusUse&) const = default;
};

/// The same as overrides of an instance; none for what is so anyway.
ambrel::StringMap overridesFor(const BusUse& use);

/// Whether all names in it can be names on the bus.
bool isUsable(const BusUse& use);

/// What `overrides` say under ambrel::sharedBusKey or ambrel::hidesSecretsKey; absent where they
/// say nothing.
std::optional<bool> busChoice(const ambrel::StringMap& overrides, const char* key);
void setBusChoice(ambrel::StringMap& overrides, const char* key, std::optional<bool> choice);

/// Throws Refusal badBusSetting for overrides about the bus that nobody could heed.
void requireBusSettings(const ambrel::StringMap& overrides);

/// Throws Refusal hasNoEffect about `name` for an instance of another kind than an application, and
/// where programs do not meet on a bus.
void requireBusHeeded(const std::string& name, ambrel::ShortcutKind kind);

/// Why an instance has no names of its own.
enum class BusSharing {
    none,       ///< it has
    asked,      ///< it was asked for
    byProfile,  ///< its profile says so
    byVariable, ///< its environment names the bus
};

/// How an instance stands to the bus, as far as that can be told without its session.
struct BusStanding {
    BusSharing sharing = BusSharing::none;
    bool hidesSecrets = false;
    std::vector<std::string> sharedNames; ///< beside the usual ones: "call NAME" or "own NAME"

    bool hasOwnNames() const { return sharing == BusSharing::none; }
};

/// By its overrides and its environment. `profile` is what the profile of the program says, if
/// there is one.
BusStanding busStanding(const ambrel::StringMap& overrides, const ambrel::StringMap& environment,
                        const std::optional<BusUse>& profile);

/// What is said of the bus for an instance that stands so, and means nothing: what needs names of
/// its own, where it has none.
std::vector<Notice> noticesOnUnheeded(const BusStanding& standing);

/// Throws Refusal hasNoEffect where an instance that stands so hides secrets, and has no names of
/// its own: nothing would hide them.
void requireSecretsHideable(const BusStanding& standing);

} // namespace korvane
