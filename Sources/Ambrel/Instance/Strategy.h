#pragma once

#include "Ambrel/Base/RawValue.h"

#include <array>

namespace ambrel {

/// How an instance is kept apart from the normal copy of its application. At launch the three
/// supported strategies are alike; only `unsupported` changes what the launcher does.
enum class Strategy {
    homeOverride,      ///< started with its home folder pointed at the instance home
    containerRedirect, ///< a redirection of the application's data container
    wrapperIdentity,   ///< isolation through the wrapper's own identity
    unsupported,       ///< the application cannot be cloned; its launch is refused
};

/// How an application enforces that only one copy of it runs.
enum class SingletonTier {
    none,         ///< it does not
    lockFile,     ///< a lock file in its data folder
    machPort,     ///< a named Mach port
    lsProhibited, ///< the Info.plist key "LSMultipleInstancesProhibited"
    unknown,      ///< not known
};

/// How far a profile's claims can be trusted.
enum class Confidence {
    verified,     ///< tested to work
    community,    ///< reported by users
    autoDetected, ///< inferred automatically
    broken,       ///< known not to work
};

// The two styles of raw values, hyphenated and camel case, are both part of the file formats.
template <> struct RawValues<Strategy> {
    static constexpr std::array<std::pair<Strategy, std::string_view>, 4> table{{
        {Strategy::homeOverride, "home-override"},
        {Strategy::containerRedirect, "container-redirect"},
        {Strategy::wrapperIdentity, "wrapper-identity"},
        {Strategy::unsupported, "unsupported"},
    }};
};

template <> struct RawValues<SingletonTier> {
    static constexpr std::array<std::pair<SingletonTier, std::string_view>, 5> table{{
        {SingletonTier::none, "none"},
        {SingletonTier::lockFile, "lockFile"},
        {SingletonTier::machPort, "machPort"},
        {SingletonTier::lsProhibited, "lsProhibited"},
        {SingletonTier::unknown, "unknown"},
    }};
};

template <> struct RawValues<Confidence> {
    static constexpr std::array<std::pair<Confidence, std::string_view>, 4> table{{
        {Confidence::verified, "verified"},
        {Confidence::community, "community"},
        {Confidence::autoDetected, "autoDetected"},
        {Confidence::broken, "broken"},
    }};
};

} // namespace ambrel
