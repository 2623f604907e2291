#include "korvane/Verbs/OptionValues.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/EnumText.h"

namespace korvane {

using ambrel::IconLabel;
using ambrel::StringMap;

namespace {

/// "K=V" split at the first "=". Throws UsageError, naming `option`, without a key or "=".
std::pair<std::string, std::string> keyAndValue(const std::string& text,
                                                const std::string& option) {
    const auto equals = text.find('=');
    if (equals != std::string::npos && equals > 0) {
        return {text.substr(0, equals), text.substr(equals + 1)};
    }
    throw UsageError(option + " wants KEY=VALUE, not " + inQuotes(text) + ".");
}

} // namespace

StringMap mapFrom(const std::vector<std::string>& texts, const std::string& option) {
    StringMap map;
    for (const auto& text : texts) {
        auto [key, value] = keyAndValue(text, option);
        map.insert_or_assign(std::move(key), std::move(value));
    }
    return map;
}

IconLabel labelWith(IconLabel label, const std::optional<std::string>& color,
                    const std::optional<std::string>& position) {
    if (color) label.colorHex = checkedColor(*color);
    if (position) label.position = enumFrom<IconLabel::Position>(*position, "--label-position");
    return label;
}

} // namespace korvane
