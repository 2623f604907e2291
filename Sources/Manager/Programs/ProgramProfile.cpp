#include "Manager/Programs/ProgramProfile.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Formats/Json.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/MainBundle.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"

#include <algorithm>

namespace korvane {

using ambrel::Path;
using ambrel::StringMap;
namespace json = ambrel::json;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

WindowName windowNameFrom(const json::Value& value, const std::string& path) {
    const json::KeyedContainer keys(value, path);
    return {.arguments = keys.optional<std::vector<std::string>>("arguments")
                             .value_or(std::vector<std::string>()),
            .environment = keys.optional<StringMap>("environment").value_or(StringMap()),
            .byProcessName = keys.optional<bool>("processName").value_or(false),
            .startupWmClass = keys.optional<std::string>("startupWMClass")};
}

/// The user's own profiles come first, so that they can correct installed ones.
std::vector<Path> profileFolders(const ambrel::UserPlaces& user) {
    std::vector<Path> folders;
    const auto& own = user.config;
    if (!own.empty()) folders.push_back(paths::join(own, "korvane/profiles"));
    const auto data = ambrel::MainBundle::current().dataURL;
    if (data) folders.push_back(paths::join(*data, "profiles"));
    return folders;
}

bool isUsableText(const std::string& text) { return text.find('\0') == std::string::npos; }

bool areUsable(const StringMap& variables) {
    return std::ranges::all_of(variables, [](const auto& variable) {
        const auto& [name, value] = variable;
        return !name.empty() && name.find('=') == std::string::npos && isUsableText(name) &&
               isUsableText(value);
    });
}

/// Whether no program would refuse to be started so.
bool isStartable(const ProgramProfile& profile) {
    const auto name = profile.windowName.value_or(WindowName());
    return std::ranges::all_of(profile.profile.extraArgs, isUsableText) &&
           std::ranges::all_of(name.arguments, isUsableText) && areUsable(profile.environment) &&
           areUsable(name.environment);
}

ProgramProfile read(const Path& file, const std::string& bundleId) {
    const auto refused = [&](const std::string& reason) {
        return Refusal(Refusal::Kind::unusableProfile, file,
                       "The profile " + ambrel::utf8::oneLine(file) + " cannot be used. " + reason,
                       Remedy::goWithoutProfile);
    };
    try {
        auto profile = ProgramProfile::decode(fileSystem::read(file));
        profile.file = file;
        if (!isStartable(profile)) {
            throw refused("No program can be started with its arguments or variables.");
        }
        if (profile.profile.bundleId == bundleId) return profile;
        throw refused("It describes " + inQuotes(profile.profile.bundleId) + ", not " +
                      inQuotes(bundleId) + ".");
    } catch (const ambrel::DecodingError& error) {
        throw refused(error.description() + ".");
    } catch (const ambrel::FileError& error) {
        throw refused(error.description() + ".");
    }
}

} // namespace

ProgramProfile ProgramProfile::decode(std::string_view text) {
    ProgramProfile result;
    result.profile = ambrel::AppProfile::decode(text);
    const auto root = json::parse(text);
    const json::KeyedContainer keys(root, "");
    result.environment = keys.optional<StringMap>("environment").value_or(StringMap());
    if (const auto* name = keys.find("windowName")) {
        result.windowName = windowNameFrom(*name, keys.pathOf("windowName"));
    }
    return result;
}

std::optional<ProgramProfile> findProfile(const std::string& bundleId,
                                          const ambrel::UserPlaces& user) {
    const bool isName = !bundleId.empty() && bundleId.find('/') == std::string::npos &&
                        bundleId.find('\0') == std::string::npos;
    if (!isName) return std::nullopt;
    for (const auto& folder : profileFolders(user)) {
        const auto file = paths::join(folder, bundleId + ".json");
        if (fileSystem::kindOf(file)) return read(file, bundleId);
    }
    return std::nullopt;
}

} // namespace korvane
