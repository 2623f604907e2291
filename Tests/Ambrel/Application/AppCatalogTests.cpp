#include "Ambrel/Application/AppCatalog.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/NewRoot.h"
#include "Support/Programs.h"

#include <thread>
#include <unordered_set>

using namespace ambrel;
using namespace korvane::test;
using InstalledApp = AppCatalog::InstalledApp;

namespace {

std::vector<InstalledApp> scan(const std::vector<Path>& folders) {
    return AppCatalog::scan(folders, {}, {.codesign = "/nonexistent/codesign"});
}

Strings namesOf(const std::vector<InstalledApp>& apps) {
    Strings names;
    for (const auto& app : apps) names.push_back(app.name);
    return names;
}

std::optional<Path> iconOf(const TempDir& tmp, const std::string& declared,
                           const std::vector<std::string>& files) {
    const auto bundle = tmp / "I.app";
    AppBundleBuilder builder(bundle);
    builder.iconFile(declared);
    for (const auto& file : files) builder.file("Contents/Resources/" + file);
    return InstalledApp{builder.write(), "I", "i"}.iconURL();
}

} // namespace

TEST_CASE("by default an application in Applications and in the user's Applications appears once, "
          "from Applications") {
    const TempDir tmp;
    const NewRoot root(tmp);
    AppBundleBuilder(root / "Applications/Mail.app").identifier("org.mail").write();
    AppBundleBuilder(root / "Applications/Utilities/Tool.app").identifier("org.tool").write();
    AppBundleBuilder(root / "System/Applications/Mail.app").identifier("org.mail").write();
    AppBundleBuilder(root / "System/Applications/Base.app").identifier("org.base").write();
    AppBundleBuilder(root / "home/Applications/Mail.app").identifier("org.mail").write();
    AppBundleBuilder(root / "home/Applications/Own.app").identifier("org.own").write();

    const auto said = root.run({KORVANE_TEST_HELPER, "scan"}, {{"CFFIXED_USER_HOME", "/home"}});

    CAPTURE(said.error);
    CHECK(said.output == "/System/Applications/Base.app org.base\n"
                         "/Applications/Mail.app org.mail\n"
                         "/home/Applications/Own.app org.own\n"
                         "/Applications/Utilities/Tool.app org.tool\n");
}

TEST_CASE("the default folders are four, in an order that decides which copy is kept") {
    const TempDir tmp;
    const UserHome user(tmp);

    CHECK(AppCatalog::defaultSearchDirs(user.places()) ==
          Strings{"/Applications", "/Applications/Utilities", user / "Applications",
                  "/System/Applications"});
}

TEST_CASE("a wrapper of this system is not listed") {
    const TempDir tmp;
    const auto tool = writeScript(tmp / "codesign", "echo \"$5\" >> \"$0.seen\"");
    AppBundleBuilder(tmp / "apps/Real.app").identifier("org.real").write();
    AppBundleBuilder(tmp / "apps/Wrapper.app")
        .identifier("org.wrapper")
        .file("Contents/Resources/instance.json", "not even JSON")
        .write();

    const auto apps = AppCatalog::scan(Strings{tmp / "apps"}, {}, {.codesign = tool});

    CHECK(namesOf(apps) == Strings{"Real"});
    CHECK(readFile(tmp / "codesign.seen") == (tmp / "apps/Real.app") + "\n");
}

TEST_CASE("an application without identifier is listed with its file name, once for each name") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "one/Tool.app").write();
    AppBundleBuilder(tmp / "two/Tool.app").write();
    AppBundleBuilder(tmp / "two/tool.app").write();

    const auto apps = scan({tmp / "one", tmp / "two"});

    REQUIRE(apps.size() == 2);
    CHECK(apps[0] == InstalledApp{tmp / "one/Tool.app", "Tool", "Tool"});
    CHECK(apps[1] == InstalledApp{tmp / "two/tool.app", "tool", "tool"});
}

TEST_CASE("an application is listed under its file name and not under its display name") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "Zeta.app")
        .identifier("org.zeta")
        .entry("CFBundleDisplayName", "<string>Alpha</string>")
        .entry("CFBundleName", "<string>Alpha</string>")
        .write();
    AppBundleBuilder(tmp / "Middle.app").identifier("org.middle").write();

    CHECK(namesOf(scan({tmp.path()})) == Strings{"Middle", "Zeta"});
}

