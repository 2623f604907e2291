#include "Ambrel/Formats/PictureHeader.h"

#include "Support/Expect.h"
#include "Support/Icons.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

} // namespace

TEST_CASE("the size of a PNG is known without its pixels") {
    CHECK(pngSize(pngOf(samplePicture(48, 5))) == PixelSize{48, 5});
    CHECK(pngSize(pngClaiming(64, 64)) == PixelSize{64, 64});
    CHECK(isPng(pngClaiming(1, 1)));
}

TEST_CASE("headers that are broken or claim what cannot be give no size of a PNG") {
    const auto whole = pngClaiming(16, 16);
    struct {
        std::string what;
        std::string bytes;
    } const cases[] = {
        {"nothing", ""},
        {"only the signature", whole.substr(0, 8)},
        {"a header that is cut off", whole.substr(0, 25)},
        {"another signature", "x" + whole.substr(1)},
        {"another chunk first", replaced(whole, "IHDR", "IDAT")},
        {"no width", pngClaiming(0, 16)},
        {"no height", pngClaiming(16, 0)},
        {"a colour type that does not exist", replaced(whole, "\x08\x06", "\x08\x05")},
        {"more pixels than the bytes can hold", pngClaiming(1024, 1024)},
        {"one column of all the rows", pngClaiming(1, 0xFFFFFFFF)},
        {"one row of all the columns", pngClaiming(0xFFFFFFFF, 1)},
        {"a size whose bytes are beyond 64 bits", pngClaiming(0xFFFFFFFF, 0xFFFFFFFF)},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        CHECK_FALSE(pngSize(given.bytes).has_value());
    }
}

TEST_CASE("the size of a JPEG 2000 is known with and without its boxes") {
    CHECK(jpeg2000Size(jpeg2000Claiming(128, 64)) == PixelSize{128, 64});
    CHECK(jpeg2000Size(codestreamClaiming(128, 64)) == PixelSize{128, 64});
    CHECK(isJpeg2000(jpeg2000Claiming(1, 1)));
    CHECK(isJpeg2000(codestreamClaiming(1, 1)));
}

TEST_CASE("given a codestream that does not begin at zero, its size is what lies within") {
    auto stream = codestreamClaiming(128, 64);
    stream.replace(16, 8, bigEndian(28) + bigEndian(4));

    CHECK(jpeg2000Size(stream) == PixelSize{100, 60});
}

TEST_CASE("headers that are broken or contradict themselves give no size of a JPEG 2000") {
    const auto whole = jpeg2000Claiming(16, 16);
    auto inverted = codestreamClaiming(16, 16);
    inverted.replace(16, 4, bigEndian(17));
    auto lyingBox = whole;
    lyingBox.replace(lyingBox.find("ihdr") + 4, 4, bigEndian(17));
    struct {
        std::string what;
        std::string bytes;
    } const cases[] = {
        {"nothing", ""},
        {"only the signature", whole.substr(0, 12)},
        {"no image header", replaced(whole, "ihdr", "xxxx")},
        {"no codestream", replaced(whole, "jp2c", "xxxx")},
        {"a codestream that is cut off", whole.substr(0, whole.find("jp2c") + 20)},
        {"a box longer than the file",
         replaced(whole, bigEndian(12) + "ftyp", bigEndian(0x40000000) + "ftyp")},
        {"a box without a length", replaced(whole, bigEndian(12) + "ftyp", bigEndian(7) + "ftyp")},
        {"no width", jpeg2000Claiming(0, 16)},
        {"no height", codestreamClaiming(16, 0)},
        {"an end before the beginning", inverted},
        {"two sizes", lyingBox},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        CHECK_FALSE(jpeg2000Size(given.bytes).has_value());
    }
}
