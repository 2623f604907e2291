#include "korvane/Verbs/ConfigEdit.h"

#include "Manager/Base/ManagerError.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Programs/StartPlan.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <variant>
#include <vector>

namespace korvane::edit {

using ambrel::InstanceConfig;
using ambrel::ShortcutKind;
using ambrel::Strategy;
using ambrel::StringMap;
using nlohmann::json;

namespace {

using List = std::vector<std::string>;
using OptionalText = std::optional<std::string>;
using OptionalLabel = std::optional<ambrel::IconLabel>;

/// How a text becomes a stored one.
enum class TextForm { plain, path, expandedPath };

struct TextField {
    std::string InstanceConfig::*member;
    TextForm form;
};
struct OptionalField {
    OptionalText InstanceConfig::*member;
    TextForm form;
};

using Field = std::variant<TextField, OptionalField, bool InstanceConfig::*, List InstanceConfig::*,
                           StringMap InstanceConfig::*, ShortcutKind InstanceConfig::*,
                           Strategy InstanceConfig::*, OptionalLabel InstanceConfig::*>;

const std::vector<std::pair<std::string, Field>>& fields() {
    using C = InstanceConfig;
    static const std::vector<std::pair<std::string, Field>> table{
        {"kind", &C::kind},
        // The launcher takes this path as it stands, without a tilde's meaning.
        {"targetAppPath", TextField{&C::targetAppPath, TextForm::expandedPath}},
        {"instanceHome", TextField{&C::instanceHome, TextForm::path}},
        {"strategy", &C::strategy},
        {"extraArgs", &C::extraArgs},
        {"environment", &C::environment},
        {"iconLabel", &C::iconLabel},
        {"menuBarIcon", &C::menuBarIcon},
        {"menuBarIconTemplate", &C::menuBarIconTemplate},
        {"shareUserFolders", &C::shareUserFolders},
        {"url", OptionalField{&C::url, TextForm::plain}},
        {"openPath", OptionalField{&C::openPath, TextForm::path}},
        {"commandPath", OptionalField{&C::commandPath, TextForm::path}},
        {"commandArgs", &C::commandArgs},
        {"workingDirectory", OptionalField{&C::workingDirectory, TextForm::path}},
    };
    return table;
}

/// Fields that take effect only through the bundle's Info.plist, icon or folder name, which an
/// edit leaves alone, and what to give to "create" instead.
const std::vector<std::pair<std::string, std::string>>& bundleKeys() {
    static const std::vector<std::pair<std::string, std::string>> table{
        {"displayName", "under the new name, with --home to go on with its data, after deleting "
                        "this one"},
        {"bundleId", "with --replace --bundle-id ID"},
        {"infoPlistOverrides", "with --replace --plist K=V"},
        {"registerAsBrowser", "with --replace --browser, or without"},
        {"openWithPassthrough", "with --replace --open-with, or without"},
        {"customIcon", "with --replace --icon FILE"},
        {"hideWrapperIcon", "with --replace --hide-icon, or without"},
        {"outputDir", "with --output DIR, after deleting this one"},
    };
    return table;
}

constexpr std::string_view environmentPrefix = "environment.";
/// The one override that the launch heeds, and so the one that an edit takes.
const std::string processNameField = std::string("infoPlistOverrides.") + ambrel::processNameKey;

void refuseBundleKey(const std::string& key) {
    for (const auto& [name, instead] : bundleKeys()) {
        if (key != name && !key.starts_with(name + ".")) continue;
        throw Refusal("The bundle carries " + name +
                      " outside its configuration (Info.plist, icon "
                      "or folder name), and an edit would not change it. Create the instance again "
                      "instead, " +
                      instead + ".");
    }
}

const Field& requireField(const std::string& key) {
    refuseBundleKey(key);
    std::vector<std::string> names;
    for (const auto& [name, field] : fields()) {
        if (name == key) return field;
        names.push_back(name);
    }
    for (const auto& [name, instead] : bundleKeys()) names.push_back(name);
    names.push_back(processNameField);
    const auto meant = nearest(key, names);
    throw UsageError(inQuotes(key) + " is no key of an instance." +
                     (meant.empty() ? "" : " Did you mean " + inQuotes(meant) + "?") +
                     " See: korvane show NAME --json");
}

[[noreturn]] void refuseValue(const std::string& key, const std::string& value,
                              const std::string& wanted) {
    throw UsageError(key + " wants " + wanted + ", not " + inQuotes(value) + ".");
}

/// The value as JSON; "discarded" when it is none.
json parsed(const std::string& value) { return json::parse(value, nullptr, false); }

/// No program can be given a text with a NUL character in it.
bool isUsableText(const json& element) {
    return element.is_string() &&
           element.get_ref<const std::string&>().find('\0') == std::string::npos;
}

bool isVariableName(const std::string& name) {
    return !name.empty() && name.find('=') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

bool booleanFrom(const std::string& key, const std::string& value) {
    const auto found = parsed(value);
    if (!found.is_boolean()) refuseValue(key, value, "true or false");
    return found.get<bool>();
}

List listFrom(const std::string& key, const std::string& value) {
    const auto found = parsed(value);
    const bool fits = found.is_array() && std::all_of(found.begin(), found.end(), isUsableText);
    if (!fits) refuseValue(key, value, R"(a JSON list of texts, as in ["-x", "y"])");
    return found.get<List>();
}

StringMap mapFrom(const std::string& key, const std::string& value) {
    const auto found = parsed(value);
    const bool fits = found.is_object() && std::all_of(found.begin(), found.end(), isUsableText);
    if (!fits) refuseValue(key, value, R"(a JSON object of texts, as in {"LANG": "C"})");
    auto map = found.get<StringMap>();
    for (const auto& [name, ignored] : map) {
        if (!isVariableName(name)) refuseValue(key, value, "names of variables");
    }
    return map;
}

ambrel::IconLabel labelFrom(const std::string& key, const std::string& value) {
    const auto found = parsed(value);
    const auto text = [&](const char* name) {
        const bool fits = found.is_object() && found.contains(name) && isUsableText(found[name]);
        return fits ? found[name].get<std::string>() : std::string();
    };
    const auto position = ambrel::fromRawValue<ambrel::IconLabel::Position>(text("position"));
    const bool fits = position && text("colorHex").size() >= 6 && found.contains("text") &&
                      isUsableText(found["text"]);
    if (!fits) {
        refuseValue(
            key, value,
            R"(a JSON label, as in {"text": "A", "colorHex": "FFFFFF", "position": "top"})");
    }
    return {text("text"), checkedColor(text("colorHex")), *position};
}

template <class Enum> Enum enumFrom(const std::string& key, const std::string& value) {
    if (const auto found = ambrel::fromRawValue<Enum>(value)) return *found;
    std::string known;
    for (const auto& [ignored, raw] : ambrel::RawValues<Enum>::table) {
        known += (known.empty() ? "one of " : ", ") + std::string(raw);
    }
    refuseValue(key, value, known);
}

std::string textFrom(const std::string& value, TextForm form, const ambrel::UserPlaces& user) {
    if (value.empty() || form == TextForm::plain) return value;
    return form == TextForm::path ? storedPath(value) : usablePath(value, user);
}

struct Setter {
    InstanceConfig& config;
    const std::string& key;
    const std::string& value;
    const ambrel::UserPlaces& user;

    void operator()(const TextField& field) const {
        config.*field.member = textFrom(value, field.form, user);
    }
    void operator()(const OptionalField& field) const {
        config.*field.member = textFrom(value, field.form, user);
    }
    void operator()(bool InstanceConfig::*member) const {
        config.*member = booleanFrom(key, value);
    }
    void operator()(List InstanceConfig::*member) const { config.*member = listFrom(key, value); }
    void operator()(StringMap InstanceConfig::*member) const {
        config.*member = mapFrom(key, value);
    }
    void operator()(OptionalLabel InstanceConfig::*member) const {
        config.*member = labelFrom(key, value);
    }
    void operator()(ShortcutKind InstanceConfig::*member) const {
        config.*member = enumFrom<ShortcutKind>(key, value);
    }
    void operator()(Strategy InstanceConfig::*member) const {
        config.*member = enumFrom<Strategy>(key, value);
    }
};

/// The key of one variable: "K" for "environment.K"; absent for other keys.
std::optional<std::string> variableOf(const std::string& key) {
    if (!key.starts_with(environmentPrefix)) return std::nullopt;
    const auto variable = key.substr(environmentPrefix.size());
    if (variable.empty()) throw UsageError("environment. wants the name of a variable.");
    return variable;
}

} // namespace

std::string keyOf(const std::string& assignment) {
    return assignment.substr(0, assignment.find('='));
}

void set(InstanceConfig& config, const std::string& assignment, const ambrel::UserPlaces& user) {
    const auto equals = assignment.find('=');
    if (equals == std::string::npos || equals == 0) {
        throw UsageError("--set wants KEY=VALUE, not " + inQuotes(assignment) + ".");
    }
    const auto key = keyOf(assignment);
    const auto value = assignment.substr(equals + 1);
    if (key == processNameField) {
        requireProcessName(value, key);
        setProcessName(config, value);
        return;
    }
    if (const auto variable = variableOf(key)) {
        config.environment[*variable] = value;
    } else {
        std::visit(Setter{config, key, value, user}, requireField(key));
    }
    if (key == "instanceHome" && value.empty()) refuseValue(key, value, "a folder");
}

void unset(InstanceConfig& config, const std::string& key) {
    if (key == processNameField) {
        if (!config.infoPlistOverrides.contains(ambrel::processNameKey)) {
            throw Refusal("The instance has no process name.");
        }
        setProcessName(config, std::nullopt);
        return;
    }
    if (const auto variable = variableOf(key)) {
        if (config.environment.erase(*variable) > 0) return;
        throw Refusal("The environment has no entry " + inQuotes(*variable) + ".");
    }
    if (key == "instanceHome" || key == "displayName" || key == "bundleId") {
        throw Refusal(key + " has to be there and cannot be unset.");
    }
    // A configuration made here has the defaults that an absent key has in the file.
    static const InstanceConfig defaults;
    const auto& field = requireField(key);
    std::visit(
        [&](const auto& entry) {
            using Entry = std::decay_t<decltype(entry)>;
            if constexpr (std::is_member_object_pointer_v<Entry>) {
                config.*entry = defaults.*entry;
            } else {
                config.*entry.member = defaults.*entry.member;
            }
        },
        field);
}

} // namespace korvane::edit
