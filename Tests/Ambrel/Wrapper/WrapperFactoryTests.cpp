#include "Ambrel/Wrapper/WrapperFactory.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <unicode/locid.h>

using namespace ambrel;
using namespace korvane::test;
using Engine = WrapperFactory::AppEngine;
using FactoryError = WrapperFactory::FactoryError;
using Request = WrapperFactory::Request;

namespace {

/// A place to create wrappers in, with a runner and a user of its own.
struct Workshop {
    Workshop()
        : user(tmp), runner(writeScript(tmp / "runner-file", "true")),
          factory(user.places(), runner) {}

    Request request(ShortcutKind kind, const std::string& name = "Mail") const {
        Request result;
        result.kind = kind;
        result.displayName = name;
        result.outputDir = tmp / "out";
        return result;
    }
    Request appRequest(const std::string& identifier) const {
        auto result = request(ShortcutKind::app, "Work Chrome");
        result.targetApp = AppBundleBuilder(tmp / "Browser.app").identifier(identifier).write();
        return result;
    }
    InstanceConfig create(const Request& wanted) const {
        return InstanceConfig::decode(
            readFile(factory.create(wanted) + "/Contents/Resources/instance.json"));
    }
    FactoryError errorOf(const Request& wanted) const {
        return expectThrow<FactoryError>([&] { factory.create(wanted); });
    }

    TempDir tmp;
    UserHome user;
    Path runner;
    WrapperFactory factory;
};

const std::string chromiumArgument = "--user-data-dir={{instanceHome}}/KorvaneData";

Engine engineOf(const TempDir& tmp, const std::string& identifier,
                const std::vector<std::string>& files) {
    static int counter = 0;
    AppBundleBuilder builder(tmp / ("Engine" + std::to_string(++counter) + ".app"));
    builder.identifier(identifier);
    for (const auto& file : files) builder.file(file);
    return WrapperFactory::detectEngine(builder.write());
}

const std::string electronFramework = "Contents/Frameworks/Electron Framework.framework/x";

} // namespace

TEST_CASE("a display name of only spaces and line breaks fails with its sentence") {
    const Workshop shop;
    for (const std::string& name : {std::string(" \n\t\r\n "), std::string(),
                                    std::string("\xe3\x80\x80\xc2\xa0\xe2\x80\xa8\xc2\x85")}) {
        CAPTURE(name);
        const auto error = shop.errorOf(shop.request(ShortcutKind::web, name));
        CHECK(error.kind == FactoryError::Kind::emptyName);
        CHECK(error.description() == "The clone needs a non-empty name.");
    }
    CHECK_FALSE(isThere(shop.tmp / "out"));
}

TEST_CASE("a name with blanks on both sides is stored trimmed and names the default home") {
    const Workshop shop;

    const auto config = shop.create(shop.request(ShortcutKind::web, " \n Mail\t\xc2\xa0"));

    CHECK(config.displayName == "Mail");
    CHECK(config.instanceHome == "~/KorvaneInstances/Mail");
    CHECK(config.bundleId == "app.korvane.instance.mail");
    CHECK(namesIn(shop.tmp / "out") == Strings{"Mail.app"});
    CHECK(WrapperFactory::defaultInstanceHome("Mail") == "~/KorvaneInstances/Mail");
}

TEST_CASE("an application request without a target fails naming the root") {
    const Workshop shop;

    const auto error = shop.errorOf(shop.request(ShortcutKind::app));

    CHECK(error.kind == FactoryError::Kind::badTarget);
    CHECK(error.description() == "Not a readable .app: /");
    CHECK_FALSE(isThere(shop.tmp / "out"));
}

TEST_CASE("an application request with an unreadable target fails naming it") {
    const Workshop shop;
    auto request = shop.request(ShortcutKind::app);
    request.targetApp = shop.tmp / "No Such.app";

    const auto error = shop.errorOf(request);

    CHECK(error.description() == "Not a readable .app: " + (shop.tmp / "No Such.app"));
    CHECK(error.subject == shop.tmp / "No Such.app");
    CHECK_FALSE(isThere(shop.tmp / "out"));
}

