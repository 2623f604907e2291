#include "korvane-runner/Desktop/Linux/StatusNotifierIcon.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/FolderLock.h"
#include "Ambrel/Platform/Images.h"
#include "PrivateBus.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

/// A picture whose pixels all look the same.
Image filled(std::uint32_t side, std::vector<std::uint8_t> rgba) {
    Image image{side, side, {}};
    for (std::uint32_t i = 0; i < side * side; ++i) {
        image.pixels.insert(image.pixels.end(), rgba.begin(), rgba.end());
    }
    return image;
}

StatusImage templateOfAllSizes() {
    const std::vector<std::uint8_t> halfRed{200, 1, 2, 128};
    return {{filled(18, halfRed), filled(22, halfRed), filled(36, halfRed), filled(44, halfRed)},
            true};
}

std::string pixmapsOf(const StatusNotifierIcon& icon) { return printed(icon.pixmaps()); }

/// A session's folder for the time of a test.
struct Session {
    TempDir tmp;
    ScopedVariable variable{"XDG_RUNTIME_DIR", makeFolder(tmp / "run")};

    Strings names() const { return namesIn(tmp / "run"); }
};

} // namespace

TEST_CASE("a picture in colour is pixels, alpha first, and no name") {
    const Session session;
    const StatusNotifierIcon icon(
        "org.example.a", {{{1, 1, {1, 2, 3, 4}}, {2, 1, {5, 6, 7, 0, 255, 254, 253, 252}}}, false});

    CHECK(pixmapsOf(icon) == "[(1, 1, [byte 0x04, 0x01, 0x02, 0x03]), "
                             "(2, 1, [0x00, 0x05, 0x06, 0x07, 0xfc, 0xff, 0xfe, 0xfd])]");
    CHECK(icon.name().empty());
    CHECK(icon.themeFolder().empty());
    CHECK(session.names().empty());
}

TEST_CASE("no picture at all is an empty list of its type") {
    const Session session;
    CHECK(pixmapsOf(StatusNotifierIcon("org.example.a", {})) == "@a(iiay) []");
}

TEST_CASE("a template lies where panels find what they draw in the colour of their text") {
    const Session session;
    {
        const StatusNotifierIcon icon("org.example.a", templateOfAllSizes());

        CHECK(icon.name() == "org.example.a-symbolic");
        const Path folder = icon.themeFolder();
        CHECK(Strings{folder} == Strings{session.tmp / "run/" + session.names().at(0)});
        CHECK(modeOf(folder) == 0700);
        CHECK(namesIn(folder) == Strings{"hicolor"});
        CHECK(namesIn(folder + "/hicolor") == Strings{"22x22", "22x22@2", "36x36"});
        for (const auto& [side, name] :
             {std::pair{22U, "22x22"}, {44U, "22x22@2"}, {36U, "36x36"}}) {
            const auto file = folder + "/hicolor/" + name + "/apps/org.example.a-symbolic";
            CHECK(images::decodePng(readFile(file + ".symbolic.png")) ==
                  filled(side, {0, 0, 0, 128}));
        }
    }
    CHECK(session.names().empty());
}

TEST_CASE("to panels that look for no files a template is grey, with its alpha") {
    const Session session;
    const StatusNotifierIcon icon("org.example.a", {{{2, 1, {1, 2, 3, 4, 0, 0, 0, 0}}}, true});

    CHECK(pixmapsOf(icon) == "[(2, 1, [byte 0x04, 0x80, 0x80, 0x80, 0x00, 0x80, 0x80, 0x80])]");
}

TEST_CASE("without a folder of the session a template is grey pixels alone") {
    const TempDir tmp;
    writeFile(tmp / "file");
    const WorkingDirectory here(tmp.path());
    makeFolder(tmp / "relative");
    for (const auto& folder : std::vector<std::optional<std::string>>{std::nullopt, "", "relative",
                                                                      tmp / "gone", tmp / "file"}) {
        const ScopedVariable variable("XDG_RUNTIME_DIR", folder);
        const StatusNotifierIcon icon("org.example.a", templateOfAllSizes());

        CHECK(icon.name().empty());
        CHECK(icon.themeFolder().empty());
        CHECK(beginsWith(pixmapsOf(icon), "[(18, 18, [byte 0x80, 0x80, 0x80, 0x80, "));
    }
    CHECK(namesIn(tmp / "relative").empty());
}

TEST_CASE("without a right to write into the session's folder a template is grey pixels alone") {
    const TempDir tmp;
    giveToOrdinaryUser(tmp.path());
    const auto result = asOrdinaryUser([&] {
        setMode(tmp.path(), 0500);
        const ScopedVariable variable("XDG_RUNTIME_DIR", tmp.path());
        const auto name = StatusNotifierIcon("org.example.a", templateOfAllSizes()).name();
        setMode(tmp.path(), 0700);
        return name;
    });

    CHECK(result.empty());
}

TEST_CASE("the next icon removes what killed programs have left, and nothing else") {
    const Session session;
    const auto at = [&](const char* name) { return session.tmp / "run/" + name; };
    const auto abandoned = at(".korvane-0123456789abcdef-icons");
    writeFile(abandoned + "/hicolor/22x22/apps/x-symbolic.symbolic.png");
    setMode(abandoned, 0700);
    const auto inUse = makeFolder(at(".korvane-fedcba9876543210-icons"));
    setMode(inUse, 0700);
    const auto lock = FolderLock::tryTake(inUse);
    REQUIRE(lock.has_value());
    const auto others = makeFolder(at(".korvane-0000000000000000-icons")); // open to others
    setMode(others, 0755);
    writeFile(session.tmp / "elsewhere/file");
    makeLink(at(".korvane-1111111111111111-icons"), session.tmp / "elsewhere");
    makeFolder(at(".korvane-2222222222222222"));
    makeFolder(at("icons"));
    const Strings before = session.names();

    const StatusNotifierIcon icon("org.example.a", {{filled(22, {1, 2, 3, 4})}, false});

    Strings expected = before;
    std::erase(expected, ".korvane-0123456789abcdef-icons");
    CHECK(session.names() == expected);
    CHECK(isThere(session.tmp / "elsewhere/file"));
}

TEST_CASE("two programs have folders of their own, and neither takes the other's away") {
    const Session session;
    const StatusNotifierIcon first("org.example.a", templateOfAllSizes());
    {
        const StatusNotifierIcon second("org.example.a", templateOfAllSizes());
        CHECK(second.themeFolder() != first.themeFolder());
        CHECK(session.names().size() == 2);
    }
    CHECK(session.names().size() == 1);
    CHECK(isRealFolder(first.themeFolder()));
}
