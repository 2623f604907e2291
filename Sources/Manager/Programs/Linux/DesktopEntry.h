#pragma once

#include "Ambrel/Base/Path.h"
#include "Manager/Programs/ProgramCall.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// A file by the Desktop Entry Specification that cannot be used, with the reason.
struct DesktopEntryError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The group [Desktop Entry] of an entry. Keys of other groups are left out.
class DesktopEntry {
public:
    /// Throws DesktopEntryError when `text` is no desktop entry.
    static DesktopEntry parse(std::string_view text);

    /// The value of a string key with its escapes resolved; absent without the key.
    std::optional<std::string> string(const std::string& key) const;
    /// The values of a localised string key, by the language as it stands in the brackets.
    std::map<std::string, std::string> translations(const std::string& key) const;
    /// Whether a Boolean key is there and true.
    bool isTrue(const std::string& key) const;
    bool has(const std::string& key) const { return values_.count(key) > 0; }

    /// The command of Exec. `file` is the entry's own path, which the field code %k stands for.
    /// Throws DesktopEntryError when it breaks the rules in a way that leaves doubt.
    ProgramCall program(const ambrel::Path& file) const;

private:
    std::map<std::string, std::string> values_;
};

} // namespace korvane
