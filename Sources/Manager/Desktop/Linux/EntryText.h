#pragma once

#include "Ambrel/Base/Path.h"

#include <string>
#include <string_view>
#include <vector>

/// The text of desktop entries by the Desktop Entry Specification, and of the scripts that they
/// start.
namespace korvane::registration {

/// The key that says which bundle an entry stands for.
inline constexpr const char* bundleKey = "X-Korvane-Bundle";

/// The key that says where its home lies, for when the bundle cannot be asked. Entries of earlier
/// versions have none.
inline constexpr const char* homeKey = "X-Korvane-Home";

/// What an entry of an instance holds, in plain text.
struct EntryValues {
    std::string name;
    ambrel::Path program; ///< what Exec starts; with `types`, on what is to be opened
    std::string icon;     ///< a name in the icon theme
    std::string windowClass;
    std::string categories;         ///< each with ";" behind it
    std::vector<std::string> types; ///< what it is offered for; none for most
    ambrel::Path bundle;
    ambrel::Path home; ///< empty where it has none, or none that an entry can hold
};

/// The whole entry. Throws Refusal for values that no entry can hold: text that is not UTF-8 or
/// holds control characters, and a program with "=" or "%" in its path.
std::string entryText(const EntryValues& values);

/// Whether a path can stand in Exec as it is, and be taken for one word by openers that know
/// neither quotes nor escapes.
bool isPlainWord(std::string_view path);

/// A shell script that becomes the program.
std::string openerScript(const ambrel::Path& program);

/// One that becomes the runner and hands over what is to be opened.
std::string passingScript(const ambrel::Path& runner);

} // namespace korvane::registration
