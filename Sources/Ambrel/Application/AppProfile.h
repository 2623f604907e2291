#pragma once

#include "Ambrel/Base/CodingError.h"
#include "Ambrel/Instance/Strategy.h"

#include <string>
#include <vector>

namespace ambrel {

/// What is known of one application's behaviour under isolation. The library holds no profiles
/// and does not look them up.
struct AppProfile {
    std::string bundleId;                ///< the application that the profile describes
    std::string displayName;             ///< its name for display
    bool sandboxed = false;              ///< it runs in the App Sandbox
    Strategy strategy{};                 ///< the isolation strategy to use
    SingletonTier singleton{};           ///< how it enforces a single running copy
    bool prefsLeak = false;              ///< its preferences leak between instances
    std::vector<std::string> extraArgs;  ///< launch arguments that an instance needs
    std::vector<std::string> verifiedOn; ///< signatures of the environments it was verified on
    Confidence confidence{};             ///< how far the profile can be trusted

    /// Reads one JSON object. All nine keys are required; others are ignored. Throws DecodingError.
    static AppProfile decode(std::string_view json);

    /// The profile as JSON text: pretty-printed, keys sorted, all nine always present. Throws
    /// EncodingError when a text is not UTF-8; never returns an empty string.
    std::string encodedJSON() const;

    /// A copy that no longer claims to be verified (or reported) where `currentSignature` is not
    /// among `verifiedOn`: its confidence becomes autoDetected. Never raised, nothing else changed.
    AppProfile reconciled(const std::string& currentSignature) const;
};

} // namespace ambrel
