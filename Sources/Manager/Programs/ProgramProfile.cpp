#include "Manager/Programs/ProgramProfile.h"

#include "Ambrel/Base/BusName.h"
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

BusUse busFrom(const json::Value& value, const std::string& path) {
    const json::KeyedContainer keys(value, path);
    const auto names = [&](const char* key) {
        return keys.optional<std::vector<std::string>>(key).value_or(std::vector<std::string>());
    };
    return {.isShared = keys.optional<bool>("shared").value_or(false),
            .hidesSecrets = keys.optional<bool>("hideSecrets").value_or(false),
            .call = names("call"),
            .own = names("own"),
            .handsOver = keys.optional<bool>("handsOver")};
}

FormerStart formerFrom(const json::Value& value, const std::string& path) {
    const json::KeyedContainer keys(value, path);
    return {.arguments = keys.optional<std::vector<std::string>>("extraArgs")
                             .value_or(std::vector<std::string>()),
            .environment = keys.optional<StringMap>("environment").value_or(StringMap())};
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

Refusal unusable(const Path& file, const std::string& reason, Remedy remedy) {
    return Refusal(Refusal::Kind::unusableProfile, file,
                   "The profile " + ambrel::utf8::oneLine(file) + " cannot be used. " + reason,
                   remedy);
}

/// Of one that is not usable.
std::string whyUnusable(const ProgramProfile& profile) {
    for (const auto& names : {profile.bus.call, profile.bus.own}) {
        const auto bad = std::ranges::find_if_not(names, ambrel::isWellKnownBusName);
        if (bad != names.end()) return inQuotes(*bad) + " cannot be a name on the session bus.";
    }
    return "No program can be started with its arguments or variables.";
}

ProgramProfile read(const Path& file, Remedy remedy) {
    ProgramProfile profile;
    try {
        profile = ProgramProfile::decode(fileSystem::read(file));
    } catch (const ambrel::DecodingError& error) {
        throw unusable(file, error.description() + ".", remedy);
    } catch (const ambrel::FileError& error) {
        throw unusable(file, error.description() + ".", remedy);
    }
    profile.file = file;
    if (isUsable(profile)) return profile;
    throw unusable(file, whyUnusable(profile), remedy);
}

ProgramProfile readFor(const Path& file, const std::string& bundleId) {
    auto profile = read(file, Remedy::goWithoutProfile);
    if (profile.profile.bundleId == bundleId) return profile;
    throw unusable(file,
                   "It describes " + inQuotes(profile.profile.bundleId) + ", not " +
                       inQuotes(bundleId) + ".",
                   Remedy::goWithoutProfile);
}

/// What a profile can say of the windows' name.
constexpr const char* windowNameKeys[] = {"arguments", "environment", "processName",
                                          "startupWMClass"};
/// What it can say of the session's bus.
constexpr const char* busKeys[] = {"call", "handsOver", "hideSecrets", "own", "shared"};
/// What it can say else, beside the keys of every profile.
constexpr const char* addedKeys[] = {"bus", "environment", "former", "windowName"};
/// What it can say of what it had said before.
constexpr const char* formerKeys[] = {"environment", "extraArgs"};

json::Value valueOf(const WindowName& name) {
    json::Value value = json::Value::object();
    if (!name.arguments.empty()) value["arguments"] = name.arguments;
    if (!name.environment.empty()) value["environment"] = name.environment;
    if (name.byProcessName) value["processName"] = true;
    if (name.startupWmClass) value["startupWMClass"] = *name.startupWmClass;
    return value;
}

json::Value valueOf(const BusUse& bus) {
    json::Value value = json::Value::object();
    if (bus.isShared) value["shared"] = true;
    if (bus.hidesSecrets) value["hideSecrets"] = true;
    if (!bus.call.empty()) value["call"] = bus.call;
    if (!bus.own.empty()) value["own"] = bus.own;
    if (bus.handsOver) value["handsOver"] = *bus.handsOver;
    return value;
}

json::Value valueOf(const FormerStart& former) {
    json::Value value = json::Value::object();
    if (!former.arguments.empty()) value["extraArgs"] = former.arguments;
    if (!former.environment.empty()) value["environment"] = former.environment;
    return value;
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
    if (const auto* bus = keys.find("bus")) result.bus = busFrom(*bus, keys.pathOf("bus"));
    if (const auto* former = keys.find("former")) {
        result.former = formerFrom(*former, keys.pathOf("former"));
    }
    return result;
}

std::string ProgramProfile::encodedJSON() const {
    auto value = json::parse(profile.encodedJSON());
    if (!environment.empty()) value["environment"] = environment;
    if (windowName) value["windowName"] = valueOf(*windowName);
    if (bus != BusUse()) value["bus"] = valueOf(bus);
    if (former != FormerStart()) value["former"] = valueOf(former);
    return json::write(value);
}

bool isUsable(const ProgramProfile& profile) {
    const auto name = profile.windowName.value_or(WindowName());
    return std::ranges::all_of(profile.profile.extraArgs, isUsableText) &&
           std::ranges::all_of(name.arguments, isUsableText) && areUsable(profile.environment) &&
           areUsable(name.environment) && isUsable(profile.bus);
}

std::vector<std::string> profileKeys() {
    std::vector<std::string> keys(std::begin(addedKeys), std::end(addedKeys));
    const auto every = json::parse(ambrel::AppProfile().encodedJSON());
    for (const auto& [key, ignored] : every.items()) keys.push_back(key);
    for (const auto* key : windowNameKeys) keys.push_back(std::string("windowName.") + key);
    for (const auto* key : busKeys) keys.push_back(std::string("bus.") + key);
    for (const auto* key : formerKeys) keys.push_back(std::string("former.") + key);
    return keys;
}

std::vector<std::string> unknownKeys(std::string_view text) {
    const auto known = profileKeys();
    std::vector<std::string> unknown;
    const auto look = [&](const json::Value& value, const std::string& above) {
        if (!value.is_object()) return;
        for (const auto& [key, ignored] : value.items()) {
            if (std::ranges::find(known, above + key) == known.end()) {
                unknown.push_back(above + key);
            }
        }
    };
    const auto root = json::parse(text);
    look(root, "");
    for (const std::string part : {"bus", "former", "windowName"}) {
        if (root.contains(part)) look(root[part], part + ".");
    }
    return unknown;
}

ProgramProfile readProfile(const Path& file) { return read(file, Remedy::none); }

Path ownProfileFile(const std::string& bundleId, const ambrel::UserPlaces& user) {
    if (user.config.empty()) return {};
    return paths::join(user.config, "korvane/profiles/" + bundleId + ".json");
}

std::optional<ProgramProfile> findProfile(const std::string& bundleId,
                                          const ambrel::UserPlaces& user) {
    const bool isName = !bundleId.empty() && bundleId.find('/') == std::string::npos &&
                        bundleId.find('\0') == std::string::npos;
    if (!isName) return std::nullopt;
    for (const auto& folder : profileFolders(user)) {
        const auto file = paths::join(folder, bundleId + ".json");
        if (fileSystem::kindOf(file)) return readFor(file, bundleId);
    }
    return std::nullopt;
}

} // namespace korvane
