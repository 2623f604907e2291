#include "Ambrel/Platform/PropertyList.h"

#include "Ambrel/Base/CodingError.h"
#include "Ambrel/Base/Utf16.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Linux/PropertyListScreen.h"

#include <cstdlib>
#include <memory>

// Before the library's own header, whose functions it renames.
#include "LazyPlist.h"

#include <plist/plist.h>

namespace ambrel {

namespace {

constexpr std::size_t largestFile = 64 * 1024 * 1024;

struct FreeNode {
    void operator()(void* node) const noexcept { plist_free(node); }
};
using OwnedNode = std::unique_ptr<void, FreeNode>;

/// For what the library allocates for its caller: keys, texts and iterators.
struct FreeBytes {
    void operator()(void* bytes) const noexcept { std::free(bytes); }
};
template <class T> using OwnedBytes = std::unique_ptr<T, FreeBytes>;

struct FreeXml {
    void operator()(char* xml) const noexcept { plist_to_xml_free(xml); }
};

/// Thrown inside this file alone: some text of a list is not UTF-8.
struct UnreadableText {};

std::string checkedText(const char* text) {
    std::string result(text == nullptr ? "" : text);
    if (!utf8::isValid(result)) throw UnreadableText();
    return result;
}

PropertyListValue valueOf(plist_t node);

PropertyListArray arrayOf(plist_t node) {
    PropertyListArray array;
    const auto size = plist_array_get_size(node);
    array.reserve(size);
    for (std::uint32_t i = 0; i < size; ++i)
        array.push_back(valueOf(plist_array_get_item(node, i)));
    return array;
}

PropertyListDictionary dictionaryOf(plist_t node) {
    PropertyListDictionary dictionary;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const OwnedBytes<void> owner(iterator);
    while (true) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        const OwnedBytes<char> ownedKey(key);
        if (value == nullptr) return dictionary;
        dictionary.insert_or_assign(checkedText(key), valueOf(value));
    }
}

bool booleanOf(plist_t node) {
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

std::int64_t integerOf(plist_t node) {
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<std::int64_t>(value); // negative numbers are kept in two's complement
}

double realOf(plist_t node) {
    double value = 0;
    plist_get_real_val(node, &value);
    return value;
}

std::string textOf(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const OwnedBytes<char> owner(text);
    return checkedText(text);
}

PropertyListValue valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return {booleanOf(node)};
    case PLIST_UINT:
        return {integerOf(node)};
    case PLIST_REAL:
        return {realOf(node)};
    case PLIST_STRING:
        return {textOf(node)};
    case PLIST_ARRAY:
        return {arrayOf(node)};
    case PLIST_DICT:
        return {dictionaryOf(node)};
    default:
        return {};
    }
}

OwnedNode parse(const std::string& bytes) {
    plist_t node = nullptr;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    if (isBinaryPropertyList(bytes)) {
        plist_from_bin(bytes.data(), size, &node);
    } else {
        plist_from_xml(bytes.data(), size, &node);
    }
    return OwnedNode(node);
}

/// The characters that XML 1.0 (fifth edition, section 2.2) allows.
bool isXmlCharacter(char32_t c) {
    const bool control = c < 0x20 && c != '\t' && c != '\n' && c != '\r';
    return !control && c != 0xFFFE && c != 0xFFFF;
}

void requireXmlText(std::string_view text) {
    for (auto rest = text; !rest.empty();) {
        const auto character = utf8::takeFirst(rest);
        if (character && isXmlCharacter(*character)) continue;
        throw EncodingError("A property list cannot hold the text \"" + utf8::oneLine(text) +
                            "\".");
    }
}

/// The library writes carriage returns as they are, and every reader would make line feeds of them
/// (XML 1.0, section 2.11). It breaks its own lines with line feeds, so each one belongs to a text.
std::string escapingCarriageReturns(std::string_view xml) {
    std::string result;
    result.reserve(xml.size());
    for (const char c : xml) {
        if (c == '\r') {
            result.append("&#13;");
        } else {
            result.push_back(c);
        }
    }
    return result;
}

/// Makes the library's node of a value.
struct NodeMaker {
    OwnedNode operator()(std::monostate) const {
        throw EncodingError("A property list holds a value of a type that cannot be written.");
    }
    OwnedNode operator()(bool value) const { return OwnedNode(plist_new_bool(value ? 1 : 0)); }
    OwnedNode operator()(std::int64_t value) const {
        return OwnedNode(plist_new_uint(static_cast<std::uint64_t>(value)));
    }
    OwnedNode operator()(double value) const { return OwnedNode(plist_new_real(value)); }
    OwnedNode operator()(const std::string& value) const {
        requireXmlText(value);
        return OwnedNode(plist_new_string(value.c_str()));
    }
    OwnedNode operator()(const PropertyListArray& values) const {
        OwnedNode array(plist_new_array());
        for (const auto& item : values) {
            plist_array_append_item(array.get(), std::visit(*this, item.value).release());
        }
        return array;
    }
    OwnedNode operator()(const PropertyListDictionary& values) const {
        OwnedNode dictionary(plist_new_dict());
        for (const auto& [key, item] : values) {
            requireXmlText(key);
            plist_dict_set_item(dictionary.get(), key.c_str(),
                                std::visit(*this, item.value).release());
        }
        return dictionary;
    }
};

} // namespace

std::optional<PropertyListDictionary> parsePropertyList(std::string bytes) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.size() > largestFile) return std::nullopt;
    // The library reads no other encoding, and pays no heed to the one that the XML names.
    if (utf16::hasMark(bytes)) bytes = utf16::toUtf8(bytes).value_or("");
    if (bytes.starts_with(byteOrderMark)) bytes.erase(0, byteOrderMark.size());
    const bool isText = !isBinaryPropertyList(bytes);
    if (isText && !utf8::isValid(bytes)) return std::nullopt;
    if (!isHarmlessPropertyList(bytes)) return std::nullopt;
    loadPlist();
    const auto root = parse(bytes);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
    try {
        return dictionaryOf(root.get());
    } catch (const UnreadableText&) {
        return std::nullopt;
    }
}

std::string xmlPropertyList(const PropertyListDictionary& dictionary) {
    loadPlist();
    const auto root = NodeMaker()(dictionary);
    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(root.get(), &text, &size);
    const std::unique_ptr<char, FreeXml> owner(text);
    if (text == nullptr) throw EncodingError("The property list cannot be written as XML.");
    return escapingCarriageReturns({text, size});
}

void forgetPropertyLists() noexcept { unloadPlist(); }

} // namespace ambrel
