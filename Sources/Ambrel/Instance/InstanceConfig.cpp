#include "Ambrel/Instance/InstanceConfig.h"

#include "Ambrel/Formats/Json.h"
#include "Ambrel/Instance/ConfigFields.h"

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

template <class T> constexpr bool isOptional = false;
template <class T> constexpr bool isOptional<std::optional<T>> = true;

template <class T> json::Value encoded(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return rawValue(value);
    } else {
        return value;
    }
}

json::Value encoded(const IconLabel& label) {
    return {
        {"text", label.text}, {"colorHex", label.colorHex}, {"position", encoded(label.position)}};
}

} // namespace

template <> IconLabel json::decode(const Value& value, const std::string& path) {
    const KeyedContainer keys(value, path);
    return {.text = keys.required<std::string>("text"),
            .colorHex = keys.required<std::string>("colorHex"),
            .position = keys.required<IconLabel::Position>("position")};
}

namespace {

/// An absent value leaves the default, which the record was made with.
template <class T>
void decodeInto(T& value, const json::KeyedContainer& keys, const char* key, Presence presence) {
    if constexpr (isOptional<T>) {
        value = keys.optional<typename T::value_type>(key);
    } else if (presence == Presence::required) {
        value = keys.required<T>(key);
    } else if (auto found = keys.optional<T>(key)) {
        value = std::move(*found);
    }
}

template <class T> void encodeInto(json::Value& object, const char* key, const T& value) {
    if constexpr (isOptional<T>) {
        if (value) object[key] = encoded(*value);
    } else {
        object[key] = encoded(value);
    }
}

} // namespace

InstanceConfig InstanceConfig::decode(std::string_view text) {
    const auto root = json::parse(text);
    const json::KeyedContainer keys(root, "");
    InstanceConfig config;
    forEachField([&](const auto& field) {
        decodeInto(config.*field.member, keys, field.key, field.presence);
    });
    return config;
}

std::string InstanceConfig::encode() const {
    auto object = json::Value::object();
    forEachField([&](const auto& field) { encodeInto(object, field.key, this->*field.member); });
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
