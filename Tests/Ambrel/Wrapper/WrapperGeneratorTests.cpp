#include "Ambrel/Wrapper/WrapperGenerator.h"

#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Images.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Pictures.h"
#include "Support/Programs.h"

using namespace ambrel;
using namespace korvane::test;
using GenError = WrapperGenerator::GenError;
using Options = WrapperGenerator::Options;

namespace {

/// Options for a command instance called "Tool", with a runner file in `tmp`.
Options toolOptions(const TempDir& tmp) {
    Options options;
    options.config = commandConfig("~/h", "/bin/true");
    options.config.displayName = "Tool";
    options.runnerBinary = tmp / "the runner";
    if (!isThere(options.runnerBinary)) writeFile(options.runnerBinary, "runner bytes\xff");
    return options;
}

Options appOptions(const TempDir& tmp, const Path& target) {
    auto options = toolOptions(tmp);
    options.config.kind = ShortcutKind::app;
    options.config.targetAppPath = target;
    return options;
}

Path generate(const TempDir& tmp, const Options& options) {
    return WrapperGenerator().generate(tmp / "out", options);
}

Path iconOf(const Path& bundle) { return bundle + "/Contents/Resources/AppIcon.icns"; }

/// CFBundleIconFile of a wrapper.
std::optional<std::string> declaredIcon(const Path& bundle) {
    const auto plist = readPropertyList(bundle + "/Contents/Info.plist");
    REQUIRE(plist.has_value());
    const auto entry = plist->find("CFBundleIconFile");
    if (entry == plist->end()) return std::nullopt;
    return *entry->second.string();
}

} // namespace

TEST_CASE("a missing runner fails with its path and leaves the output folder untouched") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.runnerBinary = tmp / "no runner";
    writeFile(tmp / "out/Tool.app/old", "kept");

    const auto error = expectThrow<GenError>([&] { generate(tmp, options); });

    CHECK(error.kind == GenError::Kind::runnerMissing);
    CHECK(error.description() == "Runner binary not found: " + (tmp / "no runner"));
    CHECK(error.subject == tmp / "no runner");
    CHECK(readFile(tmp / "out/Tool.app/old") == "kept");
    CHECK(namesIn(tmp / "out") == Strings{"Tool.app"});
}

TEST_CASE("an unreadable target fails with its path before any file is written") {
    const TempDir tmp;
    const UserHome user(tmp);
    AppBundleBuilder(user / "Applications/X.app").write();
    for (const auto& target :
         {tmp / "missing.app", std::string("~/Applications/X.app"), std::string()}) {
        CAPTURE(target);
        const auto error = expectThrow<GenError>([&] { generate(tmp, appOptions(tmp, target)); });
        CHECK(error.kind == GenError::Kind::badTarget);
        CHECK(error.description() == "Not a readable target .app: " + target);
        CHECK_FALSE(isThere(tmp / "out"));
    }
    auto both = appOptions(tmp, tmp / "missing.app");
    both.runnerBinary = tmp / "no runner";
    CHECK(expectThrow<GenError>([&] { generate(tmp, both); }).kind ==
          GenError::Kind::runnerMissing);
}

TEST_CASE("a web, file or command wrapper needs no target and has no icon of its own") {
    for (const auto kind : {ShortcutKind::web, ShortcutKind::file, ShortcutKind::command}) {
        const TempDir tmp;
        auto options = toolOptions(tmp);
        options.config.kind = kind;
        options.config.targetAppPath = tmp / "missing.app";

        const auto bundle = generate(tmp, options);

        CHECK_FALSE(isThere(iconOf(bundle)));
        CHECK_FALSE(declaredIcon(bundle).has_value());
        options.customIcon = writeFile(tmp / "picture", "picture");
        CHECK(readFile(iconOf(generate(tmp, options))) == "picture");
    }
}

