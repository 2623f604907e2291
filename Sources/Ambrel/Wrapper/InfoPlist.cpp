#include "Ambrel/Wrapper/InfoPlist.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/Text.h"

#include <charconv>

namespace ambrel {

namespace {

PropertyListValue value(std::string text) { return {std::move(text)}; }
PropertyListValue value(std::string_view text) { return {std::string(text)}; }
PropertyListValue value(const char* text) { return {std::string(text)}; }
PropertyListValue value(bool boolean) { return {boolean}; }

PropertyListDictionary fixedEntries(const InstanceConfig& config) {
    return {
        {"CFBundleName", value(config.displayName)},
        {"CFBundleDisplayName", value(config.displayName)},
        {"CFBundleIdentifier", value(config.bundleId)},
        {"CFBundleExecutable", value(BundleLayout::runnerFileName)},
        {"CFBundlePackageType", value("APPL")},
        {"CFBundleInfoDictionaryVersion", value("6.0")},
        {"CFBundleShortVersionString", value("1.0")},
        {"CFBundleVersion", value("1")},
        {"LSMinimumSystemVersion", value("13.0")},
        {"NSHighResolutionCapable", value(true)},
    };
}

PropertyListValue browserTypes(const InstanceConfig& config) {
    return {PropertyListArray{{PropertyListDictionary{
        {"CFBundleURLName", value(config.bundleId)},
        {"CFBundleURLSchemes", {PropertyListArray{value("http"), value("https")}}},
    }}}};
}

PropertyListValue documentTypes() {
    return {PropertyListArray{{PropertyListDictionary{
        {"CFBundleTypeName", value("All Files")},
        {"LSItemContentTypes", {PropertyListArray{value("public.data"), value("public.content")}}},
        {"CFBundleTypeRole", value("Viewer")},
        {"LSHandlerRank", value("Alternate")},
    }}}};
}

/// A base-10 integer with an optional sign, as a whole; absent for anything else.
std::optional<std::int64_t> integer(std::string_view text) {
    const bool plus = text.starts_with('+');
    if (plus) text.remove_prefix(1);
    if (plus && text.starts_with('-')) return std::nullopt;
    std::int64_t number = 0;
    const auto* end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    const bool whole = error == std::errc() && stopped == end;
    return whole ? std::optional(number) : std::nullopt;
}

} // namespace

PropertyListDictionary infoPlistFor(const InstanceConfig& config,
                                    const std::optional<std::string>& iconFile,
                                    WrapperIcon wrapperIcon) {
    auto entries = fixedEntries(config);
    if (iconFile) entries["CFBundleIconFile"] = value(*iconFile);
    if (wrapperIcon == WrapperIcon::hidden) entries["LSUIElement"] = value(true);
    if (config.registerAsBrowser) entries["CFBundleURLTypes"] = browserTypes(config);
    if (config.openWithPassthrough) entries["CFBundleDocumentTypes"] = documentTypes();
    // Last on purpose: an override may replace anything, the identifier and the executable too.
    for (const auto& [key, text] : config.infoPlistOverrides) {
        entries[key] = coercedPlistValue(text);
    }
    return entries;
}

PropertyListValue coercedPlistValue(const std::string& text) {
    const auto trimmed = text::trimmingWhitespace(text);
    const auto lower = text::lowercased(trimmed);
    if (lower == "true" || lower == "yes") return value(true);
    if (lower == "false" || lower == "no") return value(false);
    if (const auto number = integer(trimmed)) return {*number};
    return value(text);
}

} // namespace ambrel
