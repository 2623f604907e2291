#include "Ambrel/Formats/Icns.h"

#include "Support/Expect.h"
#include "Support/Icons.h"

using namespace ambrel;
using namespace ambrel::icns;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

/// Stands for a decoder: a picture of one colour in the size that the header claims.
std::optional<Image> grey(Payload payload, std::string_view bytes) {
    const bool isPng = payload == Payload::png;
    const auto number = [&](std::size_t at) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at]) << 8 |
                                          static_cast<unsigned char>(bytes[at + 1]));
    };
    const auto stream = bytes.find("\xFF\x4F\xFF\x51");
    const auto width = isPng ? number(18) : number(stream + 10);
    const auto height = isPng ? number(22) : number(stream + 14);
    return Image{width, height, std::vector<std::uint8_t>(std::size_t{width} * height * 4, 128)};
}

std::optional<Image> noImage(Payload, std::string_view) { return std::nullopt; }

Image opaque(Image image) {
    for (std::size_t at = 3; at < image.pixels.size(); at += 4) image.pixels[at] = 255;
    return image;
}

Picture onlyPicture(const std::string& file) {
    auto found = pictures(file);
    REQUIRE(found.size() == 1);
    return found.front();
}

std::vector<std::uint32_t> widthsIn(const std::string& file) {
    std::vector<std::uint32_t> widths;
    for (const auto& picture : pictures(file)) widths.push_back(picture.width);
    return widths;
}

} // namespace

TEST_CASE("a type that cannot be printed is named by its number") {
    CHECK(TypeCode("ic10").name() == "ic10");
    CHECK(TypeCode("TOC ").name() == "TOC ");
    CHECK(TypeCode(0xFDD92FA8).name() == "0xFDD92FA8");
    CHECK(TypeCode(0x0000000A).name() == "0x0000000A");
}

TEST_CASE("run-length colours with a mask are one picture") {
    struct {
        std::string type, mask;
        std::uint32_t side;
        std::string start;
    } const cases[] = {
        {"is32", "s8mk", 16, ""},           {"il32", "l8mk", 32, ""},  {"ih32", "h8mk", 48, ""},
        {"it32", "t8mk", 128, "\0\0\0\0"s}, {"it32", "t8mk", 128, ""}, {"icp4", "s8mk", 16, ""},
        {"icp5", "l8mk", 32, ""},
    };
    for (const auto& given : cases) {
        CAPTURE(given.type);
        CAPTURE(given.start.size());
        const auto sample = samplePicture(given.side);
        const auto colors = given.start + planesOf(sample, "RGB");
        const auto after =
            IcnsBuilder().element(given.type, colors).element(given.mask, maskOf(sample)).file();
        const auto before =
            IcnsBuilder().element(given.mask, maskOf(sample)).element(given.type, colors).file();
        const auto without = IcnsBuilder().element(given.type, colors).file();

        CHECK(decode(onlyPicture(after), noImage) == sample);
        CHECK(decode(onlyPicture(before), noImage) == sample);
        CHECK(decode(onlyPicture(without), noImage) == opaque(sample));
        CHECK(onlyPicture(after).payload == Payload::rgb);
    }
}

TEST_CASE("four planes after the letters ARGB are a picture") {
    struct {
        std::string type;
        std::uint32_t side;
    } const cases[] = {{"ic04", 16}, {"ic05", 32}, {"icsb", 18}};
    for (const auto& given : cases) {
        CAPTURE(given.type);
        const auto sample = samplePicture(given.side);
        const auto file =
            IcnsBuilder().element(given.type, "ARGB" + planesOf(sample, "ARGB")).file();

        CHECK(onlyPicture(file).payload == Payload::argb);
        CHECK(decode(onlyPicture(file), noImage) == sample);
    }
}

