#include "Ambrel/Instance/InstanceConfig.h"

#include "Ambrel/Formats/Json.h"

namespace ambrel {

namespace {

std::string replacingPlaceholder(std::string_view text, std::string_view home) {
    std::string result;
    std::size_t from = 0;
    for (auto at = text.find(instanceHomePlaceholder); at != std::string_view::npos;
         at = text.find(instanceHomePlaceholder, from)) {
        result.append(text.substr(from, at - from)).append(home);
        from = at + instanceHomePlaceholder.size();
    }
    return result.append(text.substr(from));
}

std::vector<std::string> replacingPlaceholders(const std::vector<std::string>& texts,
                                               std::string_view home) {
    std::vector<std::string> result;
    result.reserve(texts.size());
    for (const auto& text : texts) result.push_back(replacingPlaceholder(text, home));
    return result;
}

std::optional<IconLabel> decodeLabel(const json::KeyedContainer& keys) {
    const auto* value = keys.find("iconLabel");
    if (value == nullptr) return std::nullopt;
    const json::KeyedContainer label(*value, keys.pathOf("iconLabel"));
    return IconLabel{.text = label.required<std::string>("text"),
                     .colorHex = label.required<std::string>("colorHex"),
                     .position = label.required<IconLabel::Position>("position")};
}

json::Value encodeLabel(const IconLabel& label) {
    return {
        {"text", label.text}, {"colorHex", label.colorHex}, {"position", rawValue(label.position)}};
}

template <class T>
void writeIfPresent(json::Value& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = *value;
}

} // namespace

InstanceConfig InstanceConfig::decode(std::string_view text) {
    using Strings = std::vector<std::string>;
    const auto root = json::parse(text);
    const json::KeyedContainer keys(root, "");
    InstanceConfig c;
    c.displayName = keys.required<std::string>("displayName");
    c.bundleId = keys.required<std::string>("bundleId");
    c.kind = keys.optional<ShortcutKind>("kind").value_or(ShortcutKind::app);
    c.targetAppPath = keys.optional<Path>("targetAppPath").value_or(Path());
    c.instanceHome = keys.required<Path>("instanceHome");
    c.strategy = keys.optional<Strategy>("strategy").value_or(Strategy::homeOverride);
    c.extraArgs = keys.optional<Strings>("extraArgs").value_or(Strings());
    c.environment = keys.optional<StringMap>("environment").value_or(StringMap());
    c.infoPlistOverrides = keys.optional<StringMap>("infoPlistOverrides").value_or(StringMap());
    c.registerAsBrowser = keys.optional<bool>("registerAsBrowser").value_or(false);
    c.openWithPassthrough = keys.optional<bool>("openWithPassthrough").value_or(false);
    c.iconLabel = decodeLabel(keys);
    c.menuBarIcon = keys.optional<bool>("menuBarIcon").value_or(false);
    c.menuBarIconTemplate = keys.optional<bool>("menuBarIconTemplate").value_or(false);
    // True, unlike the others: files written before the key existed share the folders.
    c.shareUserFolders = keys.optional<bool>("shareUserFolders").value_or(true);
    c.url = keys.optional<std::string>("url");
    c.openPath = keys.optional<Path>("openPath");
    c.commandPath = keys.optional<Path>("commandPath");
    c.commandArgs = keys.optional<Strings>("commandArgs").value_or(Strings());
    c.workingDirectory = keys.optional<Path>("workingDirectory");
    return c;
}

std::string InstanceConfig::encode() const {
    json::Value object{
        {"displayName", displayName},
        {"bundleId", bundleId},
        {"kind", rawValue(kind)},
        {"targetAppPath", targetAppPath},
        {"instanceHome", instanceHome},
        {"strategy", rawValue(strategy)},
        {"extraArgs", extraArgs},
        {"environment", environment},
        {"infoPlistOverrides", infoPlistOverrides},
        {"registerAsBrowser", registerAsBrowser},
        {"openWithPassthrough", openWithPassthrough},
        {"menuBarIcon", menuBarIcon},
        {"menuBarIconTemplate", menuBarIconTemplate},
        {"shareUserFolders", shareUserFolders},
        {"commandArgs", commandArgs},
    };
    if (iconLabel) object["iconLabel"] = encodeLabel(*iconLabel);
    writeIfPresent(object, "url", url);
    writeIfPresent(object, "openPath", openPath);
    writeIfPresent(object, "commandPath", commandPath);
    writeIfPresent(object, "workingDirectory", workingDirectory);
    return json::write(object);
}

Path InstanceConfig::targetAppURL() const { return targetAppPath; }

Path InstanceConfig::resolvedHome(const UserPlaces& user) const {
    return user.expandingTilde(instanceHome);
}

std::vector<std::string> InstanceConfig::resolvedArgs(const UserPlaces& user) const {
    return replacingPlaceholders(extraArgs, resolvedHome(user));
}

StringMap InstanceConfig::resolvedEnvironment(const UserPlaces& user) const {
    const auto home = resolvedHome(user);
    StringMap result;
    for (const auto& [key, value] : environment) result[key] = replacingPlaceholder(value, home);
    return result;
}

std::vector<std::string> InstanceConfig::resolvedCommandArgs(const UserPlaces& user) const {
    return replacingPlaceholders(commandArgs, resolvedHome(user));
}

} // namespace ambrel
