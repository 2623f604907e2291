#include "Composing.h"

#include "Ambrel/Formats/Icns.h"
#include "Support/Expect.h"

#include <cmath>

using namespace ambrel;
using namespace korvane::test;
using ComposeError = IconComposer::ComposeError;
using Position = IconLabel::Position;

namespace {

const Strings typesInOrder{"ic10", "ic09", "ic08", "ic07", "ic12", "il32", "l8mk", "is32", "s8mk"};

Strings typesIn(const Path& icon) {
    Strings types;
    const auto file = readFile(icon);
    for (const auto& element : icns::readElements(file).elements) {
        types.push_back(element.type.name());
    }
    return types;
}

} // namespace

TEST_CASE("the output holds images of 1024, 512, 256, 128, 64, 32 and 16 pixels in this order") {
    const TempDir tmp;
    const Fonts fonts(tmp);

    const auto images = composed(tmp, filledPicture(300, 300, blue), {"x", "", Position::top});

    REQUIRE(images.size() == 7);
    for (std::size_t i = 0; i < images.size(); ++i) {
        CHECK(images[i].width == IconComposer::outputSizes[i]);
        CHECK(images[i].height == IconComposer::outputSizes[i]);
    }
    CHECK(typesIn(tmp / "composed.icns") == typesInOrder);
}

TEST_CASE("an empty label text gives the source drawn at the seven sizes") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto source = picture(1024, 1024, [](auto x, auto y) {
        return Pixel{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y),
                     static_cast<std::uint8_t>(x / 4), static_cast<std::uint8_t>(128 + y / 8)};
    });

    const auto images = composed(tmp, source, {"", "FF0000", Position::center});

    CHECK(images[0] == source);
    // The first pixel of 16 by 16 is the mean of 64 by 64 of the source, colours weighed by alpha.
    double sums[4] = {};
    for (std::uint32_t y = 0; y < 64; ++y) {
        for (std::uint32_t x = 0; x < 64; ++x) {
            const auto pixel = pixelAt(source, x, y);
            for (std::size_t i = 0; i < 3; ++i) sums[i] += pixel[i] * pixel[3];
            sums[3] += pixel[3];
        }
    }
    Pixel mean;
    for (std::size_t i = 0; i < 3; ++i)
        mean[i] = static_cast<std::uint8_t>(std::lround(sums[i] / sums[3]));
    mean[3] = static_cast<std::uint8_t>(std::lround(sums[3] / 4096));
    CHECK(isNear(pixelAt(images[6], 0, 0), mean, 1));
}

TEST_CASE("a source of 16, 512 and 128 pixels is composed from the one of 512") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    icns::Writer writer;
    writer.addRunLength(filledPicture(16, 16, blue));
    writer.addPng(images::encodePng(filledPicture(512, 512, red)));
    writer.addPng(images::encodePng(filledPicture(128, 128, green)));
    const auto source = writeFile(tmp / "source.icns", writer.file());

    IconComposer::compose(source, {"", "", Position::top}, tmp / "out.icns");

    for (const auto& image : imagesIn(readFile(tmp / "out.icns"))) {
        CHECK(pixelAt(image, image.width / 2, image.height / 2) == red);
    }
}

TEST_CASE("an element that does not decode is skipped for the next smaller one") {
    const TempDir tmp;
    auto broken = images::encodePng(filledPicture(512, 512, red));
    broken[broken.size() / 2] = static_cast<char>(broken[broken.size() / 2] ^ 0x55);
    icns::Writer writer;
    writer.addPng(broken);
    writer.addPng(images::encodePng(filledPicture(128, 128, green)));

    const auto image =
        IconComposer::loadLargestImage(writeFile(tmp / "source.icns", writer.file()));

    REQUIRE(image.has_value());
    CHECK(*image == filledPicture(128, 128, green));
}

TEST_CASE("a source that is not square is stretched over the whole square") {
    const TempDir tmp;
    const auto source = picture(200, 50, [](auto x, auto) { return x < 100 ? red : blue; });

    for (const auto& image : composed(tmp, source, {"", "", Position::top})) {
        CHECK(pixelAt(image, 0, 0) == red);
        CHECK(pixelAt(image, 0, image.height - 1) == red);
        CHECK(pixelAt(image, image.width - 1, image.height - 1) == blue);
    }
}

