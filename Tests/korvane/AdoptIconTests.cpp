#include "AdoptFixture.h"

#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/Images.h"
#include "Support/Pictures.h"

namespace korvane::test {

namespace {

std::string png(std::uint32_t width, const Pixel& color) {
    return ambrel::images::encodePng(filledPicture(width, width, color));
}

/// The colour of the icon that was made for a bundle.
Pixel colorOfIcon(const Path& bundle) {
    const auto images = ambrel::imagesIn(readFile(bundle + "/Contents/Resources/AppIcon.icns"));
    REQUIRE(images.size() == 7);
    return pixelAt(images.front(), 500, 500);
}

} // namespace

TEST_CASE("the icon is made of the largest PNG of the theme and the pixmaps") {
    const AdoptFixture fixture;
    const auto& tmp = fixture.manager.tmp;
    writeFile(tmp / "share/icons/hicolor/48x48/apps/mail.png", png(48, red));
    writeFile(tmp / "share/icons/hicolor/512x512/apps/mail.png", png(256, blue));
    writeFile(fixture.manager.home / ".local/share/icons/hicolor/64x64@2x/apps/mail.png",
              png(512, green));
    writeFile(tmp / "share/pixmaps/mail.png", png(100, black));
    writeFile(tmp / "share/icons/hicolor/1024x1024/apps/mail.png", "no picture");
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nIcon=mail");

    const auto bundle = fixture.adopt("mail");

    CHECK(colorOfIcon(bundle) == green);
    CHECK(*fixture.infoOf(bundle).at("CFBundleIconFile").string() == "AppIcon");
}

TEST_CASE(
    "the icon is a drawing where there is no large picture and an XPM where there is no other") {
    const AdoptFixture fixture;
    const auto& tmp = fixture.manager.tmp;
    const auto svg = [](const std::string& color) {
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"16\" height=\"16\">"
               "<rect width=\"16\" height=\"16\" fill=\"" +
               color + "\"/></svg>";
    };
    writeFile(tmp / "share/icons/hicolor/scalable/apps/drawn.svg", svg("#0000ff"));
    writeFile(tmp / "share/icons/hicolor/48x48/apps/drawn.png", png(48, red));
    writeFile(tmp / "share/icons/hicolor/scalable/apps/large.svg", svg("#0000ff"));
    writeFile(tmp / "share/icons/hicolor/256x256/apps/large.png", png(256, green));
    writeFile(tmp / "share/pixmaps/old.xpm", "/* XPM */\nstatic char * x[] = {\n\"2 2 1 1\",\n"
                                             "\"a c #FF0000\",\n\"aa\",\n\"aa\"};\n");
    const auto colorOf = [&](const std::string& icon) {
        fixture.writeEntry("mail", "Exec=" + fixture.program + "\nIcon=" + icon);
        // Drawings are told by the MIME types of the system (Shared MIME-info Database).
        const auto done = fixture.manager.run({"adopt", "mail", "--into", "for-" + icon},
                                              {{"XDG_DATA_DIRS", (tmp / "share") + ":/usr/share"}});
        REQUIRE(done.status == 0);
        return colorOfIcon(done.output.substr(0, done.output.size() - 1));
    };

    CHECK(colorOf("drawn") == blue);
    CHECK(colorOf("drawn.png") == blue);
    CHECK(colorOf("large") == green);
    CHECK(colorOf("old") == red);
}

TEST_CASE("an icon is found in the user's theme, in those that it inherits and in any other") {
    const AdoptFixture fixture;
    const auto& tmp = fixture.manager.tmp;
    const auto config = fixture.manager.home / ".config/";
    const auto picture = [&](const std::string& place, std::uint32_t width, const Pixel& color) {
        writeFile(tmp / ("share/icons/" + place + ".png"), png(width, color));
    };
    const auto index = [&](const std::string& theme, const std::string& lines) {
        writeFile(tmp / ("share/icons/" + theme + "/index.theme"),
                  "[Icon Theme]\nName=x\n" + lines + "\n[16x16/any]\nSize=16\n");
    };
    index("Mine", "Inherits=Parent,hicolor\nDirectories=16x16/any");
    index("Parent", "Directories=16x16/any\nScaledDirectories=16x16@2x/places");
    index("Adwaita", "Directories=48x48/legacy");
    index("Zebra", "Directories=48/other");
    picture("Mine/16x16/any/own", 16, green);
    picture("hicolor/48x48/apps/own", 512, red);
    picture("Parent/16x16@2x/places/inherited", 32, blue);
    picture("hicolor/48x48/apps/inherited", 48, red);
    picture("Mine/unlisted/any/common", 48, red);
    picture("hicolor/48x48/mimetypes/common", 48, green);
    picture("Adwaita/48x48/legacy/fallback", 48, blue);
    picture("Zebra/48/other/fallback", 48, red);
    picture("Zebra/48/other/last", 48, green);
    picture("loose", 48, blue);
    picture("Adwaita/48x48/legacy/drawn-symbolic", 48, green);
    writeFile(fixture.manager.home / ".icons/hicolor/16x16/apps/home.png", png(16, blue));
    const auto colorOf = [&](const std::string& icon, const std::string& into) {
        fixture.writeEntry("mail", "Exec=" + fixture.program + "\nIcon=" + icon);
        const auto done = fixture.manager.run({"adopt", "mail", "--into", into + icon});
        REQUIRE(done.status == 0);
        return colorOfIcon(done.output.substr(0, done.output.size() - 1));
    };

    CHECK(colorOf("own", "plain-") == red);
    writeFile(config + "gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Mine\n");
    for (const std::string desktop : {"gtk-", "kde-"}) {
        CHECK(colorOf("own", desktop) == green);
        CHECK(colorOf("inherited", desktop) == blue);
        CHECK(colorOf("common", desktop) == green);
        CHECK(colorOf("fallback", desktop) == blue);
        CHECK(colorOf("last", desktop) == green);
        CHECK(colorOf("loose", desktop) == blue);
        CHECK(colorOf("drawn", desktop) == green);
        CHECK(colorOf("home", desktop) == blue);
        writeFile(config + "gtk-3.0/settings.ini", "[Other]\ngtk-icon-theme-name=Zebra\n");
        writeFile(config + "kdeglobals", "[General]\nTheme=Other\n[Icons]\nTheme=Mine\n");
    }
}

TEST_CASE("an icon is taken by its path, and is left out when it cannot be read") {
    const AdoptFixture fixture;
    const auto icon = writeFile(fixture.manager.tmp / "icon.bin", png(10, red));
    fixture.writeEntry("a", "Exec=" + fixture.program + "\nIcon=" + icon);
    const auto svg = writeFile(fixture.manager.tmp / "icon.png", "<svg/>");
    fixture.writeEntry("b", "Exec=" + fixture.program + "\nIcon=" + svg);

    CHECK(colorOfIcon(fixture.adopt("a")) == red);
    const auto done = fixture.manager.run({"adopt", "b", "--into", "other"});
    CHECK(done.status == 0);
    CHECK(says(done.error, "It has no icon"));
    CHECK_FALSE(
        fixture.infoOf(fixture.manager.tmp / "other/Mail Reader.app").count("CFBundleIconFile"));
}

TEST_CASE("a program whose icon cannot be read is adopted without it") {
    const AdoptFixture fixture;
    const auto icon = writeFile(fixture.manager.tmp / "icon.png", png(64, red).substr(0, 60));
    fixture.writeEntry("a", "Exec=" + fixture.program + "\nIcon=" + icon);

    const auto done = fixture.manager.run({"adopt", "a", "--into", "other"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "It has no icon"));
    CHECK_FALSE(
        fixture.infoOf(fixture.manager.tmp / "other/Mail Reader.app").count("CFBundleIconFile"));
}

} // namespace korvane::test
