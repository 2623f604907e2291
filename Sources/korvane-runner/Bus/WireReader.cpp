#include "korvane-runner/Bus/WireReader.h"

#include "Ambrel/Base/Utf8.h"
#include "korvane-runner/Bus/NameSyntax.h"
#include "korvane-runner/Bus/Signature.h"

namespace korvane::runner::bus {

namespace {

/// Arrays, structs and variants within each other: variants alone could go on as long as a message.
constexpr int deepestValue = 64;

std::uint32_t numberOf(ByteOrder order, std::string_view bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const char byte = bytes[order == ByteOrder::big ? i : 3 - i];
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return number;
}

} // namespace

void WireReader::fail(std::string_view sentence) {
    if (!hasFailed()) fault_ = Fault{sentence};
    position_ = bytes_.size();
}

std::string_view WireReader::take(std::size_t size) {
    if (position_ > bytes_.size() || size > bytes_.size() - position_) {
        fail("A value ends behind the message");
        return {};
    }
    const auto taken = bytes_.substr(position_, size);
    position_ += size;
    return taken;
}

void WireReader::align(std::size_t size) {
    const auto padding = take((size - position_ % size) % size);
    if (padding.find_first_not_of('\0') != std::string_view::npos) fail("Padding is not zero");
}

std::uint8_t WireReader::byte() {
    const auto taken = take(1);
    return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
}

std::uint32_t WireReader::number() {
    align(4);
    const auto taken = take(4);
    return taken.empty() ? 0 : numberOf(order_, taken);
}

std::string_view WireReader::textOf(std::size_t size) {
    const auto taken = take(size);
    if (const auto end = take(1); !end.empty() && end.front() != '\0') {
        fail("A text does not end in a zero byte");
    }
    return hasFailed() ? std::string_view() : taken;
}

std::string_view WireReader::text() {
    const auto taken = textOf(number());
    if (taken.find('\0') != std::string_view::npos) fail("A text has a zero byte in it");
    if (!ambrel::utf8::isValid(taken)) fail("A text is not UTF-8");
    return hasFailed() ? std::string_view() : taken;
}

std::string_view WireReader::objectPath() {
    const auto taken = textOf(number());
    if (!isObjectPath(taken)) fail("A path is not one of an object");
    return hasFailed() ? std::string_view() : taken;
}

std::string_view WireReader::signature() {
    const auto taken = textOf(byte());
    if (!isSignature(taken)) fail("A signature is not valid");
    return hasFailed() ? std::string_view() : taken;
}

std::size_t WireReader::arrayEnd(char elementType) {
    const std::size_t length = number();
    if (length > longestArray) fail("An array is longer than 64 MiB");
    align(alignmentOf(elementType));
    if (length > bytes_.size() - position_) fail("An array ends behind the message");
    return hasFailed() ? position_ : position_ + length;
}

void WireReader::skipFixed(std::size_t size) {
    align(size);
    take(size);
}

void WireReader::skipArray(std::string_view elementType) {
    const auto end = arrayEnd(elementType.front());
    while (position_ < end) skip(elementType);
    if (position_ != end) fail("An array does not end with an element");
}

void WireReader::skipMembers(std::string_view types) {
    align(8);
    while (!types.empty() && !hasFailed()) {
        const auto length = firstTypeLength(types);
        skip(types.substr(0, length));
        types.remove_prefix(length);
    }
}

void WireReader::skipVariant() {
    const auto type = signature();
    if (hasFailed()) return;
    if (!isSingleType(type)) return fail("A variant is not of one type");
    skip(type);
}

void WireReader::skip(std::string_view type) {
    if (++depth_ > deepestValue) fail("Values are nested too deep");
    if (hasFailed()) return;
    switch (type.front()) {
    case 'y':
        byte();
        break;
    case 'b':
        if (number() > 1) fail("A boolean is neither 0 nor 1");
        break;
    case 's':
        text();
        break;
    case 'o':
        objectPath();
        break;
    case 'g':
        signature();
        break;
    case 'v':
        skipVariant();
        break;
    case 'a':
        skipArray(type.substr(1));
        break;
    case '(':
    case '{':
        skipMembers(type.substr(1, type.size() - 2));
        break;
    default:
        skipFixed(alignmentOf(type.front()));
    }
    --depth_;
}

} // namespace korvane::runner::bus
