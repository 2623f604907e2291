#include "korvane-runner/Desktop/Linux/JscValue.h"

namespace korvane::runner {

namespace {

struct BytesUnref {
    void operator()(GBytes* bytes) const noexcept { g_bytes_unref(bytes); }
};
using Bytes = std::unique_ptr<GBytes, BytesUnref>;

/// The part of `text` before `end`, by the engine itself: the whole may be hundreds of megabytes,
/// of which nothing is to be copied.
GObjectPtr<JSCValue> beginning(JSCValue* text, std::size_t end) {
    return GObjectPtr<JSCValue>(jsc_value_object_invoke_method(
        text, "substring", G_TYPE_INT, 0, G_TYPE_DOUBLE, static_cast<double>(end), G_TYPE_NONE));
}

/// Whether a character of two units stands around the border before `end`.
bool cutsCharacter(JSCValue* text, std::size_t end) {
    const GObjectPtr<JSCValue> character(jsc_value_object_invoke_method(
        text, "codePointAt", G_TYPE_DOUBLE, static_cast<double>(end) - 1, G_TYPE_NONE));
    constexpr double lastOfOneUnit = 0xFFFF;
    return jsc_value_is_number(character.get()) &&
           jsc_value_to_double(character.get()) > lastOfOneUnit;
}

/// A text with half a character in it would be converted to nothing at all.
GObjectPtr<JSCValue> wellFormed(JSCValue* text) {
    return GObjectPtr<JSCValue>(jsc_value_object_invoke_method(text, "toWellFormed", G_TYPE_NONE));
}

} // namespace

bool JscValue::isDictionary() const {
    return value_ && jsc_value_is_object(value_.get()) && !jsc_value_is_array(value_.get()) &&
           !jsc_value_is_function(value_.get());
}

std::unique_ptr<PageValue> JscValue::field(const char* name) const {
    // Of anything else the engine would make an object first, or throw.
    if (!isDictionary()) return std::make_unique<JscValue>(nullptr);
    return std::make_unique<JscValue>(
        GObjectPtr<JSCValue>(jsc_value_object_get_property(value_.get(), name)));
}

std::optional<double> JscValue::number() const {
    if (!value_ || !jsc_value_is_number(value_.get())) return std::nullopt;
    return jsc_value_to_double(value_.get());
}

std::optional<std::string> JscValue::text(std::size_t most) const {
    if (!value_ || !jsc_value_is_string(value_.get())) return std::nullopt;
    if (most == 0) return std::string();
    const auto end = cutsCharacter(value_.get(), most) ? most - 1 : most;
    const auto cut = beginning(value_.get(), end);
    // Not jsc_value_to_string, which ends at a NUL.
    const Bytes bytes(jsc_value_to_string_as_bytes(wellFormed(cut.get()).get()));
    gsize size = 0;
    const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
    return std::string(data ? data : "", size);
}

} // namespace korvane::runner
