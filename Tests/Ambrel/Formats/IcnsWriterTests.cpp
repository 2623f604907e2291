#include "Ambrel/Formats/Icns.h"

#include "Support/Expect.h"
#include "Support/Icons.h"

#include <stdexcept>

using namespace ambrel;
using namespace ambrel::icns;
using namespace korvane::test;

namespace {

std::optional<Image> noImage(Payload, std::string_view) { return std::nullopt; }

Strings typesIn(const std::string& file) {
    Strings names;
    for (const auto& element : readElements(file).elements) names.push_back(element.type.name());
    return names;
}

} // namespace

TEST_CASE("the seven sizes are stored in order, each in the type that shows in a bundle") {
    Writer writer;
    for (const std::uint32_t side : {1024U, 512U, 256U, 128U, 64U}) {
        CHECK(Writer::takesPng(side));
        writer.addPng(pngOf(samplePicture(side)));
    }
    for (const std::uint32_t side : {32U, 16U}) {
        CHECK_FALSE(Writer::takesPng(side));
        writer.addRunLength(samplePicture(side));
    }

    const auto file = writer.file();

    CHECK(typesIn(file) ==
          Strings{"ic10", "ic09", "ic08", "ic07", "ic12", "il32", "l8mk", "is32", "s8mk"});
    CHECK(readElements(file).defect.empty());
    const auto found = pictures(file);
    REQUIRE(found.size() == 7);
    CHECK(found[0].bytes == pngOf(samplePicture(1024)));
    CHECK(found[4].width == 64);
    CHECK(decode(found[5], noImage) == samplePicture(32));
    CHECK(decode(found[6], noImage) == samplePicture(16));
}

TEST_CASE("one NUL byte follows the last plane") {
    Image black{16, 16, std::vector<std::uint8_t>(16 * 16 * 4, 1)};
    Writer writer;

    writer.addRunLength(black);

    // 256 equal bytes are a run of 130 and one of 126.
    const std::string plane("\xFF\x01\xFB\x01", 4);
    CHECK(readElements(writer.file()).elements[0].payload == plane + plane + plane + '\0');
}

TEST_CASE("a file without pictures is a header") {
    CHECK(Writer().file() == std::string("icns\0\0\0\x08", 8));
}

TEST_CASE("what would not show is not written") {
    Writer writer;
    for (const std::uint32_t side : {0U, 16U, 32U, 48U, 63U, 2048U}) {
        CAPTURE(side);
        CHECK_FALSE(Writer::takesPng(side));
    }
    CHECK_THROWS_AS(writer.addPng(pngOf(samplePicture(32))), std::invalid_argument);
    CHECK_THROWS_AS(writer.addPng(pngOf(samplePicture(64, 32))), std::invalid_argument);
    CHECK_THROWS_AS(writer.addPng("no PNG"), std::invalid_argument);
    CHECK_THROWS_AS(writer.addRunLength(samplePicture(64)), std::invalid_argument);
    CHECK_THROWS_AS(writer.addRunLength(samplePicture(16, 32)), std::invalid_argument);
    CHECK_THROWS_AS(writer.addRunLength(Image{16, 16, {1, 2, 3, 4}}), std::invalid_argument);
    CHECK(writer.file() == Writer().file());
}
