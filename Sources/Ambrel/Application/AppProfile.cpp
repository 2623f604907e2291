#include "Ambrel/Application/AppProfile.h"

#include "Ambrel/Formats/Json.h"

#include <algorithm>

namespace ambrel {

AppProfile AppProfile::decode(std::string_view text) {
    using Strings = std::vector<std::string>;
    const auto root = json::parse(text);
    const json::KeyedContainer keys(root, "");
    AppProfile profile;
    profile.bundleId = keys.required<std::string>("bundleId");
    profile.displayName = keys.required<std::string>("displayName");
    profile.sandboxed = keys.required<bool>("sandboxed");
    profile.strategy = keys.required<Strategy>("strategy");
    profile.singleton = keys.required<SingletonTier>("singleton");
    profile.prefsLeak = keys.required<bool>("prefsLeak");
    profile.extraArgs = keys.required<Strings>("extraArgs");
    profile.verifiedOn = keys.required<Strings>("verifiedOn");
    profile.confidence = keys.required<Confidence>("confidence");
    return profile;
}

std::string AppProfile::encodedJSON() const {
    return json::write({
        {"bundleId", bundleId},
        {"displayName", displayName},
        {"sandboxed", sandboxed},
        {"strategy", rawValue(strategy)},
        {"singleton", rawValue(singleton)},
        {"prefsLeak", prefsLeak},
        {"extraArgs", extraArgs},
        {"verifiedOn", verifiedOn},
        {"confidence", rawValue(confidence)},
    });
}

AppProfile AppProfile::reconciled(const std::string& currentSignature) const {
    AppProfile copy = *this;
    const bool claims = confidence == Confidence::verified || confidence == Confidence::community;
    const bool holdsHere = std::ranges::find(verifiedOn, currentSignature) != verifiedOn.end();
    if (claims && !holdsHere) copy.confidence = Confidence::autoDetected;
    return copy;
}

} // namespace ambrel