TEST_CASE("absent extraArgs for a Chromium browser store its data folder, an empty list none") {
    const Workshop shop;
    auto request = shop.appRequest("com.google.Chrome.canary");

    CHECK(shop.create(request).extraArgs == Strings{chromiumArgument});

    request.extraArgs = Strings{};
    CHECK(shop.create(request).extraArgs.empty());
    request.extraArgs = Strings{"--own", "~/x"};
    CHECK(shop.create(request).extraArgs == Strings{"--own", "~/x"});
}

TEST_CASE("a web, file or command request stores an empty target and no detected arguments") {
    const Workshop shop;
    for (const auto kind : {ShortcutKind::web, ShortcutKind::file, ShortcutKind::command}) {
        auto request = shop.appRequest("com.google.chrome");
        request.kind = kind;
        const auto config = shop.create(request);
        CHECK(config.kind == kind);
        CHECK(config.targetAppPath.empty());
        CHECK(config.extraArgs.empty());
        request.targetApp = shop.tmp / "No Such.app";
        CHECK_NOTHROW(shop.create(request));
    }
}

TEST_CASE("an id fragment keeps letters of any script and turns all else into dashes") {
    struct Row {
        std::string text, fragment;
    };
    const std::vector<Row> table{
        {"\xc3\x87"
         "a va",
         "\xc3\xa7"
         "a-va"},
        {"a.b", "a-b"},
        {"My Chat 2", "my-chat-2"},
        {"Work\xe2\x80\x94Mail!", "work-mail-"},
        {"  a", "--a"},
        {"", ""},
        {"\xf0\x9f\x98\x80\xf0\x9f\x98\x80", "--"},
        {"\xd0\x9f\xd0\xbe\xd1\x87\xd1\x82\xd0\xb0", "\xd0\xbf\xd0\xbe\xd1\x87\xd1\x82\xd0\xb0"},
        {"e\xcc\x81", "e\xcc\x81"}, // a combining mark
        {"\xc2\xbd\xe2\x85\xa7", "\xc2\xbd\xe2\x85\xb7"},
        {"a_b/c\\d\n", "a-b-c-d-"},
        {"TITLE", "title"},
        {std::string("a\0b", 3), "a-b"},
    };
    for (const auto& row : table) {
        CAPTURE(row.text);
        CHECK(WrapperFactory::idFragment(row.text) == row.fragment);
        CHECK(WrapperFactory::defaultBundleId(row.text) == "app.korvane.instance." + row.fragment);
    }
}

TEST_CASE("a Turkish locale does not change a bundle identifier") {
    for (const auto* locale : {"tr_TR.UTF-8", "az_AZ.UTF-8", "lt_LT.UTF-8", "C"}) {
        CAPTURE(locale);
        const auto said = run({.command = {KORVANE_TEST_HELPER, "fragment", "INBOX I"},
                               .environment = {{"LC_ALL", locale}, {"LANG", locale}}});
        CHECK(said.output == "inbox-i\n");
    }
    const auto before = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("tr_TR"), status);
    const auto identifier = WrapperFactory::defaultBundleId("INBOX I");
    icu::Locale::setDefault(before, status);
    CHECK(identifier == "app.korvane.instance.inbox-i");
}

TEST_CASE("a bundle with both an Electron framework and eclipse ini is Electron") {
    const TempDir tmp;
    CHECK(engineOf(tmp, "org.mozilla.firefox",
                   {electronFramework, "Contents/Eclipse/eclipse.ini"}) == Engine::electron);
}

