#pragma once

#include "Ambrel/Platform/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvane::test {

/// The lowest `bytes` bytes of `number`, the highest of them first.
inline std::string bigEndian(std::uint64_t number, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
        text += static_cast<char>(static_cast<unsigned char>(number >> shift));
    }
    return text;
}

/// Writes binary property lists object by object, ill-formed ones too.
class BinaryPlist {
public:
    using Ref = std::uint64_t;

    Ref add(const std::string& bytes) {
        objects_.push_back(bytes);
        return objects_.size() - 1;
    }
    Ref text(const std::string& ascii) { return add(marker(0x50, ascii.size()) + ascii); }
    Ref array(const std::vector<Ref>& elements) { return add(arrayBytes(elements)); }
    Ref dictionary(const std::vector<std::pair<Ref, Ref>>& entries) {
        return add(dictionaryBytes(entries));
    }
    void replace(Ref object, const std::string& bytes) { objects_[object] = bytes; }

    static std::string arrayBytes(const std::vector<Ref>& elements) {
        auto bytes = marker(0xA0, elements.size());
        for (const auto element : elements) bytes += bigEndian(element, 4);
        return bytes;
    }
    static std::string dictionaryBytes(const std::vector<std::pair<Ref, Ref>>& entries) {
        auto bytes = marker(0xD0, entries.size());
        for (const auto& entry : entries) bytes += bigEndian(entry.first, 4);
        for (const auto& entry : entries) bytes += bigEndian(entry.second, 4);
        return bytes;
    }
    static std::string marker(unsigned kind, std::size_t count) {
        if (count < 15) return {static_cast<char>(static_cast<unsigned char>(kind | count))};
        return static_cast<char>(static_cast<unsigned char>(kind | 0xF)) + std::string("\x12") +
               bigEndian(count, 4);
    }

    std::string file(Ref top) const {
        std::string bytes = "bplist00";
        std::string offsets;
        for (const auto& object : objects_) {
            offsets += bigEndian(bytes.size(), 4);
            bytes += object;
        }
        const auto table = bytes.size();
        return bytes + offsets + std::string(6, '\0') + "\x04\x04" + bigEndian(objects_.size(), 8) +
               bigEndian(top, 8) + bigEndian(table, 8);
    }

private:
    std::vector<std::string> objects_;
};

/// A list with one entry.
inline std::string binaryWith(const std::string& key, const std::string& valueBytes) {
    BinaryPlist plist;
    const auto name = plist.text(key);
    return plist.file(plist.dictionary({{name, plist.add(valueBytes)}}));
}

/// The value of the key "K"; absent where the list cannot be read.
inline std::optional<ambrel::PropertyListValue> valueOf(const std::string& bytes) {
    const auto dictionary = ambrel::parsePropertyList(bytes);
    if (!dictionary || dictionary->count("K") == 0) return std::nullopt;
    return dictionary->at("K");
}

} // namespace korvane::test