TEST_CASE(
    "PNG and JPEG 2000 are known in every type that holds pictures and sized by their header") {
    for (const std::string type : {"icp4", "icp5", "icp6", "ic04", "ic05", "ic07", "ic08", "ic09",
                                   "ic10", "ic11", "ic12", "ic13", "ic14", "is32", "it32"}) {
        CAPTURE(type);
        const auto png = pngClaiming(72, 40);
        const auto jpeg = jpeg2000Claiming(72, 40);
        const auto file = IcnsBuilder().element(type, png).element(type, jpeg).file();

        const auto found = pictures(file);

        REQUIRE(found.size() == 2);
        CHECK(found[0].payload == Payload::png);
        CHECK(found[0].bytes == png);
        CHECK(found[1].payload == Payload::jpeg2000);
        CHECK(found[1].bytes == jpeg);
        CHECK(found[1].width == 72);
        CHECK(found[1].height == 40);
        CHECK(decode(found[0], grey)->width == 72);
        CHECK(decode(found[1], grey)->height == 40);
    }
}

TEST_CASE("pictures come in the order of the file") {
    const auto small = samplePicture(16);
    const auto file = IcnsBuilder()
                          .element("ic12", pngClaiming(64, 64))
                          .element("s8mk", maskOf(small))
                          .element("ic11", pngClaiming(32, 32))
                          .element("is32", planesOf(small, "RGB"))
                          .element("ic07", jpeg2000Claiming(128, 128))
                          .file();

    CHECK(widthsIn(file) == std::vector<std::uint32_t>{64, 32, 16, 128});
}

TEST_CASE("elements that hold no picture of their own are passed over") {
    const auto inner = IcnsBuilder().element("ic12", pngClaiming(64, 64)).file();
    for (const std::string type :
         {"TOC ", "icnV", "info", "name", "slct", "sbtp", "\xFD\xD9\x2F\xA8", "ICN#", "icl8",
          "s8mk", "t8mk", "what", "\xFF\xFF\xFF\xFF"}) {
        CAPTURE(type);
        const auto file = IcnsBuilder().element(type, inner).element("ic11", pngClaiming(32, 32));

        CHECK(widthsIn(file.file()) == std::vector<std::uint32_t>{32});
    }
}

TEST_CASE("the first whole mask of the right type is the picture's") {
    const auto sample = samplePicture(16);
    const auto colors = planesOf(sample, "RGB");
    const auto mask = maskOf(sample);
    const auto withMasks = [&](const std::string& first, const std::string& second) {
        return IcnsBuilder()
            .element("is32", colors)
            .element("l8mk", std::string(32 * 32, '\1'))
            .element("s8mk", first)
            .element("s8mk", second)
            .file();
    };

    CHECK(decode(onlyPicture(withMasks(mask, std::string(256, '\1'))), noImage) == sample);
    CHECK(decode(onlyPicture(withMasks(mask.substr(1), mask)), noImage) == sample);
    CHECK(decode(onlyPicture(withMasks(mask + "more", "")), noImage) == sample);
    CHECK(decode(onlyPicture(withMasks(mask.substr(1), "")), noImage) == opaque(sample));
}

TEST_CASE("pictures that do not decode give none, whatever the reason") {
    const auto sample = samplePicture(16);
    const auto rgb = planesOf(sample, "RGB");
    struct {
        std::string what;
        std::string type;
        std::string payload;
        Decoder decoder;
    } const cases[] = {
        {"planes that end early", "is32", rgb.substr(0, rgb.size() - 2), noImage},
        {"only two planes", "is32", planesOf(sample, "RG"), noImage},
        {"no data at all", "is32", "", noImage},
        {"nothing but the zeros at the start", "it32", "\0\0\0\0"s, noImage},
        {"a run beyond its plane", "is32", std::string(50, '\xFF'), noImage},
        {"three planes where four belong", "ic04", "ARGB" + rgb, noImage},
        {"letters without planes", "ic04", "ARGB", noImage},
        {"a decoder that cannot", "ic11", pngClaiming(16, 16), noImage},
        {"another size than claimed", "ic11", pngClaiming(16, 16),
         [](Payload, std::string_view) { return std::optional(samplePicture(17)); }},
        {"fewer pixels than the size needs", "ic11", pngClaiming(16, 16),
         [](Payload, std::string_view) {
             return std::optional(Image{16, 16, {1, 2, 3, 4}});
         }},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        const auto file = IcnsBuilder().element(given.type, given.payload).file();
        CHECK_FALSE(decode(onlyPicture(file), given.decoder).has_value());
    }
}