TEST_CASE("an identifier in capitals is still Firefox but framework names keep their case") {
    const TempDir tmp;
    CHECK(engineOf(tmp, "ORG.MOZILLA.FIREFOX", {}) == Engine::firefox);
    CHECK(engineOf(tmp, "x", {"Contents/Frameworks/chromium Framework.framework/x"}) ==
          Engine::other);
    CHECK(engineOf(tmp, "x", {"Contents/Frameworks/electron framework.framework/x"}) ==
          Engine::other);
}

TEST_CASE("the first matching rule decides the engine") {
    struct Row {
        std::string identifier;
        std::vector<std::string> files;
        Engine engine;
    };
    const std::string frameworks = "Contents/Frameworks/";
    const std::vector<Row> table{
        {"x", {electronFramework}, Engine::electron},
        {"com.google.chrome", {electronFramework}, Engine::electron},
        {"x", {"Contents/Eclipse/eclipse.ini"}, Engine::eclipse},
        {"org.mozilla.x", {"Contents/Eclipse/eclipse.ini"}, Engine::eclipse},
        {"com.google.chrome", {"Contents/MacOS/eclipse"}, Engine::eclipse},
        {"x", {"Contents/MacOS/Eclipse"}, Engine::other},
        {"org.mozilla.firefox", {}, Engine::firefox},
        {"org.mozillaxyz", {}, Engine::firefox},
        {"com.org.mozilla", {}, Engine::other},
        {"org.torproject.TorBrowser", {}, Engine::firefox},
        {"io.gitlab.LibreWolf-community", {}, Engine::firefox},
        {"net.waterfox.waterfox", {}, Engine::firefox},
        {"com.google.chrome", {"Contents/Resources/application.ini"}, Engine::firefox},
        {"com.google.Chrome", {}, Engine::chromium},
        {"com.google.chrome.beta", {}, Engine::chromium},
        {"com.google.chromex", {}, Engine::chromium},
        {"com.brave.Browser", {}, Engine::chromium},
        {"com.microsoft.edgemac.Dev", {}, Engine::chromium},
        {"com.vivaldi.Vivaldi", {}, Engine::chromium},
        {"com.operasoftware.Opera", {}, Engine::chromium},
        {"org.chromium.Chromium", {}, Engine::chromium},
        {"ru.yandex.desktop.yandex-browser", {}, Engine::chromium},
        {"my.com.google.chrome", {}, Engine::other},
        {"x", {frameworks + "Google Chrome Framework.framework/x"}, Engine::chromium},
        {"x", {frameworks + "Chromium Framework.framework/x"}, Engine::chromium},
        {"x", {frameworks + "ChromeFramework.framework"}, Engine::chromium},
        {"x", {frameworks + "Chromium Embedded Framework.framework/x"}, Engine::chromium},
        {"x", {frameworks + "Chromium Framework.framework.bak/x"}, Engine::other},
        {"x", {frameworks + "Chrome.framework/x"}, Engine::other},
        {"x", {frameworks + "Other Framework.framework/x"}, Engine::other},
        {"x", {frameworks + "deep/Chromium Framework.framework/x"}, Engine::other},
        {"x", {}, Engine::other},
    };
    const TempDir tmp;
    for (const auto& row : table) {
        CAPTURE(row.identifier);
        CAPTURE(row.files.empty() ? std::string() : row.files.front());
        CHECK(engineOf(tmp, row.identifier, row.files) == row.engine);
    }
}

TEST_CASE("a given identifier takes the place of the bundle's, and detection never fails") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "A.app").identifier("org.mozilla.firefox").write();

    CHECK(WrapperFactory::detectEngine(app, "com.brave.browser") == Engine::chromium);
    CHECK(WrapperFactory::detectEngine(app, "") == Engine::other);
    CHECK(WrapperFactory::detectEngine(app) == Engine::firefox);
    CHECK(WrapperFactory::detectEngine(tmp / "missing.app") == Engine::other);
    CHECK(WrapperFactory::detectEngine(tmp / "missing.app", "ORG.mozilla") == Engine::firefox);
    writeFile(tmp / "B.app/Contents/Frameworks");
    CHECK(WrapperFactory::detectEngine(tmp / "B.app") == Engine::other);
    CHECK(WrapperFactory::detectEngine("") == Engine::other);
}

