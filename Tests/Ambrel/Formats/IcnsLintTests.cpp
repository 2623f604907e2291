#include "Ambrel/Formats/IcnsLint.h"

#include "Support/Expect.h"
#include "Support/Icons.h"

using namespace ambrel;
using namespace ambrel::icns;
using namespace korvane::test;

namespace {

std::optional<Image> noImage(Payload, std::string_view) { return std::nullopt; }

LintEntry onlyEntry(const IcnsBuilder& icon, const Decoder& decoder = nullptr) {
    const auto report = lint(icon.file(), decoder);
    REQUIRE(report.entries.size() == 1);
    return report.entries.front();
}

const Image small = samplePicture(16);
const std::string colors = planesOf(small, "RGB");

} // namespace

TEST_CASE("a file as the writer makes it is clean") {
    Writer writer;
    writer.addPng(pngOf(samplePicture(64)));
    writer.addRunLength(samplePicture(32));
    writer.addRunLength(small);

    const auto report = lint(writer.file());

    CHECK(report.isClean());
    REQUIRE(report.entries.size() == 5);
    CHECK(report.entries[0].type == TypeCode("ic12"));
    CHECK(report.entries[0].payload == Payload::png);
    CHECK(report.entries[0].width == 64);
    CHECK(report.entries[0].bytes == pngOf(samplePicture(64)).size());
    CHECK(report.entries[3].payload == Payload::rgb);
    CHECK(report.entries[4].payload == Payload::mask);
    CHECK(report.entries[4].bytes == 256);
}

TEST_CASE("elements that a bundle does not show are named with the reason") {
    const auto png16 = pngClaiming(16, 16);
    struct {
        std::string type;
        std::string payload;
        std::string remark;
    } const cases[] = {
        {"icp4", png16, "only run-length colours show in this type, others are scrambled"},
        {"icp5", pngClaiming(32, 32),
         "only run-length colours show in this type, others are scrambled"},
        {"icp6", pngClaiming(48, 48), "no data of this type shows on every system"},
        {"ic04", png16, "only \"ARGB\" data shows in this type"},
        {"ic05", jpeg2000Claiming(32, 32), "only \"ARGB\" data shows in this type"},
        {"ic04", "data of no kind", "only \"ARGB\" data shows in this type"},
        {"is32", png16, "only run-length colours with a mask show in this type"},
        {"is32", colors, "its mask s8mk is missing"},
        {"il32", colors, "its data does not decode"},
        {"ic07", pngClaiming(64, 64), "the type stands for 128 x 128 pixels"},
        {"ic07", "ARGB", "only PNG or JPEG 2000 shows in this type"},
        {"ic12", jpeg2000Claiming(64, 64), "only PNG shows in this type"},
        {"ic10", pngClaiming(1024, 1024), "its header is broken or claims an impossible size"},
        {"s8mk", maskOf(small), "there is no picture for it"},
        {"s8mk", "short", "it is too short for 16 x 16 pixels"},
        {"icl8", "x", "this type is of systems that are no longer in use"},
        {"sb24", pngClaiming(24, 24), "this type is for the sidebar of a file list"},
        {"what", "x", "the type is not known"},
    };
    for (const auto& given : cases) {
        CAPTURE(given.type);
        CAPTURE(given.remark);
        const auto entry = onlyEntry(IcnsBuilder().element(given.type, given.payload));
        CHECK(entry.showing == Showing::doesNotShow);
        CHECK(entry.remark == given.remark);
    }
}

TEST_CASE("elements that a bundle shows have nothing to remark") {
    struct {
        std::string type;
        std::string payload;
    } const cases[] = {
        {"ic04", "ARGB" + planesOf(small, "ARGB")},
        {"ic05", "ARGB" + planesOf(samplePicture(32), "ARGB")},
        {"ic07", jpeg2000Claiming(128, 128)},
        {"ic07", pngOf(samplePicture(128))},
        {"ic11", pngClaiming(32, 32)},
        {"ic12", pngClaiming(64, 64)},
        {"ic13", pngOf(samplePicture(256))},
    };
    for (const auto& given : cases) {
        CAPTURE(given.type);
        const auto entry = onlyEntry(IcnsBuilder().element(given.type, given.payload));
        CHECK(entry.showing == Showing::shows);
        CHECK(entry.remark == "");
    }
}

TEST_CASE("with a decoder, pictures that do not decode are found") {
    const auto icon = IcnsBuilder().element("ic12", pngClaiming(64, 64));

    CHECK(onlyEntry(icon).showing == Showing::shows);
    CHECK(onlyEntry(icon, noImage).showing == Showing::doesNotShow);
    CHECK(onlyEntry(icon, noImage).remark == "its data does not decode");
}

TEST_CASE("planes without a byte after them show, but not quite right") {
    const auto withoutEnd = colors.substr(0, colors.size() - 1);
    const auto file =
        IcnsBuilder().element("is32", withoutEnd).element("s8mk", maskOf(small)).file();

    const auto report = lint(file);

    CHECK(report.entries[0].showing == Showing::shows);
    CHECK(report.entries[0].remark == "no byte follows the last plane, so that Macs with Arm "
                                      "processors lose the last blue value");
    CHECK(report.entries[1].remark == "");
    CHECK_FALSE(report.isClean());
}

TEST_CASE("of two elements with one type the second does not show") {
    const auto png = pngClaiming(64, 64);

    const auto report = lint(IcnsBuilder().element("ic12", png).element("ic12", png).file());

    CHECK(report.entries[0].showing == Showing::shows);
    CHECK(report.entries[1].showing == Showing::doesNotShow);
    CHECK(report.entries[1].remark == "an earlier element has the same type");
}

TEST_CASE("elements without a picture are named and harmless") {
    const auto report = lint(IcnsBuilder()
                                 .element("TOC ", "")
                                 .element("icnV", "1234")
                                 .element("\xFD\xD9\x2F\xA8", IcnsBuilder().file())
                                 .file());

    CHECK(report.isClean());
    REQUIRE(report.entries.size() == 3);
    CHECK(report.entries[0].showing == Showing::noPicture);
    CHECK(report.entries[0].width == 0);
    CHECK(nameOf(report.entries[1].payload) == "information");
    CHECK(report.entries[2].payload == Payload::nested);
    CHECK(report.entries[2].remark == "it holds a whole icon file for another appearance");
}

TEST_CASE("a file that is not whole is not clean") {
    const auto report = lint(IcnsBuilder().raw("ic10").file());

    CHECK(report.entries.empty());
    CHECK(report.defect == "the last element's header is cut off");
    CHECK_FALSE(report.isClean());
}
