#include "Ambrel/Formats/Json.h"

#include "Ambrel/Base/Utf8.h"

namespace ambrel::json {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t skipDigits(std::string_view text, std::size_t from) {
    while (from < text.size() && isDigit(text[from])) ++from;
    return from;
}

/// The length of the JSON number (RFC 8259, section 6) that `text` is as a whole, else 0.
std::size_t numberLength(std::string_view text) {
    const std::size_t start = text.starts_with('-') ? 1 : 0;
    std::size_t end = skipDigits(text, start);
    const bool leadingZero = end > start + 1 && text[start] == '0';
    if (end == start || leadingZero) return 0;
    if (end < text.size() && text[end] == '.') {
        const auto fraction = end + 1;
        end = skipDigits(text, fraction);
        if (end == fraction) return 0;
    }
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        auto exponent = end + 1;
        if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
        end = skipDigits(text, exponent);
        if (end == exponent) return 0;
    }
    return end == text.size() ? end : 0;
}

/// Looks at a JSON text before the parser does. The parser refuses numbers that no double can
/// hold, even where they would be ignored, takes a NUL byte for the end of the text, and sets no
/// limit to nesting. Byte offsets stay as they are.
class Screen {
public:
    explicit Screen(std::string_view text) : text_(text) {}

    std::string run() {
        while (at_ < text_.size()) step();
        return std::move(text_);
    }

private:
    void step() {
        const char c = text_[at_];
        if (inString_) return stepInString(c);
        if (c == '"') inString_ = true;
        if (c == '\0') throw DecodingError::syntax(at_ + 1, "a NUL byte");
        if (c == '{' || c == '[') enter();
        if ((c == '}' || c == ']') && depth_ > 0) --depth_;
        if (c == '-' || isDigit(c)) return simplifyNumber();
        ++at_;
    }

    void stepInString(char c) {
        if (c == '"') inString_ = false;
        at_ += c == '\\' ? 2 : 1;
    }

    void enter() {
        if (++depth_ <= deepestNesting) return;
        throw DecodingError::syntax(at_ + 1, "nested deeper than " +
                                                 std::to_string(deepestNesting) + " levels");
    }

    /// Puts "0" and blanks in the place of a number. What only looks like one is refused here: the
    /// parser would see a number in its beginning, and perhaps one that no double can hold.
    void simplifyNumber() {
        const auto end = text_.find_first_not_of("0123456789+-.eE", at_);
        const auto length = (end == std::string::npos ? text_.size() : end) - at_;
        if (numberLength(std::string_view(text_).substr(at_, length)) == 0) {
            throw DecodingError::syntax(at_ + 1, "a number that is not well formed");
        }
        text_.replace(at_, length, length, ' ');
        text_[at_] = '0';
        at_ += length;
    }

    std::string text_;
    std::size_t at_ = 0;
    std::size_t depth_ = 0;
    bool inString_ = false;
};

/// The parser's message without its own name and place: "…line 1, column 2: syntax error …".
std::string reasonOf(const nlohmann::json::parse_error& error) {
    const std::string text = error.what();
    const auto place = text.find("column ");
    const auto colon = place == std::string::npos ? place : text.find(": ", place);
    return colon == std::string::npos ? text : text.substr(colon + 2);
}

template <class T>
T decodeTyped(const Value& value, const std::string& path, const std::string& expected) {
    const auto* typed = value.get_ptr<const T*>();
    if (typed == nullptr) throw DecodingError::typeMismatch(path, expected, typeName(value));
    return *typed;
}

} // namespace

Value parse(std::string_view text) {
    try {
        return Value::parse(Screen(text).run());
    } catch (const nlohmann::json::parse_error& error) {
        throw DecodingError::syntax(error.byte, reasonOf(error));
    }
}

std::string write(const Value& value) {
    std::string plain;
    try {
        plain = value.dump(2);
    } catch (const nlohmann::json::type_error&) {
        throw EncodingError("A text is not valid UTF-8 and cannot be written as JSON.");
    }
    std::string escaped;
    escaped.reserve(plain.size() + plain.size() / 16);
    for (const char c : plain) { // a "/" stands nowhere but inside strings
        if (c == '/') escaped.push_back('\\');
        escaped.push_back(c);
    }
    return escaped;
}

KeyedContainer::KeyedContainer(const Value& object, std::string path)
    : object_(object), path_(std::move(path)) {
    if (!object.is_object()) {
        throw DecodingError::typeMismatch(path_, "an object", typeName(object));
    }
}

const Value* KeyedContainer::find(const std::string& key) const {
    const auto found = object_.find(key);
    return found == object_.end() || found->is_null() ? nullptr : &*found;
}

std::string KeyedContainer::pathOf(const std::string& key) const {
    return path_.empty() ? key : path_ + "." + key;
}

std::string typeName(const Value& value) {
    switch (value.type()) {
    case Value::value_t::null:
        return "null";
    case Value::value_t::object:
        return "an object";
    case Value::value_t::array:
        return "an array";
    case Value::value_t::string:
        return "a string";
    case Value::value_t::boolean:
        return "a Boolean";
    default:
        return "a number";
    }
}

template <> bool decode(const Value& value, const std::string& path) {
    return decodeTyped<bool>(value, path, "a Boolean");
}

template <> std::string decode(const Value& value, const std::string& path) {
    return decodeTyped<std::string>(value, path, "a string");
}

template <> std::vector<std::string> decode(const Value& value, const std::string& path) {
    if (!value.is_array()) throw DecodingError::typeMismatch(path, "an array", typeName(value));
    std::vector<std::string> list;
    list.reserve(value.size());
    for (const auto& element : value) {
        list.push_back(
            decode<std::string>(element, path + "[" + std::to_string(list.size()) + "]"));
    }
    return list;
}

template <> std::map<std::string, std::string> decode(const Value& value, const std::string& path) {
    if (!value.is_object()) throw DecodingError::typeMismatch(path, "an object", typeName(value));
    std::map<std::string, std::string> map;
    for (const auto& [key, element] : value.items()) {
        map.emplace(key, decode<std::string>(element, path + "." + key));
    }
    return map;
}

} // namespace ambrel::json
