#include "korvane-runner/Web/InstanceIcon.h"

#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Platform/Images.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

std::string png(std::uint32_t side) {
    Image image;
    image.width = side;
    image.height = side;
    image.pixels.resize(std::size_t{side} * side * 4, 0x7F);
    return images::encodePng(image);
}

std::string iconFile(const std::vector<std::uint32_t>& sides) {
    icns::Writer writer;
    for (const auto side : sides) writer.addPng(png(side));
    return writer.file();
}

} // namespace

TEST_CASE("a banner's picture is the smallest that is large enough, else the largest") {
    CHECK(bannerPicture(iconFile({1024, 256, 128, 64})) == png(128));
    CHECK(bannerPicture(iconFile({64, 512, 256})) == png(256));
    CHECK(bannerPicture(iconFile({64})) == png(64));
    CHECK_FALSE(bannerPicture(iconFile({})));
    CHECK_FALSE(bannerPicture("no icon"));
}

TEST_CASE("the picture lies beside the data, and is written again only when it changes") {
    const TempDir tmp;
    const auto icns = writeFile(tmp / "AppIcon.icns", iconFile({128}));
    const auto place = tmp / "icon.png";

    CHECK(ensurePicture(icns, place) == place);
    CHECK(readFile(place) == png(128));
    const auto first = statusOf(place).st_ino;
    CHECK(ensurePicture(icns, place) == place);
    CHECK(statusOf(place).st_ino == first);
    writeFile(icns, iconFile({256}));
    CHECK(ensurePicture(icns, place) == place);
    CHECK(readFile(place) == png(256));

    CHECK(ensurePicture(tmp / "missing", place).empty());
    CHECK(ensurePicture(icns, tmp / "missing/icon.png").empty());
}
