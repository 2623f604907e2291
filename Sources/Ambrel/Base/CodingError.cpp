#include "Ambrel/Base/CodingError.h"

#include "Ambrel/Base/Utf8.h"

namespace ambrel {

DecodingError::DecodingError(Kind errorKind, const std::string& text)
    : std::runtime_error(utf8::oneLine(text)), kind(errorKind) {}

DecodingError DecodingError::keyNotFound(const std::string& path) {
    return {Kind::keyNotFound, "Key not found: " + path};
}

DecodingError DecodingError::typeMismatch(const std::string& path, const std::string& expected,
                                          const std::string& found) {
    const std::string place = path.empty() ? "the top level" : path;
    return {Kind::typeMismatch,
            "Type mismatch at " + place + ": expected " + expected + ", found " + found};
}

DecodingError DecodingError::unknownRawValue(const std::string& path, const std::string& value,
                                             const std::string& allowed) {
    constexpr std::size_t mostShown = 100;
    const auto shown = value.size() <= mostShown ? value : value.substr(0, mostShown) + "…";
    return {Kind::unknownRawValue,
            "Unknown value at " + path + ": \"" + shown + "\" is none of " + allowed};
}

DecodingError DecodingError::syntax(std::size_t byte, const std::string& reason) {
    return {Kind::syntax, "Not valid JSON at byte " + std::to_string(byte) + ": " + reason};
}

} // namespace ambrel