TEST_CASE("names that differ only in case sort as alpha, Beta, Charlie") {
    const TempDir tmp;
    for (const auto* name : {"Charlie", "alpha", "Beta"}) {
        AppBundleBuilder(tmp / std::string(name) + ".app").identifier(name).write();
    }

    CHECK(namesOf(scan({tmp.path()})) == Strings{"alpha", "Beta", "Charlie"});
}

TEST_CASE("applications whose names compare equal keep the order in which they were found") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "one/Mail.app").identifier("a").write();
    AppBundleBuilder(tmp / "two/MAIL.app").identifier("b").write();
    AppBundleBuilder(tmp / "three/mail.app").identifier("c").write();

    CHECK(namesOf(scan({tmp / "one", tmp / "two", tmp / "three"})) ==
          Strings{"Mail", "MAIL", "mail"});
    CHECK(namesOf(scan({tmp / "three", tmp / "two", tmp / "one"})) ==
          Strings{"mail", "MAIL", "Mail"});
}

TEST_CASE("many applications of one name keep the order in which they were found") {
    const TempDir tmp;
    std::vector<Path> folders;
    Strings expected;
    for (const char letter : std::string("qwertyuiopasdfghjklzxcvbnmQWERTYUIOP")) {
        folders.push_back(tmp / std::string("in ") + letter);
        expected.push_back(folders.back() + "/Mail.app");
        AppBundleBuilder(expected.back()).identifier(std::string(1, letter)).write();
    }

    Strings found;
    for (const auto& app : scan(folders)) found.push_back(app.url);

    CHECK(found == expected);
}

TEST_CASE("a declared icon is found with and without its extension, and only when it exists") {
    const TempDir tmp;
    const auto expected = tmp / "I.app/Contents/Resources/AppIcon.icns";
    CHECK(iconOf(tmp, "AppIcon", {"AppIcon.icns"}) == expected);
    CHECK(iconOf(tmp, "AppIcon.icns", {}) == expected);
    CHECK_FALSE(iconOf(tmp, "Missing", {"Missing", "Missing.png"}).has_value());
    CHECK_FALSE(iconOf(tmp, "appicon", {}).has_value());
    CHECK(iconOf(tmp, "Odd.ICNS", {"Odd.ICNS.icns"}) ==
          tmp / "I.app/Contents/Resources/Odd.ICNS.icns");
    CHECK(iconOf(tmp, "v1.5", {"v1.5.icns"}) == tmp / "I.app/Contents/Resources/v1.5.icns");
}

TEST_CASE("without a declared icon of type string there is none, whatever files lie there") {
    const TempDir tmp;
    AppBundleBuilder builder(tmp / "I.app");
    builder.file("Contents/Resources/AppIcon.icns").file("Contents/Resources/I.icns");
    CHECK_FALSE(InstalledApp{builder.write(), "I", "i"}.iconURL().has_value());
    builder.entry("CFBundleIconName", "<string>AppIcon</string>");
    CHECK_FALSE(InstalledApp{builder.write(), "I", "i"}.iconURL().has_value());
    builder.entry("CFBundleIconFile", "<array><string>AppIcon</string></array>");
    CHECK_FALSE(InstalledApp{builder.write(), "I", "i"}.iconURL().has_value());
    CHECK_FALSE(InstalledApp{tmp / "missing.app", "I", "i"}.iconURL().has_value());
}

TEST_CASE("an icon is looked up anew at every call") {
    const TempDir tmp;
    const InstalledApp app{AppBundleBuilder(tmp / "I.app").iconFile("A").write(), "I", "i"};
    CHECK_FALSE(app.iconURL().has_value());
    writeFile(tmp / "I.app/Contents/Resources/A.icns");
    CHECK(app.iconURL().has_value());
}

TEST_CASE("an empty list of folders gives an empty result") { CHECK(scan({}).empty()); }

TEST_CASE("a folder called Something APP in capitals is not listed") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "Something.APP").write();
    AppBundleBuilder(tmp / "Other.App").write();
    AppBundleBuilder(tmp / "Plain").write();
    AppBundleBuilder(tmp / "dotted.app.bak").write();
    AppBundleBuilder(tmp / ".app").write();

    CHECK(scan({tmp.path()}).empty());
}