TEST_CASE("the finding of an engine names the file or the identifier that proved it") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "A.app")
                         .identifier("com.google.Chrome")
                         .file("Contents/Frameworks/Chromium Framework.framework/x")
                         .write();

    CHECK(WrapperFactory::findEngine(app).engine == Engine::chromium);
    CHECK_FALSE(WrapperFactory::findEngine(app).proof.empty());
    CHECK(contains(WrapperFactory::findEngine(app, "x").proof, "Chromium Framework.framework"));
    CHECK(WrapperFactory::findEngine(tmp / "missing.app").proof.empty());
}

TEST_CASE("only an Electron bundle is Electron") {
    const TempDir tmp;
    CHECK(WrapperFactory::isElectron(
        AppBundleBuilder(tmp / "E.app").file(electronFramework).write()));
    CHECK_FALSE(WrapperFactory::isElectron(AppBundleBuilder(tmp / "O.app").write()));
    CHECK_FALSE(WrapperFactory::isElectron(tmp / "missing.app"));
}

TEST_CASE("each engine gets its own arguments with the placeholder unexpanded") {
    const TempDir tmp;
    const auto arguments = [&](const std::string& identifier, const std::string& file) {
        static int counter = 0;
        AppBundleBuilder builder(tmp / ("A" + std::to_string(++counter) + ".app"));
        return WrapperFactory::autoDataDirArgs(builder.identifier(identifier).file(file).write());
    };
    CHECK(arguments("x", electronFramework) == Strings{chromiumArgument});
    CHECK(arguments("com.google.chrome", "Contents/y") == Strings{chromiumArgument});
    CHECK(arguments("org.mozilla.firefox", "Contents/y") ==
          Strings{"-profile", "{{instanceHome}}/FirefoxProfile", "-no-remote"});
    CHECK(arguments("x", "Contents/MacOS/eclipse") ==
          Strings{"-data", "{{instanceHome}}/workspace"});
    CHECK(arguments("x", "Contents/y").empty());
    CHECK(WrapperFactory::autoDataDirArgs(tmp / "missing.app", "com.brave.browser") ==
          Strings{chromiumArgument});
}

TEST_CASE("a plain request for a Chromium browser gets all defaults, in the user's Applications") {
    const Workshop shop;
    auto request = shop.appRequest("com.google.Chrome");
    request.outputDir.reset();

    const auto config = shop.create(request);

    CHECK(config.displayName == "Work Chrome");
    CHECK(config.bundleId == "app.korvane.instance.work-chrome");
    CHECK(config.instanceHome == "~/KorvaneInstances/Work Chrome");
    CHECK(config.targetAppPath == shop.tmp / "Browser.app");
    CHECK(config.extraArgs == Strings{chromiumArgument});
    CHECK(isThere(shop.user / "Applications/Work Chrome.app/Contents/PkgInfo"));
    CHECK(WrapperFactory::defaultOutputDir(shop.user.places()) == shop.user / "Applications");
    CHECK_FALSE(isThere(shop.user / "KorvaneInstances"));
}

TEST_CASE("detection uses the target's identifier and not the wrapper's own") {
    const Workshop shop;
    auto request = shop.appRequest("org.example.plain");
    request.bundleId = "com.google.chrome";

    const auto config = shop.create(request);

    CHECK(config.extraArgs.empty());
    CHECK(config.bundleId == "com.google.chrome");
}