TEST_CASE("generating twice with one name replaces the first bundle completely") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.customIcon = writeFile(tmp / "picture", "picture");
    const auto bundle = generate(tmp, options);
    writeFile(bundle + "/Contents/Resources/extra/file");
    writeFile(bundle + "/Contents/_CodeSignature/x");
    options.customIcon.reset();

    CHECK(generate(tmp, options) == bundle);

    CHECK(namesIn(bundle + "/Contents/Resources") == Strings{"instance.json"});
    CHECK(namesIn(bundle + "/Contents") == Strings{"Info.plist", "MacOS", "PkgInfo", "Resources"});
    CHECK_FALSE(declaredIcon(bundle).has_value());
}

TEST_CASE("an output folder that does not exist is created") {
    const TempDir tmp;

    const auto bundle = WrapperGenerator().generate((tmp / "a/b/c") + "/", toolOptions(tmp));

    CHECK(bundle == tmp / "a/b/c/Tool.app");
    CHECK(isRealFolder(bundle));
}

TEST_CASE("the executable is called runner with mode 0755, whatever the source was") {
    for (const mode_t mode : {0644U, 0600U, 0777U, 04755U, 0400U}) {
        const TempDir tmp;
        const auto options = toolOptions(tmp);
        setMode(options.runnerBinary, mode);
        CAPTURE(mode);

        const auto bundle = generate(tmp, options);

        CHECK(namesIn(bundle + "/Contents/MacOS") == Strings{"runner"});
        CHECK(modeOf(bundle + "/Contents/MacOS/runner") == 0755);
        CHECK(readFile(bundle + "/Contents/MacOS/runner") == "runner bytes\xff");
    }
}

TEST_CASE("PkgInfo is exactly 8 bytes long") {
    const TempDir tmp;
    CHECK(readFile(generate(tmp, toolOptions(tmp)) + "/Contents/PkgInfo") == "APPL????");
}

TEST_CASE("instance json is the configuration, pretty-printed with sorted keys") {
    const TempDir tmp;
    const auto options = toolOptions(tmp);

    CHECK(readFile(generate(tmp, options) + "/Contents/Resources/instance.json") ==
          options.config.encode());
}

TEST_CASE("a mask does not take away the runner's permissions") {
    const TempDir tmp;
    const auto options = toolOptions(tmp);
    const auto mask = ::umask(077);
    const auto bundle = generate(tmp, options);
    ::umask(mask);
    CHECK(modeOf(bundle + "/Contents/MacOS/runner") == 0755);
}

TEST_CASE("a runner that is a link is copied as the file that it leads to") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    makeLink(tmp / "link", options.runnerBinary);
    options.runnerBinary = tmp / "link";

    const auto bundle = generate(tmp, options);

    CHECK_FALSE(isLink(bundle + "/Contents/MacOS/runner"));
    CHECK(readFile(bundle + "/Contents/MacOS/runner") == "runner bytes\xff");
}

TEST_CASE("a name that looks like an absolute path stays below the output folder") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.config.displayName = (tmp / "elsewhere/x").substr(0);

    const auto bundle = generate(tmp, options);

    CHECK(bundle == (tmp / "out") + (tmp / "elsewhere/x") + ".app");
    CHECK(isRealFolder(bundle));
    CHECK_FALSE(isThere(tmp / "elsewhere"));
}

TEST_CASE("hostile names become file names as they stand") {
    for (const std::string name :
         {"-rf", ".hidden", "a:b", "x\ny", "$(touch y)", "%s", "\xf0\x9f\x98\x80", "..x", " "}) {
        const TempDir tmp;
        auto options = toolOptions(tmp);
        options.config.displayName = name;
        CAPTURE(name);
        CHECK(generate(tmp, options) == tmp / ("out/" + name + ".app"));
        CHECK(namesIn(tmp / "out") == Strings{name + ".app"});
    }
}

TEST_CASE("a link in the bundle's place is removed and not followed") {
    const TempDir tmp;
    writeFile(tmp / "precious/file", "kept");
    makeLink(tmp / "out/Tool.app", tmp / "precious");

    const auto bundle = generate(tmp, toolOptions(tmp));

    CHECK(isRealFolder(bundle));
    CHECK(namesIn(tmp / "precious") == Strings{"file"});
}