TEST_CASE("thin lines become an even grey in the small images") {
    const TempDir tmp;
    const auto source =
        picture(1024, 1024, [](auto x, auto) { return x % 3 == 0 ? white : black; });

    const auto smallest = composed(tmp, source, {"", "", Position::top}).back();

    for (std::uint32_t x = 0; x < 16; ++x) {
        CHECK(isNear(pixelAt(smallest, x, 7), {85, 85, 85, 255}, 3));
    }
}

TEST_CASE("the hidden colour of transparent pixels leaves no fringe") {
    const TempDir tmp;
    const auto source = picture(1000, 1000, [](auto x, auto) {
        return x < 333 ? Pixel{0, 255, 0, 0} : red;
    });

    for (const auto& image : composed(tmp, source, {"", "", Position::top})) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const auto pixel = pixelAt(image, x, 0);
            if (pixel[3] > 0) CHECK(pixel[1] == 0);
            if (pixel[3] == 0) CHECK(pixel == clear);
        }
    }
}

TEST_CASE("a source that is no image fails with its path and nothing is written") {
    const TempDir tmp;
    const auto folder = makeFolder(tmp / "folder");
    const auto before = namesIn(tmp.path());
    for (const auto& source :
         {writeFile(tmp / "text.png", "no picture"), writeFile(tmp / "empty.icns"),
          writeFile(tmp / "head.icns", std::string("icns\0\0\0\x08", 8)),
          writeFile(tmp / "png.png", "\x89PNG\r\n\x1A\n"), folder, tmp / "missing.png"}) {
        CAPTURE(source);

        const auto error = expectThrow<ComposeError>([&] {
            IconComposer::compose(source, {"x", "", Position::top}, tmp / "folder/out.icns");
        });

        CHECK(error.kind == ComposeError::Kind::noSourceImage);
        CHECK(error.description() == "No readable image in " + source);
        CHECK(error.subject == source);
        CHECK(namesIn(folder).empty());
    }
}

TEST_CASE("a destination that cannot be written fails and leaves no remains") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto source = writePicture(tmp, filledPicture(16, 16, red));
    makeFolder(tmp / "out/a folder.icns");
    writeFile(tmp / "out/a folder.icns/kept", "kept");
    for (const auto& destination : {tmp / "out/a folder.icns", tmp / "no folder/out.icns"}) {
        CAPTURE(destination);

        const auto error = expectThrow<ComposeError>([&] {
            IconComposer::compose(source, {"x", "", Position::top}, destination);
        });

        CHECK(error.kind == ComposeError::Kind::destinationFailed);
        CHECK(error.description() == "Could not write the composited .icns");
        CHECK(namesIn(tmp / "out") == Strings{"a folder.icns"});
        CHECK(readFile(tmp / "out/a folder.icns/kept") == "kept");
        CHECK_FALSE(isThere(tmp / "no folder"));
    }
}

TEST_CASE("an icon that exists is replaced, and a link to one is not followed") {
    const TempDir tmp;
    const auto source = writePicture(tmp, filledPicture(16, 16, red));
    const auto old = writeFile(tmp / "old", "old");
    makeLink(tmp / "out.icns", old);

    IconComposer::compose(source, {"", "", Position::top}, tmp / "out.icns");
    IconComposer::compose(source, {"", "", Position::top}, tmp / "out.icns");

    CHECK(readFile(old) == "old");
    CHECK_FALSE(isLink(tmp / "out.icns"));
    CHECK(typesIn(tmp / "out.icns") == typesInOrder);
    CHECK(namesIn(tmp.path()) == Strings{"old", "out.icns", "source.png"});
}

TEST_CASE("an icon may be composed over its own source") {
    const TempDir tmp;
    const auto file = writePicture(tmp, filledPicture(16, 16, red));

    IconComposer::compose(file, {"", "", Position::top}, file);

    CHECK(imagesIn(readFile(file)).size() == 7);
}