TEST_CASE("every given field is copied unchanged into the configuration") {
    const Workshop shop;
    auto request = shop.request(ShortcutKind::command, "N");
    request.url = "u r l";
    request.openPath = "~/o";
    request.commandPath = "rel/c";
    request.commandArgs = {"{{instanceHome}}", ""};
    request.workingDirectory = "~/w/";
    request.instanceHome = "~/h/";
    request.bundleId = "Not.Checked AT all";
    request.strategy = Strategy::unsupported;
    request.environment = {{"K", "v"}};
    request.infoPlistOverrides = {{"CFBundleVersion", "9"}};
    request.registerAsBrowser = request.openWithPassthrough = true;
    request.menuBarIcon = request.menuBarIconTemplate = true;
    request.shareUserFolders = false;
    request.iconLabel = IconLabel{"t", "c", IconLabel::Position::top};

    const auto config = shop.create(request);

    CHECK(config.url == "u r l");
    CHECK(config.openPath == "~/o");
    CHECK(config.commandPath == "rel/c");
    CHECK(config.commandArgs == Strings{"{{instanceHome}}", ""});
    CHECK(config.workingDirectory == "~/w/");
    CHECK(config.instanceHome == "~/h/");
    CHECK(config.bundleId == "Not.Checked AT all");
    CHECK(config.strategy == Strategy::unsupported);
    CHECK(config.environment == StringMap{{"K", "v"}});
    CHECK(config.infoPlistOverrides == StringMap{{"CFBundleVersion", "9"}});
    CHECK(config.registerAsBrowser);
    CHECK(config.openWithPassthrough);
    CHECK(config.menuBarIcon);
    CHECK(config.menuBarIconTemplate);
    CHECK_FALSE(config.shareUserFolders);
    CHECK((config.iconLabel == request.iconLabel));
}

TEST_CASE("hiding the icon and a custom icon reach the wrapper") {
    const Workshop shop;
    auto request = shop.request(ShortcutKind::web, "N");
    request.hideWrapperIcon = true;
    request.customIcon = writeFile(shop.tmp / "picture.png", "picture");

    const auto bundle = shop.factory.create(request);

    CHECK(bundle == shop.tmp / "out/N.app");
    CHECK(readFile(bundle + "/Contents/Resources/AppIcon.icns") == "picture");
    CHECK(contains(readFile(bundle + "/Contents/Info.plist"), "LSUIElement"));
    CHECK(readFile(bundle + "/Contents/MacOS/runner") == readFile(shop.runner));
}

TEST_CASE("an empty name is reported before a missing runner and that before a bad target") {
    const TempDir tmp;
    const UserHome user(tmp);
    makeFolder(tmp / "empty");
    const WorkingDirectory inside(tmp / "empty"); // no build folder to find a runner in
    const WrapperFactory factory(user.places());
    Request request;
    request.kind = ShortcutKind::app;
    request.outputDir = tmp / "out";

    CHECK(expectThrow<FactoryError>([&] { factory.create(request); }).kind ==
          FactoryError::Kind::emptyName);
    request.displayName = "N";
    const auto error = expectThrow<FactoryError>([&] { factory.create(request); });
    CHECK(error.kind == FactoryError::Kind::runnerNotFound);
    CHECK(error.description() == "Could not locate the korvane-runner binary to embed.");
    CHECK_FALSE(isThere(tmp / "out"));
}

TEST_CASE("without a runner of its own the factory finds one in the build folder") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeScript(tmp / ".build/debug/korvane-runner", "echo found");
    const WorkingDirectory inside(tmp.path());
    Request request;
    request.kind = ShortcutKind::web;
    request.displayName = "N";
    request.outputDir = tmp / "out";

    const auto bundle = WrapperFactory(user.places()).create(request);

    CHECK(contains(readFile(bundle + "/Contents/MacOS/runner"), "echo found"));
}

TEST_CASE("the generator's own errors pass through the factory") {
    const Workshop shop;
    auto request = shop.request(ShortcutKind::web);
    const WrapperFactory factory(shop.user.places(), shop.tmp / "missing-runner");

    const auto error = expectThrow<WrapperGenerator::GenError>([&] { factory.create(request); });

    CHECK(error.kind == WrapperGenerator::GenError::Kind::runnerMissing);
    CHECK_FALSE(isThere(shop.tmp / "out"));
}