TEST_CASE("claims that cannot be true are left out before anything is decoded") {
    struct {
        std::string what;
        std::string payload;
    } const cases[] = {
        {"a PNG of 16384 pixels in a hundred bytes", pngClaiming(16384, 16384)},
        {"a PNG of 4096 pixels in a hundred bytes", pngClaiming(4096, 4096)},
        {"a PNG wider than allowed", pngClaiming(4097, 1)},
        {"a PNG higher than allowed", pngClaiming(1, 4097)},
        {"a JPEG 2000 wider than any type", jpeg2000Claiming(1025, 1)},
        {"a JPEG 2000 higher than any type", codestreamClaiming(1, 0xFFFFFFFF)},
        {"a PNG of no pixels", pngClaiming(0, 0)},
        {"no known data", "ARGH"},
        {"no data", ""},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        const auto file = IcnsBuilder()
                              .element("ic10", given.payload)
                              .element("ic11", pngClaiming(32, 32))
                              .file();
        CHECK(widthsIn(file) == std::vector<std::uint32_t>{32});
    }
}

TEST_CASE("reading stops at the first element that is not whole and says why") {
    const auto icon = [](const std::string& raw) {
        return IcnsBuilder().element("ic11", pngClaiming(32, 32)).raw(raw).file();
    };
    struct {
        std::string what;
        std::string file;
        std::size_t elements;
        std::string defect;
    } const cases[] = {
        {"nothing", "", 0, "it is no icon file"},
        {"four letters", "icns", 0, "it is no icon file"},
        {"another file", "\x89PNG\r\n\x1A\n", 0, "it is no icon file"},
        {"no elements", IcnsBuilder().file(), 0, ""},
        {"a whole file", icon(""), 1, ""},
        {"an element without data", icon("icnV\0\0\0\x08"s), 2, ""},
        {"a length of nothing", icon("ic10\0\0\0\0"s), 1, "an element's length is impossible"},
        {"a length below the header's", icon("ic10\0\0\0\x07more"s), 1,
         "an element's length is impossible"},
        {"a length of 1 GB", icon("ic10\x40\0\0\0more"s), 1, "the last element is cut off"},
        {"the greatest length", icon("ic10\xFF\xFF\xFF\xFFmore"s), 1,
         "the last element is cut off"},
        {"a length one too many", icon("icnV\0\0\0\x09"s), 1, "the last element is cut off"},
        {"half a header", icon("ic10\0\0\0"s), 1, "the last element's header is cut off"},
        {"a file that is cut off", icon("icnV\0\0\0\x0Cmore"s).substr(0, icon("").size() + 10), 1,
         "the last element is cut off"},
        {"a file cut between elements", icon("icnV\0\0\0\x08"s).substr(0, icon("").size()), 1,
         "it is shorter than its header says"},
        {"more after the end", icon("") + "icnV\0\0\0\x08"s, 1,
         "it is longer than its header says"},
        {"a length of the file of nothing", "icns\0\0\0\0icnV\0\0\0\x08"s, 0,
         "it is longer than its header says"},
        {"a claim of 4 GB", "icns\xFF\xFF\xFF\xFFicnV\0\0\0\x08"s, 1,
         "it is shorter than its header says"},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        const auto contents = readElements(given.file);
        CHECK(contents.elements.size() == given.elements);
        CHECK(contents.defect == given.defect);
        CHECK(pictures(given.file).size() ==
              (given.elements > 0 && contains(given.file, "ic11") ? 1 : 0));
    }
}

TEST_CASE("elements know where they stand") {
    const auto file = IcnsBuilder().element("icnV", "1234").element("name", "icon").file();

    const auto contents = readElements(file);

    REQUIRE(contents.elements.size() == 2);
    CHECK(contents.elements[0].type == TypeCode("icnV"));
    CHECK(contents.elements[0].offset == 8);
    CHECK(contents.elements[1].offset == 20);
    CHECK(contents.elements[1].payload == "icon");
}

TEST_CASE("a file of nothing but elements without data is not read to its end") {
    IcnsBuilder builder;
    for (std::size_t i = 0; i < mostElements; ++i) builder.element("icnV", "");
    CHECK(readElements(builder.file()).defect.empty());

    builder.element("icnV", "");

    CHECK(readElements(builder.file()).elements.size() == mostElements);
    CHECK(readElements(builder.file()).defect == "it has too many elements");
}
