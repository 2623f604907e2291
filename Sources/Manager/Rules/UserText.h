#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// The name of an instance, trimmed. Throws Refusal badName or badText for one that cannot become
/// the name of a bundle folder without surprises.
std::string checkedName(std::string_view name);

/// Throws Refusal badText when `text` is not UTF-8. `what` is what a person calls it ("the name").
void requireUtf8(std::string_view text, const std::string& what);
/// The same for each of `texts`, all of which are called `what`.
void requireUtf8Each(const std::vector<std::string>& texts, const std::string& what);

/// A path as it is stored: absolute, a leading tilde kept, without "." in it and slashes at its
/// end. Throws Refusal badPath for an empty text.
ambrel::Path storedPath(std::string_view text);

/// A path for use now: absolute, tilde expanded, else the same.
ambrel::Path usablePath(std::string_view text, const ambrel::UserPlaces& user);

/// The six hexadecimal digits of a color, an optional "#" in front. Throws Refusal badColor.
std::string checkedColor(const std::string& text);

} // namespace korvane
