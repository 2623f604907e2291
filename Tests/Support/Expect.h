#pragma once

#include <doctest/doctest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvane::test {

/// The error of exactly type `Error` that `action` throws; the test ends when there is none.
template <class Error, class Action> Error expectThrow(const Action& action) {
    std::optional<Error> caught;
    try {
        action();
    } catch (const Error& error) {
        caught = error;
    } catch (const std::exception& error) {
        FAIL("another error was thrown: " << std::string(error.what()));
    }
    if (!caught) FAIL("nothing was thrown");
    return *caught;
}

/// Whether `text` is one line that a terminal shows as it is.
inline bool isOneLine(const std::string& text) {
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F) return false;
    }
    return !text.empty();
}

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

inline bool beginsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

using Strings = std::vector<std::string>;

} // namespace korvane::test

// Failures of comparisons show what the lists and maps hold.
template <> struct doctest::StringMaker<std::vector<std::string>> {
    static doctest::String convert(const std::vector<std::string>& list) {
        std::string text = "[";
        for (const auto& element : list) text += "\"" + element + "\" ";
        return (text + "]").c_str();
    }
};
template <class Value> struct doctest::StringMaker<std::map<std::string, Value>> {
    static doctest::String convert(const std::map<std::string, Value>& map) {
        doctest::String text = "{";
        for (const auto& [key, value] : map) {
            text += doctest::String((key + ": ").c_str()) + doctest::toString(value) + " ";
        }
        return text + "}";
    }
};
template <class Value> struct doctest::StringMaker<std::optional<Value>> {
    static doctest::String convert(const std::optional<Value>& value) {
        return value ? doctest::toString(*value) : "absent";
    }
};
