#include "korvane/Verbs/ConfigEdit.h"

#include "Ambrel/Instance/ConfigFields.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Operations/Editing.h"
#include "Manager/Operations/WorkedOut.h"
#include "Manager/Programs/ProgramTraits.h"
#include "Manager/Programs/StartPlan.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/UsageError.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

namespace korvane::edit {

using ambrel::InstanceConfig;
using ambrel::StringMap;
using nlohmann::json;

namespace {

using List = std::vector<std::string>;
using Form = ambrel::FieldEdit::Form;

/// What takes effect only through the bundle's Info.plist, icon or folder name, and what to give to
/// "create" instead. The last ones are no fields of the configuration but can be asked for all the
/// same.
constexpr std::pair<std::string_view, const char*> bundleKeys[] = {
    {"kind", "with --replace, as what it is to be"},
    {"bundleId", "with --replace --bundle-id ID"},
    {"infoPlistOverrides", "with --replace --plist K=V"},
    {"registerAsBrowser", "with --replace and --browser or --no-browser"},
    {"openWithPassthrough", "with --replace and --open-with or --no-open-with"},
    {"outputDir", "with --output DIR, after deleting this one"},
};

/// What has an option of its own, for the bundle is built anew for it.
constexpr std::pair<std::string_view, const char*> optionKeys[] = {
    {"displayName", "--name"},
    {"customIcon", "--icon"},
};

constexpr bool isBundleKey(std::string_view key) {
    const auto isIt = [&](const auto& entry) { return entry.first == key; };
    return std::ranges::any_of(bundleKeys, isIt) || std::ranges::any_of(optionKeys, isIt);
}

constexpr bool areBundleKeysAll() {
    bool areAll = true;
    ambrel::forEachField([&](const auto& field) {
        areAll = areAll && isBundleKey(field.key) == (field.edit.form == Form::byCreatingAgain);
    });
    return areAll;
}
static_assert(areBundleKeysAll(), "what an edit does not change and what it refuses differ");

constexpr std::string_view environmentPrefix = "environment.";
/// An override that the launch heeds, and so one that an edit takes.
const std::string processNameField = std::string("infoPlistOverrides.") + ambrel::processNameKey;

/// What is said of the session's bus, by words that are shorter than their keys among the
/// overrides.
constexpr std::pair<std::string_view, const char*> busFields[] = {
    {"sharedBus", ambrel::sharedBusKey},
    {"hideSecrets", ambrel::hidesSecretsKey},
};

/// The key of the override behind `key`; null for other keys.
const char* busOverrideOf(const std::string& key) {
    const auto* found =
        std::ranges::find(busFields, key, [](const auto& entry) { return entry.first; });
    return found == std::ranges::end(busFields) ? nullptr : found->second;
}

/// Refuses `key` where `name` is it, or its beginning up to a dot.
void refuseIfSame(const std::string& key, const std::string& name, const std::string& instead) {
    if (key != name && !key.starts_with(name + ".")) return;
    throw Refusal(whyNotEdited(name) + " Create the instance again instead, " + instead + ".");
}

void refuseBundleKey(const std::string& key) {
    for (const auto& [name, option] : optionKeys) {
        if (key != name) continue;
        throw Refusal(key + " is not set so: it is changed with: korvane edit NAME " + option);
    }
    for (const auto& [name, instead] : bundleKeys) refuseIfSame(key, std::string(name), instead);
}

[[noreturn]] void refuseUnknownKey(const std::string& key) {
    auto names = keys();
    for (const auto& [name, instead] : bundleKeys) names.emplace_back(name);
    for (const auto& [name, option] : optionKeys) names.emplace_back(name);
    const auto meant = nearest(key, names);
    throw UsageError(inQuotes(key) + " is no key of an instance." +
                     (meant.empty() ? "" : " Did you mean " + inQuotes(meant) + "?") +
                     " See: korvane show NAME --json");
}

/// Calls `act` with the field that `key` names. Throws as set() does for a key that has none.
template <class Act> void withField(const std::string& key, Act act) {
    refuseBundleKey(key);
    bool found = false;
    ambrel::forEachField([&](const auto& field) {
        if (found || key != field.key) return;
        found = true;
        act(field);
    });
    if (!found) refuseUnknownKey(key);
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

/// What was typed for a field.
struct Given {
    const std::string& key;
    const std::string& value;
    Form form;
    const ambrel::UserPlaces& user;

    [[noreturn]] void refuse(const std::string& wanted) const { refuseValue(key, value, wanted); }
};

void read(const Given& given, bool& target) {
    const auto found = parsed(given.value);
    if (!found.is_boolean()) given.refuse("true or false");
    target = found.get<bool>();
}

void read(const Given& given, List& target) {
    const auto found = parsed(given.value);
    const bool fits = found.is_array() && std::all_of(found.begin(), found.end(), isUsableText);
    if (!fits) given.refuse(R"(a JSON list of texts, as in ["-x", "y"])");
    target = found.get<List>();
}

void read(const Given& given, StringMap& target) {
    const auto found = parsed(given.value);
    const bool fits = found.is_object() && std::all_of(found.begin(), found.end(), isUsableText);
    if (!fits) given.refuse(R"(a JSON object of texts, as in {"LANG": "C"})");
    auto map = found.get<StringMap>();
    for (const auto& [name, ignored] : map) {
        if (!isVariableName(name)) given.refuse("names of variables");
    }
    target = std::move(map);
}

void read(const Given& given, ambrel::IconLabel& target) {
    const auto found = parsed(given.value);
    const auto text = [&](const char* name) {
        const bool fits = found.is_object() && found.contains(name) && isUsableText(found[name]);
        return fits ? found[name].get<std::string>() : std::string();
    };
    const auto position = ambrel::fromRawValue<ambrel::IconLabel::Position>(text("position"));
    const bool fits = position && text("colorHex").size() >= 6 && found.contains("text") &&
                      isUsableText(found["text"]);
    if (!fits) {
        given.refuse(
            R"(a JSON label, as in {"text": "A", "colorHex": "FFFFFF", "position": "top"})");
    }
    target = {text("text"), checkedColor(text("colorHex")), *position};
}

void read(const Given& given, std::string& target) {
    if (given.value.empty() || given.form == Form::value) {
        target = given.value;
    } else {
        target = given.form == Form::path ? storedPath(given.value)
                                          : usablePath(given.value, given.user);
    }
}

template <class Enum>
requires std::is_enum_v<Enum>
void read(const Given& given, Enum& target) {
    const auto found = ambrel::fromRawValue<Enum>(given.value);
    if (!found) given.refuse("one of " + ambrel::rawValueList<Enum>());
    target = *found;
}

template <class T> void read(const Given& given, std::optional<T>& target) {
    T value{};
    read(given, value);
    target = std::move(value);
}

/// The key of one variable: "K" for "environment.K"; absent for other keys.
std::optional<std::string> variableOf(const std::string& key) {
    if (!key.starts_with(environmentPrefix)) return std::nullopt;
    const auto variable = key.substr(environmentPrefix.size());
    if (variable.empty()) throw UsageError("environment. wants the name of a variable.");
    return variable;
}

void setBus(InstanceConfig& config, const Given& given) {
    bool choice = false;
    read(given, choice);
    setBusChoice(config.infoPlistOverrides, busOverrideOf(given.key), choice);
}

/// The default is what the profile says.
void unsetBus(InstanceConfig& config, const std::string& key, const ambrel::UserPlaces& user,
              const ambrel::Environment& environment) {
    const auto* const override = busOverrideOf(key);
    const bool isApp = config.kind == ambrel::ShortcutKind::app;
    const auto worked =
        isApp ? overridesFor(requireStart(config, user, environment).bus) : StringMap();
    setBusChoice(config.infoPlistOverrides, override, busChoice(worked, override));
}

/// Whether the kind heeds it is a question of the whole map for one of its entries.
void requireHeededKey(const std::string& key, ambrel::ShortcutKind kind) {
    if (busOverrideOf(key) != nullptr) requireBusHeeded(key, kind);
    refuseBundleKey(key == processNameField ? "" : key);
    const auto field = key == processNameField ? "targetAppPath"
                       : variableOf(key)       ? "environment"
                                               : key;
    requireHeeded(key, field, kind);
}

} // namespace

std::vector<std::string> keys() {
    std::vector<std::string> keys;
    ambrel::forEachField([&](const auto& field) {
        if (field.edit.form != Form::byCreatingAgain) keys.emplace_back(field.key);
    });
    keys.push_back(processNameField);
    if (installedProgram::meetOnBus()) {
        for (const auto& [key, override] : busFields) keys.emplace_back(key);
    }
    return keys;
}

std::string howToCreateAgain(std::string_view key) {
    const auto* found =
        std::ranges::find(bundleKeys, key, [](const auto& entry) { return entry.first; });
    return found == std::ranges::end(bundleKeys) ? "" : found->second;
}

std::string optionFor(std::string_view key) {
    const auto* found =
        std::ranges::find(optionKeys, key, [](const auto& entry) { return entry.first; });
    return found == std::ranges::end(optionKeys) ? "" : found->second;
}

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
    requireHeededKey(key, config.kind);
    if (key == processNameField) {
        requireProcessName(value, key);
        setProcessName(config, value);
        return;
    }
    if (busOverrideOf(key) != nullptr) {
        setBus(config, {key, value, Form::value, user});
    } else if (const auto variable = variableOf(key)) {
        config.environment[*variable] = value;
    } else {
        withField(key, [&](const auto& field) {
            read(Given{key, value, field.edit.form, user}, config.*field.member);
        });
    }
    if (key == "instanceHome" && value.empty()) refuseValue(key, value, "a folder");
}

void unset(InstanceConfig& config, const std::string& key, const ambrel::UserPlaces& user,
           const ambrel::Environment& environment) {
    if (key == processNameField) {
        if (!config.infoPlistOverrides.contains(ambrel::processNameKey)) {
            throw Refusal("The instance has no process name.");
        }
        setProcessName(config, std::nullopt);
        return;
    }
    if (busOverrideOf(key) != nullptr) {
        unsetBus(config, key, user, environment);
        return;
    }
    if (const auto variable = variableOf(key)) {
        if (config.environment.erase(*variable) > 0) return;
        throw Refusal("The environment has no entry " + inQuotes(*variable) + ".");
    }
    ambrel::forEachField([&](const auto& field) {
        if (key == field.key && field.presence == ambrel::Presence::required) {
            throw Refusal(key + " has to be there and cannot be unset.");
        }
    });
    if (config.kind == ambrel::ShortcutKind::app && key == "extraArgs") {
        config.extraArgs = requireStart(config, user, environment).arguments;
        return;
    }
    if (config.kind == ambrel::ShortcutKind::app && key == "environment") {
        config.environment = requireStart(config, user, environment).environment;
        return;
    }
    // A configuration made here has the defaults that an absent key has in the file.
    static const InstanceConfig defaults;
    withField(key, [&](const auto& field) { config.*field.member = defaults.*field.member; });
}

} // namespace korvane::edit
