#include "korvane/Output/ConfigText.h"

namespace korvane::configText {

namespace {

using Texts = std::vector<std::string>;

Texts texts(const std::string& value) { return {value}; }
Texts texts(bool value) { return {value ? "true" : "false"}; }
Texts texts(const Texts& value) { return value; }

Texts texts(const ambrel::StringMap& value) {
    Texts lines;
    for (const auto& [key, text] : value) lines.push_back(key + "=" + text);
    return lines;
}

Texts texts(const ambrel::IconLabel& value) {
    return {value.text + " (" + value.colorHex + ", " + std::string(rawValue(value.position)) +
            ")"};
}

template <class Enum>
requires std::is_enum_v<Enum> Texts texts(Enum value) {
    return {std::string(ambrel::rawValue(value))};
}

template <class T> Texts texts(const std::optional<T>& value) {
    return value ? texts(*value) : Texts();
}

/// A choice always has a value, which is of no interest where it has no effect.
template <class T>
bool isShown(const ambrel::ConfigField<T>& field, const ambrel::InstanceConfig& config) {
    return !std::is_enum_v<T> || field.kinds.contains(config.kind);
}

} // namespace

std::string subject(const ambrel::InstanceConfig& config) {
    std::string found;
    ambrel::forEachField([&](const auto& field) {
        if (field.part != ambrel::ConfigPart::subject) return;
        if (!field.kinds.contains(config.kind)) return;
        for (const auto& text : texts(config.*field.member)) found = text;
    });
    return found;
}

std::vector<Row> rows(const ambrel::InstanceConfig& config, ambrel::ConfigPart part) {
    std::vector<Row> rows;
    ambrel::forEachField([&](const auto& field) {
        if (field.part != part || !isShown(field, config)) return;
        for (const auto& text : texts(config.*field.member)) rows.push_back({field.key, text});
    });
    return rows;
}

} // namespace korvane::configText
