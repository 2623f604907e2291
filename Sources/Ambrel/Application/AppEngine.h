#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Base/RawValue.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace ambrel {

/// The engine of an application, which decides how it is given a data folder of its own.
enum class AppEngine { electron, chromium, firefox, eclipse, other };

/// How an engine was told: the file below the bundle, or the identifier, that proved it. `proof` is
/// empty for AppEngine::other.
struct EngineFinding {
    AppEngine engine{};
    std::string proof;
};

/// The engine of the bundle at `app`. `bundleId` absent: read from the bundle, empty when it cannot
/// be read. Never fails for an unreadable bundle.
EngineFinding findEngine(const Path& app, const std::optional<std::string>& bundleId = {});
bool isElectron(const Path& app);

/// The arguments that give the engine of `app` a data folder of its own, with the placeholder for
/// the instance home unexpanded; empty for an unknown engine.
std::vector<std::string> autoDataDirArgs(const Path& app,
                                         const std::optional<std::string>& bundleId = {});

template <> struct RawValues<AppEngine> {
    static constexpr std::array<std::pair<AppEngine, std::string_view>, 5> table{{
        {AppEngine::electron, "electron"},
        {AppEngine::chromium, "chromium"},
        {AppEngine::firefox, "firefox"},
        {AppEngine::eclipse, "eclipse"},
        {AppEngine::other, "other"},
    }};
};

} // namespace ambrel
