#pragma once

#include "Ambrel/Base/Path.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace ambrel {

struct PropertyListValue;
using PropertyListArray = std::vector<PropertyListValue>;
using PropertyListDictionary = std::map<std::string, PropertyListValue>;

/// A value of a property list. Dates, data and other types that this system has no use for are
/// read as std::monostate and cannot be written.
struct PropertyListValue {
    std::variant<std::monostate, bool, std::int64_t, double, std::string, PropertyListArray,
                 PropertyListDictionary>
        value;

    /// The text, or null when the value is no string.
    const std::string* string() const { return std::get_if<std::string>(&value); }
    /// A Boolean, or a number that is exactly 0 or 1; absent for everything else.
    std::optional<bool> exactBoolean() const;

    bool operator==(const PropertyListValue&) const = default;
};

/// The dictionary in an XML or binary property list. Absent when the file cannot be read, is no
/// property list, holds text that is neither UTF-8 nor UTF-16 with a byte order mark, is nested
/// deeper than 512 levels, or its root is no dictionary. Throws LibraryError when the system's
/// property-list library is missing.
std::optional<PropertyListDictionary> readPropertyList(const Path& file);

/// The same for the bytes of a file.
std::optional<PropertyListDictionary> parsePropertyList(std::string bytes);

/// The XML form. Throws EncodingError for a value that has none (text that is not UTF-8 or holds
/// characters that XML 1.0 does not allow), LibraryError when the library is missing.
std::string xmlPropertyList(const PropertyListDictionary& dictionary);

/// Gives back the memory that reading and writing lists has taken until the next time, in a process
/// that goes on for long. No other thread may be in the functions above.
void forgetPropertyLists() noexcept;

} // namespace ambrel
