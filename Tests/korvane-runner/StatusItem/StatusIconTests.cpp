#include "korvane-runner/StatusItem/StatusIcon.h"

#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Platform/Images.h"
#include "Support/Builders.h"
#include "Support/Expect.h"
#include "Support/Pictures.h"
#include "korvane-runner/StatusItem/GenericIcon.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

std::string iconFile(const std::vector<std::pair<std::uint32_t, Pixel>>& pictures) {
    icns::Writer writer;
    for (const auto& [side, pixel] : pictures) {
        const auto image = filledPicture(side, side, pixel);
        if (icns::Writer::takesPng(side)) {
            writer.addPng(images::encodePng(image));
        } else {
            writer.addRunLength(image);
        }
    }
    return writer.file();
}

/// What is in the middle of each size.
std::vector<Pixel> middles(const StatusImage& image) {
    std::vector<Pixel> found;
    for (const auto& size : image.sizes) {
        found.push_back(pixelAt(size, size.width / 2, size.height / 2));
    }
    return found;
}

std::vector<Pixel> allOf(const Pixel& pixel) { return {4, pixel}; }

void checkSides(const StatusImage& image) {
    REQUIRE(image.sizes.size() == 4);
    for (std::size_t i = 0; i < 4; ++i) {
        CHECK(image.sizes[i].width == statusSides[i]);
        CHECK(image.sizes[i].height == statusSides[i]);
    }
}

} // namespace

TEST_CASE("a status item's picture comes in 18, 22, 36 and 44 pixels, smallest first") {
    const TempDir tmp;
    writeFile(tmp / "AppIcon.icns", iconFile({{64, red}}));

    for (const auto& file : {tmp / "AppIcon.icns", tmp / "missing.icns"}) {
        const auto image = menuBarImage({.own = file, .app = {}}, false);
        checkSides(image);
        CHECK_FALSE(image.isTemplate);
        CHECK(menuBarImage({.own = file, .app = {}}, true).isTemplate);
    }
    CHECK(statusSides == std::array<std::uint32_t, 4>{18, 22, 36, 44});
}

TEST_CASE("the smallest picture that suffices is taken, else the largest") {
    const TempDir tmp;
    const auto file = tmp / "AppIcon.icns";
    const auto taken = [&] { return middles(menuBarImage({.own = file, .app = {}}, false)); };

    writeFile(file, iconFile({{1024, red}, {32, green}, {64, blue}, {128, white}, {16, black}}));
    CHECK(taken() == allOf(blue));
    writeFile(file, iconFile({{16, red}, {32, green}}));
    CHECK(taken() == allOf(green));
}

TEST_CASE("a picture that does not decode gives way to the next that suffices") {
    const TempDir tmp;
    const auto file = tmp / "AppIcon.icns";
    auto broken = iconFile({{64, red}});
    const auto data = broken.find("IDAT");
    REQUIRE(data != std::string::npos);
    for (std::size_t i = data + 4; i < data + 12; ++i) broken[i] = '\x55';
    const auto whole = iconFile({{128, green}, {32, blue}});
    auto both = broken + whole.substr(8);
    const auto length = static_cast<std::uint32_t>(both.size());
    for (std::size_t i = 0; i < 4; ++i) both[4 + i] = static_cast<char>(length >> (24 - 8 * i));
    writeFile(file, both);

    CHECK(middles(menuBarImage({.own = file, .app = {}}, false)) == allOf(green));
}

TEST_CASE("whatever picture the icon file really holds is shown") {
    const TempDir tmp;
    const auto file = tmp / "AppIcon.icns";
    writeFile(file, images::encodePng(filledPicture(100, 100, green)));

    CHECK(middles(menuBarImage({.own = file, .app = {}}, false)) == allOf(green));
}

TEST_CASE("a picture that is not square keeps its proportions, in the middle") {
    const TempDir tmp;
    const auto file = tmp / "AppIcon.icns";
    writeFile(file, images::encodePng(filledPicture(88, 44, green)));

    const auto image = menuBarImage({.own = file, .app = {}}, false);
    checkSides(image);
    const auto& largest = image.sizes.back();
    CHECK(pixelAt(largest, 0, 22) == green);
    CHECK(pixelAt(largest, 43, 22) == green);
    CHECK(pixelAt(largest, 22, 12) == green);
    CHECK(pixelAt(largest, 22, 10) == clear);
    CHECK(pixelAt(largest, 22, 34) == clear);
}

TEST_CASE("a picture as thin as a hair costs no more than its pixels") {
    const TempDir tmp;
    const auto file = tmp / "AppIcon.icns";
    writeFile(file, images::encodePng(filledPicture(32768, 1, green)));

    const auto image = menuBarImage({.own = file, .app = {}}, false);
    checkSides(image);
    for (const auto& size : image.sizes) {
        CHECK(pixelAt(size, 0, (size.height - 1) / 2) == green);
        CHECK(pixelAt(size, size.width - 1, 0) == clear);
    }
}

TEST_CASE("without an icon of its own an instance has its application's, else a drawn one") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "App.app")
                         .iconFile("Mail")
                         .file("Contents/Resources/Mail.icns", iconFile({{64, blue}}))
                         .write();
    const auto drawn = genericIcon(44, false);
    const auto image = [&](const Path& own, const Path& bundle) {
        return menuBarImage({.own = own, .app = bundle}, false);
    };

    CHECK(middles(image(tmp / "missing", app)) == allOf(blue));
    CHECK(image(tmp / "missing", "").sizes.back() == drawn);
    CHECK(image("", "").sizes.back() == drawn);
    CHECK(image("", tmp / "Missing.app").sizes.back() == drawn);

    writeFile(tmp / "own", "no picture");
    CHECK(middles(image(tmp / "own", app)) == allOf(blue));
    writeFile(tmp / "App.app/Contents/Resources/Mail.icns", "");
    CHECK(image(tmp / "own", app).sizes.back() == drawn);
}

TEST_CASE("the drawn picture is a window, and as a template only its lines") {
    const auto colored = genericIcon(44, false);
    const auto lines = genericIcon(44, true);

    CHECK(pixelAt(colored, 0, 0) == clear);
    CHECK(pixelAt(lines, 0, 0) == clear);
    CHECK(pixelAt(colored, 22, 26)[3] == 255);
    CHECK(pixelAt(lines, 22, 26) == clear);
    CHECK(pixelAt(lines, 22, 10)[3] == 255);
    CHECK(pixelAt(lines, 22, 10) == pixelAt(colored, 22, 10));
    CHECK(pixelAt(colored, 22, 26) != pixelAt(colored, 22, 10));
}