TEST_CASE("one level is listed, hidden entries and links included") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "dir/.Hidden.app").identifier("h").write();
    AppBundleBuilder(tmp / "dir/sub/Below.app").identifier("b").write();
    AppBundleBuilder(tmp / "real/Target").identifier("l").write();
    makeLink(tmp / "dir/Linked.app", tmp / "real/Target");
    writeFile(tmp / "dir/File.app");
    makeLink(tmp / "dir/Dangling.app", "nowhere");

    const auto apps = scan({(tmp / "dir") + "/"});

    CHECK(namesOf(apps) == Strings{".Hidden", "Linked"});
    CHECK(apps[1].url == tmp / "dir/Linked.app");
    CHECK(apps[1].id() == apps[1].url);
}

TEST_CASE("folders and bundles that cannot be read are left out") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "good/A.app").identifier("a").write();
    AppBundleBuilder(tmp / "good/NoPlist.app").withoutInfoPlist().write();
    AppBundleBuilder(tmp / "good/BadPlist.app").infoPlist("garbage").write();
    AppBundleBuilder(tmp / "locked/B.app").identifier("b").write();
    writeFile(tmp / "file");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "locked", 0000);

    const auto said = asOrdinaryUser([&] {
        std::string names;
        for (const auto& app : scan({tmp / "missing", tmp / "file", tmp / "locked", "",
                                     tmp / "good", tmp / "x" + std::string("\0", 1)})) {
            names += app.name + " ";
        }
        return names;
    });

    CHECK(said == "A ");
}

TEST_CASE("identifiers are compared exactly and a folder listed twice counts once") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "A.app").identifier("org.Mail").write();
    AppBundleBuilder(tmp / "B.app").identifier("org.mail").write();

    CHECK(namesOf(scan({tmp.path(), tmp.path()})) == Strings{"A", "B"});
}

TEST_CASE("names on disk that are no UTF-8 are listed as they are") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "b\xff.app").identifier("b").write();
    AppBundleBuilder(tmp / "a.app").identifier("a").write();

    CHECK(namesOf(scan({tmp.path()})) == Strings{"a", "b\xff"});
}

TEST_CASE("progress is told after each inspected bundle") {
    const TempDir tmp;
    for (const auto* name : {"A", "B", "C"}) {
        AppBundleBuilder(tmp / std::string(name) + ".app").identifier(name).write();
    }
    std::vector<std::size_t> found;

    AppCatalog::scan(Strings{tmp.path()}, [&](std::size_t count) { found.push_back(count); },
                     {.codesign = "/nonexistent/codesign"});

    CHECK((found == std::vector<std::size_t>{1, 2, 3}));
}

TEST_CASE("probes side by side change neither what is found nor the order in which it is told") {
    const TempDir tmp;
    const auto tool = writeScript(tmp / "codesign", "touch \"$0.${5##*/}\"");
    Strings expected;
    Strings folders;
    for (int i = 10; i < 30; ++i) {
        folders.push_back(tmp / "in" + std::to_string(i));
        const auto own = "Mail " + std::to_string(i);
        AppBundleBuilder(folders.back() + "/" + own + ".app").identifier(own).write();
        AppBundleBuilder(folders.back() + "/Shared.app").identifier("shared").write();
        expected.push_back(own);
    }
    expected.emplace_back("Shared");
    std::vector<std::size_t> told;
    bool isHere = true;
    const auto progress = [&, here = std::this_thread::get_id()](std::size_t found) {
        told.push_back(found);
        isHere = isHere && std::this_thread::get_id() == here;
    };

    const auto apps = AppCatalog::scan(folders, progress, {.codesign = tool});

    CHECK(namesOf(apps) == expected);
    CHECK(apps.back().url == folders.front() + "/Shared.app");
    REQUIRE(told.size() == expected.size());
    for (std::size_t i = 0; i < told.size(); ++i) CHECK(told[i] == i + 1);
    CHECK(isHere);
    for (const auto& name : expected) CHECK(isThere(tmp / "codesign." + name + ".app"));
}

TEST_CASE("records are equal and hash alike exactly when all three fields are") {
    const InstalledApp app{"/a", "A", "id"};
    const std::hash<InstalledApp> hash;
    CHECK(app == InstalledApp{"/a", "A", "id"});
    CHECK(hash(app) == hash(InstalledApp{"/a", "A", "id"}));
    for (const auto& other : {InstalledApp{"/b", "A", "id"}, InstalledApp{"/a", "B", "id"},
                              InstalledApp{"/a", "A", "x"}}) {
        CHECK_FALSE(app == other);
        CHECK(hash(app) != hash(other));
    }
    CHECK(std::unordered_set<InstalledApp>{app, app}.size() == 1);
}