TEST_CASE("links inside the replaced bundle are removed and not followed") {
    const TempDir tmp;
    writeFile(tmp / "precious/file", "kept");
    makeLink(tmp / "out/Tool.app/Contents/Resources", tmp / "precious");

    generate(tmp, toolOptions(tmp));

    CHECK(namesIn(tmp / "precious") == Strings{"file"});
}

TEST_CASE("a plain file in the bundle's place is replaced") {
    const TempDir tmp;
    writeFile(tmp / "out/Tool.app", "file");

    CHECK(isRealFolder(generate(tmp, toolOptions(tmp))));
}

TEST_CASE("an old bundle that cannot be removed fails with the system's error") {
    const TempDir tmp;
    const auto options = toolOptions(tmp);
    writeFile(tmp / "out/Tool.app/sub/file");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "out", 0555);

    const auto said = asOrdinaryUser([&] { return generate(tmp, options); });

    CHECK(contains(said, "threw: Cannot "));
    CHECK(contains(said, "Permission denied"));
    CHECK(namesIn(tmp / "out/Tool.app").empty());
}

TEST_CASE("a failure on the way leaves the bundle partly written and undoes nothing") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.customIcon = makeFolder(tmp / "an icon that is a folder");
    writeFile(tmp / "out/Tool.app/old");

    expectThrow<FileError>([&] { generate(tmp, options); });

    CHECK(namesIn(tmp / "out/Tool.app") == Strings{"Contents"});
    CHECK(namesIn(tmp / "out/Tool.app/Contents") == Strings{"MacOS", "Resources"});
    CHECK(isThere(tmp / "out/Tool.app/Contents/MacOS/runner"));
    CHECK(isThere(tmp / "out/Tool.app/Contents/Resources/instance.json"));
}

TEST_CASE("a text that is not UTF-8 fails with the encoder's error and is not undone") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.config.url = "\xff";

    expectThrow<EncodingError>([&] { generate(tmp, options); });

    CHECK(isThere(tmp / "out/Tool.app/Contents/MacOS/runner"));
    CHECK_FALSE(isThere(tmp / "out/Tool.app/Contents/Info.plist"));
    CHECK_FALSE(isThere(tmp / "out/Tool.app/Contents/PkgInfo"));
}

TEST_CASE("instance homes are not touched when a wrapper is replaced") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeFile(user / "h/data", "kept");

    generate(tmp, toolOptions(tmp));
    generate(tmp, toolOptions(tmp));

    CHECK(namesIn(user.path()) == Strings{"h"});
    CHECK(namesIn(user / "h") == Strings{"data"});
}

TEST_CASE("a custom icon that exists is used even for a target with an icon of its own") {
    const TempDir tmp;
    const auto target = AppBundleBuilder(tmp / "T.app")
                            .iconFile("AppIcon")
                            .file("Contents/Resources/AppIcon.icns", "target's")
                            .write();
    auto options = appOptions(tmp, target);
    options.customIcon = writeFile(tmp / "custom.png", std::string("not\0icns", 8));

    const auto bundle = generate(tmp, options);

    CHECK(readFile(iconOf(bundle)) == std::string("not\0icns", 8));
    CHECK(declaredIcon(bundle) == "AppIcon");
}

TEST_CASE("a custom icon that is missing falls back to the target's icon") {
    const TempDir tmp;
    const auto target = AppBundleBuilder(tmp / "T.app")
                            .iconFile("AppIcon")
                            .file("Contents/Resources/AppIcon.icns", "target's")
                            .write();
    auto options = appOptions(tmp, target);
    options.customIcon = tmp / "missing.png";

    CHECK(readFile(iconOf(generate(tmp, options))) == "target's");
}

TEST_CASE("a declared icon with its extension is looked up without a second one") {
    const TempDir tmp;
    const auto target = AppBundleBuilder(tmp / "T.app")
                            .iconFile("Foo.icns")
                            .file("Contents/Resources/Foo.icns", "foo")
                            .file("Contents/Resources/Foo.icns.icns", "wrong")
                            .write();

    CHECK(readFile(iconOf(generate(tmp, appOptions(tmp, target)))) == "foo");
}

