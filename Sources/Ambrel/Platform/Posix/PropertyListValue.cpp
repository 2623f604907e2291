#include "Ambrel/Platform/PropertyList.h"

#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

namespace {

template <class Number> std::optional<bool> exactly(Number number) {
    if (number == Number(0)) return false;
    return number == Number(1) ? std::optional(true) : std::nullopt;
}

} // namespace

std::optional<bool> PropertyListValue::exactBoolean() const {
    if (const auto* boolean = std::get_if<bool>(&value)) return *boolean;
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return exactly(*integer);
    if (const auto* real = std::get_if<double>(&value)) return exactly(*real);
    return std::nullopt;
}

std::optional<PropertyListDictionary> readPropertyList(const Path& file) {
    std::string bytes;
    try {
        bytes = fileSystem::read(file);
    } catch (const FileError&) {
        return std::nullopt; // whoever asks reports an unreadable bundle in words of its own
    }
    return parsePropertyList(std::move(bytes));
}

} // namespace ambrel
