#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Base/RawValue.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"

#include <string>
#include <string_view>

namespace korvane {

/// The name of an instance, trimmed. Throws Refusal, with a sentence, for one that cannot become
/// the name of a bundle folder without surprises.
std::string checkedName(std::string_view name);

/// Throws Refusal when `text`, which `what` names ("--home"), is not UTF-8.
void requireUtf8(std::string_view text, const std::string& what);

/// A path as it is stored: absolute, a leading tilde kept, without "." in it and slashes at its
/// end.
ambrel::Path storedPath(std::string_view text);

/// A path for use now: absolute, tilde expanded, else the same.
ambrel::Path usablePath(std::string_view text, const ambrel::UserPlaces& user);

/// The six hexadecimal digits of a color, an optional "#" in front. Throws UsageError.
std::string checkedColor(const std::string& text);

/// The value that `text` names. Throws UsageError, with the known ones, for another text.
template <class Enum> Enum enumFrom(const std::string& text, const std::string& option) {
    if (const auto value = ambrel::fromRawValue<Enum>(text)) return *value;
    throw UsageError(option + " is one of " + ambrel::rawValueList<Enum>() + ", not " +
                     inQuotes(text) + ".");
}

} // namespace korvane