TEST_CASE("a declared icon that does not exist gives no icon and no icon key") {
    const TempDir tmp;
    const auto target = AppBundleBuilder(tmp / "T.app")
                            .iconFile("Missing")
                            .file("Contents/Resources/AppIcon.icns", "never declared")
                            .write();

    const auto bundle = generate(tmp, appOptions(tmp, target));

    CHECK_FALSE(isThere(iconOf(bundle)));
    CHECK_FALSE(declaredIcon(bundle).has_value());
    const auto typed = AppBundleBuilder(tmp / "U.app")
                           .entry("CFBundleIconFile", "<integer>1</integer>")
                           .file("Contents/Resources/1.icns", "one")
                           .write();
    CHECK_FALSE(declaredIcon(generate(tmp, appOptions(tmp, typed))).has_value());
}

TEST_CASE("a web, file or command instance without a custom icon gets no icon") {
    for (const auto kind : {ShortcutKind::web, ShortcutKind::file, ShortcutKind::command}) {
        const TempDir tmp;
        auto options = toolOptions(tmp);
        options.config.kind = kind;
        options.config.targetAppPath = AppBundleBuilder(tmp / "T.app")
                                           .iconFile("A")
                                           .file("Contents/Resources/A.icns", "a")
                                           .write();
        CHECK_FALSE(isThere(iconOf(generate(tmp, options))));
        options.customIcon = tmp / "missing";
        CHECK_FALSE(isThere(iconOf(generate(tmp, options))));
    }
}

TEST_CASE(
    "a label of only spaces is no label, and a label that cannot be drawn leaves the source") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.customIcon = writeFile(tmp / "picture", "no image that could be drawn on");
    for (const std::string text : {"", "  \t ", "\xc2\xa0", "W1"}) {
        CAPTURE(text);
        options.config.iconLabel = IconLabel{text, "zz", IconLabel::Position::top};
        const auto bundle = generate(tmp, options);
        CHECK(readFile(iconOf(bundle)) == "no image that could be drawn on");
        CHECK(declaredIcon(bundle) == "AppIcon");
    }
}

TEST_CASE("the declared name is AppIcon and never has the extension") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    options.customIcon = writeFile(tmp / "Other.icns", "icns");

    const auto bundle = generate(tmp, options);

    CHECK(declaredIcon(bundle) == "AppIcon");
    CHECK(namesIn(bundle + "/Contents/Resources") == Strings{"AppIcon.icns", "instance.json"});
}

TEST_CASE("a label is drawn onto the custom icon, or onto the target's") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto png = images::encodePng(filledPicture(256, 256, blue));
    const auto target = AppBundleBuilder(tmp / "App.app")
                            .executable("app", "")
                            .iconFile("Foo")
                            .file("Contents/Resources/Foo.icns", png)
                            .write();
    auto onCustom = toolOptions(tmp);
    onCustom.customIcon = writeFile(tmp / "picture.png", png);
    for (auto options : {onCustom, appOptions(tmp, target)}) {
        options.config.iconLabel = IconLabel{"i", "FF0000", IconLabel::Position::center};

        const auto bundle = generate(tmp, options);

        const auto drawn = imagesIn(readFile(iconOf(bundle)));
        REQUIRE(drawn.size() == 7);
        CHECK(pixelAt(drawn.front(), 512, 512) == red);
        CHECK(pixelAt(drawn.front(), 10, 10) == blue);
        CHECK(declaredIcon(bundle) == "AppIcon");
        CHECK(namesIn(bundle + "/Contents/Resources") == Strings{"AppIcon.icns", "instance.json"});
    }
}

TEST_CASE("a blank label leaves a picture as it is, byte for byte") {
    const TempDir tmp;
    auto options = toolOptions(tmp);
    const auto png = images::encodePng(filledPicture(32, 32, blue));
    options.customIcon = writeFile(tmp / "picture.png", png);
    for (const std::string text : {"", "  \t "}) {
        options.config.iconLabel = IconLabel{text, "FF0000", IconLabel::Position::top};
        CHECK(readFile(iconOf(generate(tmp, options))) == png);
    }
}
