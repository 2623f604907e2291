#include "Manager.h"

#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Support/Pictures.h"

namespace korvane::test {

namespace {

std::string png(std::uint32_t width, const Pixel& color) {
    return ambrel::images::encodePng(filledPicture(width, width, color));
}

/// A manager with fonts, and a picture to make icons of.
struct Fixture {
    Manager manager;
    Fonts fonts{manager.tmp};
    Path picture = writeFile(manager.tmp / "picture.png", png(64, blue));
    Path out = manager.tmp / "out.icns";

    std::vector<ambrel::Image> made() const { return ambrel::imagesIn(readFile(out)); }
};

Path iconIn(const Path& bundle) { return bundle + "/Contents/Resources/AppIcon.icns"; }

/// Whether the middle of the lower edge, where a label's letter I stands, is of the color.
bool hasLabel(const Path& icon, const Pixel& color) {
    const auto images = ambrel::imagesIn(readFile(icon));
    REQUIRE(images.size() == 7);
    return pixelAt(images.front(), 512, 1023 - 100) == color;
}

} // namespace

TEST_CASE("icon makes an icon file of a picture and writes its path") {
    const Fixture fixture;

    const auto output = fixture.manager.result({"icon", fixture.picture, "-o", fixture.out});

    CHECK(output == fixture.out + "\n");
    const auto images = fixture.made();
    REQUIRE(images.size() == 7);
    for (const auto& image : images) CHECK(image == filledPicture(image.width, image.width, blue));
}

TEST_CASE("icon draws the label in the color and at the place that are given") {
    const Fixture fixture;
    fixture.manager.result({"icon", fixture.picture, "--output", fixture.out, "--label", "i",
                            "--color", "#FF0000", "--position", "top"});

    const auto image = fixture.made().front();

    CHECK(pixelAt(image, 512, 100) == red);
    CHECK(pixelAt(image, 512, 512) == blue);
    CHECK_FALSE(hasLabel(fixture.out, red));
    fixture.manager.result({"icon", fixture.picture, "-o", fixture.out, "--label", "i"});
    CHECK(hasLabel(fixture.out, white));
}

TEST_CASE("a preview shows the seven sizes on light and on dark") {
    const Fixture fixture;
    const auto preview = fixture.manager.tmp / "sheet.png";

    const auto output = fixture.manager.result({"icon", fixture.picture, "--preview", preview});

    CHECK(output == preview + "\n");
    const auto images = ambrel::imagesIn(readFile(preview));
    REQUIRE(images.size() == 1);
    const auto& sheet = images.front();
    std::size_t blues = 0;
    for (std::uint32_t y = 0; y < sheet.height; ++y) {
        for (std::uint32_t x = 0; x < sheet.width; ++x) blues += pixelAt(sheet, x, y) == blue;
    }
    std::size_t expected = 0;
    for (const std::size_t size : ambrel::IconComposer::outputSizes) expected += size * size;
    CHECK(blues == 2 * expected);
    CHECK(pixelAt(sheet, 0, 0)[0] > 200);
    CHECK(pixelAt(sheet, 0, sheet.height - 1)[0] < 60);
    CHECK_FALSE(isThere(fixture.out));
    CHECK(namesIn(fixture.manager.tmp.path()) ==
          Strings{"data", "fonts.conf", "picture.png", "share", "sheet.png", "user"});
}

TEST_CASE("icon says what is wrong with its words") {
    const Fixture fixture;
    for (const auto& more : {Strings{}, Strings{"-o", fixture.out, "--color", "FF0000"},
                             Strings{"-o", fixture.out, "--label", "x", "--color", "red"},
                             Strings{"-o", fixture.out, "--label", "x", "--position", "left"},
                             Strings{"-o", fixture.out, "--lable", "x"}}) {
        Strings words{"icon", fixture.picture};
        words.insert(words.end(), more.begin(), more.end());
        fixture.manager.refusal(words, 2);
        CHECK_FALSE(isThere(fixture.out));
    }
    CHECK(says(fixture.manager.refusal({"icon", fixture.picture, "-o", fixture.out, "--lable"}, 2),
               "Did you mean \"--label\"?"));
}

TEST_CASE("a source that is no picture is refused and nothing is written") {
    const Fixture fixture;
    const auto text = writeFile(fixture.manager.tmp / "text", "text");
    for (const auto& option : {"--output", "--preview"}) {
        CHECK(says(fixture.manager.refusal({"icon", text, option, fixture.out}),
                   "No readable image in " + text));
        CHECK_FALSE(isThere(fixture.out));
    }
}

TEST_CASE("a source that is not there, or a place that is full, is named with the reason") {
    const Fixture fixture;
    const auto missing = fixture.manager.tmp / "missing.png";
    const auto nowhere = fixture.manager.tmp / "nowhere/out";
    for (const std::string option : {"--output", "--preview"}) {
        CAPTURE(option);
        CHECK(fixture.manager.refusal({"icon", missing, option, fixture.out}) ==
              "korvane: Cannot read " + missing + ": No such file or directory\n");
        CHECK(fixture.manager.refusal({"icon", fixture.picture, option, nowhere}) ==
              "korvane: Cannot write " + nowhere + ": No such file or directory\n");
    }
}

TEST_CASE("icon tells programs what it has written as JSON") {
    const Fixture fixture;
    const auto preview = fixture.manager.tmp / "sheet.png";

    CHECK(fixture.manager.json(
              {"icon", fixture.picture, "-o", fixture.out, "--preview", preview, "--json"}) ==
          nlohmann::json{{"icon", fixture.out}, {"preview", preview}});
    CHECK(fixture.manager.json({"icon", fixture.picture, "-o", fixture.out, "--json"}) ==
          nlohmann::json{{"icon", fixture.out}});
}

TEST_CASE("given no font, an icon is made without its label, and that is said") {
    const Fixture fixture;
    const Fonts none(fixture.manager.tmp, Fonts::Installed::none);

    const auto done =
        fixture.manager.run({"icon", fixture.picture, "-o", fixture.out, "--label", "i"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "No font with outlines is installed"));
    CHECK_FALSE(hasLabel(fixture.out, white));
}

TEST_CASE("lint lists the elements of a file that shows in a bundle") {
    const Fixture fixture;
    fixture.manager.result({"icon", fixture.picture, "-o", fixture.out});

    const auto report = fixture.manager.json({"icon", "lint", fixture.out, "--json"});

    CHECK(report.at("clean") == true);
    CHECK_FALSE(report.contains("defect"));
    const auto& elements = report.at("elements");
    REQUIRE(elements.size() == 9);
    CHECK(elements[0].at("type") == "ic10");
    CHECK(elements[0].at("pixels") == nlohmann::json{1024, 1024});
    CHECK(elements[0].at("data") == "PNG");
    CHECK(elements[0].at("inBundle") == "shows");
    CHECK(elements[7].at("type") == "is32");
    CHECK(elements[7].at("data") == "run-length RGB");
    CHECK(says(fixture.manager.result({"icon", "lint", fixture.out}), "il32"));
}

TEST_CASE("lint fails for what does not show in a bundle and says why") {
    const Fixture fixture;
    auto file = png(16, red);
    const auto size = file.size() + 8;
    auto length = [](std::size_t value) {
        return std::string{'\0', '\0', static_cast<char>(value >> 8), static_cast<char>(value)};
    };
    file = "icns" + length(size + 8) + "icp4" + length(size) + file;
    const auto bad = writeFile(fixture.manager.tmp / "bad.icns", file);

    const auto done = fixture.manager.run({"icon", "lint", bad, "--json"});

    CHECK(done.status == 1);
    const auto report = nlohmann::json::parse(done.output);
    CHECK(report.at("clean") == false);
    CHECK(report.at("elements").at(0).at("inBundle") == "does not show");
    CHECK(report.at("elements").at(0).at("remark") != "");
    CHECK(says(fixture.manager.refusal({"icon", "lint", fixture.picture}),
               fixture.picture + " is no Apple icon file."));
}

TEST_CASE("a picture that is chosen for an instance becomes an icon file") {
    const Fixture fixture;

    const auto bundle =
        fixture.manager.create({"command", "Work", "--icon", fixture.picture, aProgram});

    const auto images = ambrel::imagesIn(readFile(iconIn(bundle)));
    REQUIRE(images.size() == 7);
    CHECK(images.front() == filledPicture(1024, 1024, blue));
    CHECK(namesIn(fixture.manager.applications()) == Strings{"Work.app"});
}

TEST_CASE("an icon file that is chosen is taken as it is") {
    const Fixture fixture;
    const auto icon = writeFile(fixture.manager.tmp / "icon.bin", "icns and whatever");

    const auto bundle = fixture.manager.create({"command", "Work", "--icon", icon, aProgram});

    CHECK(readFile(iconIn(bundle)) == "icns and whatever");
}

TEST_CASE("a chosen icon that is no picture is refused and nothing is left") {
    const Fixture fixture;
    const auto text = writeFile(fixture.manager.tmp / "text", "text");

    CHECK(says(fixture.manager.refusal({"create", "command", "Work", "--icon", text, "--runner",
                                        KORVANE_TEST_RUNNER, aProgram}),
               "No readable image in " + text));

    CHECK_FALSE(isThere(fixture.manager.applications()));
    CHECK_FALSE(isThere(fixture.manager.instanceHome("Work")));
}

TEST_CASE("the label shows in the instance") {
    const Fixture fixture;

    const auto bundle =
        fixture.manager.create({"command", "Work", "--icon", fixture.picture, "--label", "i",
                                "--label-color", "FF0000", aProgram});

    CHECK(hasLabel(iconIn(bundle), red));
}

TEST_CASE("a label without an icon to draw it on is told") {
    const Fixture fixture;

    const auto done = fixture.manager.run(
        {"create", "command", "Work", "--label", "i", "--runner", KORVANE_TEST_RUNNER, aProgram});

    CHECK(done.status == 0);
    CHECK(says(done.error, "There is no icon to draw the label on"));
}

TEST_CASE(
    "given a missing library, the instance gets its icon without the label, and that is said") {
    const Fixture fixture;
    fixture.manager.result({"icon", fixture.picture, "-o", fixture.out});
    writeFile(fixture.manager.tmp / "lib/libharfbuzz.so.0", "no library");

    const auto done =
        fixture.manager.run({"create", "command", "Work", "--icon", fixture.out, "--label", "i",
                             "--runner", KORVANE_TEST_RUNNER, aProgram},
                            {{"LD_LIBRARY_PATH", fixture.manager.tmp / "lib"}});

    INFO(done.error);
    REQUIRE(done.status == 0);
    CHECK(says(done.error, "Cannot load the library libharfbuzz.so.0"));
    const auto bundle = done.output.substr(0, done.output.size() - 1);
    CHECK(readFile(iconIn(bundle)) == readFile(fixture.out));
}

} // namespace korvane::test
