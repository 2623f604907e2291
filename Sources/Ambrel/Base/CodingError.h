#pragma once

#include <stdexcept>
#include <string>

namespace ambrel {

/// JSON that cannot be decoded. The description is one line that names what happened and where:
/// "Key not found: instanceHome", "Type mismatch at extraArgs[1]: expected a string, found a
/// number". Bytes that are not UTF-8 appear in it as U+FFFD, control characters escaped.
struct DecodingError : std::runtime_error {
    enum class Kind { keyNotFound, typeMismatch, unknownRawValue, syntax };

    DecodingError(Kind kind, const std::string& text);
    static DecodingError keyNotFound(const std::string& path);
    /// `expected` and `found` are JSON types with their article: "a string", "an array".
    static DecodingError typeMismatch(const std::string& path, const std::string& expected,
                                      const std::string& found);
    /// `allowed` lists the raw values, separated by commas.
    static DecodingError unknownRawValue(const std::string& path, const std::string& value,
                                         const std::string& allowed);
    /// `byte` counts from 1, as text editors and the parser do.
    static DecodingError syntax(std::size_t byte, const std::string& reason);

    std::string description() const { return what(); }

    Kind kind;
};

/// A record that cannot be written: a text in it is not UTF-8, or holds a character that the
/// format cannot represent.
struct EncodingError : std::runtime_error {
    using std::runtime_error::runtime_error;
    std::string description() const { return what(); }
};

} // namespace ambrel
