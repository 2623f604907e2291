#pragma once

#include "Ambrel/Graphics/Image.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The Apple icon file: a list of elements, each a picture of one size, a mask or information.
namespace ambrel::icns {

/// The four bytes that name an element's type; most are printable, some are not.
struct TypeCode {
    std::uint32_t number = 0;

    constexpr TypeCode() = default;
    constexpr explicit TypeCode(std::uint32_t value) : number(value) {}
    constexpr TypeCode(const char (&letters)[5]) { // NOLINT(google-explicit-constructor)
        for (int i = 0; i < 4; ++i) number = (number << 8) | static_cast<unsigned char>(letters[i]);
    }
    /// The four letters, or eight hexadecimal digits after "0x" where one is not printable.
    std::string name() const;

    constexpr bool operator==(const TypeCode&) const = default;
};

/// What the data of an element is.
enum class Payload {
    png,
    jpeg2000,
    argb,        ///< "ARGB", then run-length planes alpha, red, green, blue
    rgb,         ///< run-length planes red, green, blue
    mask,        ///< one byte of alpha a pixel, of the picture in another element
    oldColors,   ///< one, four or eight bits a pixel; not read
    nested,      ///< a whole icon file for another appearance; not read
    information, ///< a table of contents, a version, a name: no picture
    unknown,
};

/// What is known of a type.
struct TypeInfo {
    TypeCode type;
    std::uint32_t pixels; ///< the side of its square picture; 0 where it holds none
    Payload plain;        ///< the data where it is neither PNG, JPEG 2000 nor "ARGB"
    TypeCode mask;        ///< the type of the mask that goes with `plain`; 0 for none
    /// The payloads that show when the file is the icon of an application bundle.
    std::span<const Payload> worksInBundle;
    std::string_view otherwise; ///< why other payloads do not show there: a clause
};

/// Absent for a type that is not known.
const TypeInfo* findType(TypeCode type) noexcept;
/// All known types.
std::span<const TypeInfo> allTypes() noexcept;

/// One element. The payload is a view of the file's bytes.
struct Element {
    TypeCode type;
    std::size_t offset = 0; ///< of the element's header from the start of the file
    std::string_view payload;
};

/// Elements beyond this number are not read; a real file has less than 30.
inline constexpr std::size_t mostElements = 512;

/// The elements of a file, up to the first one that is not whole.
struct Contents {
    std::vector<Element> elements;
    std::string defect; ///< what is wrong with the file as a whole: a clause; else empty
};
Contents readElements(std::string_view file);

/// What the data of an element is, by the data itself where it says so, else by the type.
Payload payloadOf(const Element& element) noexcept;

/// A picture of a file, not yet decoded. An element and its mask are one picture. The views are
/// views of the file's bytes.
struct Picture {
    TypeCode type;
    Payload payload = Payload::unknown; ///< png, jpeg2000, argb or rgb
    std::uint32_t width = 0;            ///< by the header of a PNG or JPEG 2000, else by the type
    std::uint32_t height = 0;
    std::string_view bytes;
    std::string_view mask; ///< empty where there is none: the picture is opaque
};

/// The picture in one of a file's elements, with its mask from the others; absent where `pictures`
/// leaves it out.
std::optional<Picture> pictureOf(const Element& element, std::span<const Element> elements);

/// The pictures of a file in its order, those that do not decode included; none for bytes that are
/// no icon file. Pictures whose header claims more pixels than are allowed, or more than its bytes
/// could hold, are left out. Nothing is decoded, so this costs little for any file.
std::vector<Picture> pictures(std::string_view file);

/// Decodes a PNG or JPEG 2000, absent when it cannot.
using Decoder = std::function<std::optional<Image>(Payload, std::string_view bytes)>;

/// Absent when the picture does not decode, or not to the size that it claims.
std::optional<Image> decode(const Picture& picture, const Decoder& decoder);

/// Makes an icon file that an application bundle shows at every size. One element a size (with its
/// mask, where it has one), in the order in which they are added.
class Writer {
public:
    /// Whether a picture of `side` pixels is stored as PNG: 64 to 1024. 32 and 16 are not: they
    /// would not show.
    static bool takesPng(std::uint32_t side) noexcept;

    /// Throws std::invalid_argument when `png` is no PNG of 1024, 512, 256, 128 or 64 pixels a
    /// side. This and the next throw std::length_error when the file would be too long for its
    /// format.
    void addPng(std::string_view png);
    /// Throws std::invalid_argument when `image` is not square with 32 or 16 pixels a side.
    void addRunLength(const Image& image);
    /// The whole file, with what was added until now.
    std::string file() const;

private:
    void addElement(TypeCode type, std::string_view payload);

    std::string elements_;
};

} // namespace ambrel::icns
