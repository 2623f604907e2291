#pragma once

#include "Ambrel/Base/CodingError.h"
#include "Ambrel/Base/RawValue.h"

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// JSON as a keyed container decodes it: strictly typed, unknown keys ignored.
namespace ambrel::json {

using Value = nlohmann::json;

/// Containers inside one another beyond this number are an error.
inline constexpr std::size_t deepestNesting = 512;

/// The tree of a JSON text. Throws DecodingError for anything else, input that is not UTF-8
/// included. The values of numbers are not kept, because no format of this system has any: that a
/// number stands somewhere is all that the tree tells, so numbers of any size are accepted.
Value parse(std::string_view text);

/// Pretty-printed with two spaces, keys sorted, "/" written as "\/". Throws EncodingError when a
/// text is not UTF-8.
std::string write(const Value& value);

/// One value decoded as `T`, which is bool, std::string, a vector or string-keyed map of such, or
/// an enumeration with raw values. `path` is where the value stands, for errors. Throws
/// DecodingError.
template <class T> T decode(const Value& value, const std::string& path);

/// One JSON object, read key by key.
class KeyedContainer {
public:
    /// `path` is empty for the top level. Throws DecodingError when `object` is no object. Keeps a
    /// reference to `object`.
    KeyedContainer(const Value& object, std::string path);

    /// Throws DecodingError when the key is missing, null or holds something else.
    template <class T> T required(const std::string& key) const {
        const auto found = object_.find(key);
        if (found == object_.end()) throw DecodingError::keyNotFound(pathOf(key));
        return decode<T>(*found, pathOf(key));
    }

    /// Absent when the key is missing or null; throws DecodingError when it holds something else.
    template <class T> std::optional<T> optional(const std::string& key) const {
        const auto* value = find(key);
        if (value == nullptr) return std::nullopt;
        return decode<T>(*value, pathOf(key));
    }

    /// The value of the key, or null when it is missing or JSON's null.
    const Value* find(const std::string& key) const;
    std::string pathOf(const std::string& key) const;

private:
    const Value& object_;
    std::string path_;
};

/// A JSON value's type with its article, as errors name it.
std::string typeName(const Value& value);

template <> bool decode(const Value& value, const std::string& path);
template <> std::string decode(const Value& value, const std::string& path);
template <> std::vector<std::string> decode(const Value& value, const std::string& path);
template <> std::map<std::string, std::string> decode(const Value& value, const std::string& path);

template <class Enum> Enum decode(const Value& value, const std::string& path) {
    const auto text = decode<std::string>(value, path);
    if (const auto found = fromRawValue<Enum>(text)) return *found;
    throw DecodingError::unknownRawValue(path, text, rawValueList<Enum>());
}

} // namespace ambrel::json
