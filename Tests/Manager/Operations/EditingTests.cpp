#include "Manager/Operations/Editing.h"

#include "Scene.h"

#include "Ambrel/Platform/Images.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Files/IconConversion.h"
#include "Support/Pictures.h"

#include <functional>

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

std::optional<std::string> plistString(const Path& bundle, const std::string& key) {
    const auto plist = ambrel::readPropertyList(bundle + "/Contents/Info.plist");
    REQUIRE(plist);
    const auto found = plist->find(key);
    if (found == plist->end()) return std::nullopt;
    return *found->second.string();
}

} // namespace

TEST_CASE("an instance is brought to the configuration that is wanted") {
    const Scene scene;
    const auto record = scene.instance();
    auto wanted = record.config;
    wanted.environment = {{"A", "1"}};
    wanted.commandArgs = {"x"};

    const auto edited = change(record, wanted, scene.user);

    CHECK(scene.configOf(record.bundleURL).encode() == wanted.encode());
    CHECK(edited.before.config.encode() == record.config.encode());
    CHECK(edited.record.bundleURL == record.bundleURL);
    CHECK(edited.record.config.encode() == wanted.encode());
    CHECK_FALSE(edited.homeChanged);
    CHECK(edited.notices.empty());
}

TEST_CASE("the name of the process reaches Info.plist, and goes from there") {
    const Scene scene;
    const auto record = scene.instance();
    auto wanted = record.config;
    setProcessName(wanted, "mailer");

    const auto edited = change(record, wanted, scene.user);
    CHECK(plistString(record.bundleURL, ambrel::processNameKey) == "mailer");
    change(edited.record, record.config, scene.user);

    CHECK_FALSE(plistString(record.bundleURL, ambrel::processNameKey));
}

TEST_CASE("a new home is made, and a label without an icon is told of") {
    const Scene scene;
    const auto record = scene.instance();
    auto wanted = record.config;
    wanted.instanceHome = scene.home / std::string(80, 'y');
    wanted.iconLabel = ambrel::IconLabel{"A", "FF0000", ambrel::IconLabel::Position::top};

    const auto edited = change(record, wanted, scene.user);

    CHECK(edited.homeChanged);
    CHECK(noticeOf(edited.notices, Notice::Kind::labelWithoutIcon).remedy == Remedy::chooseIcon);
    CHECK(modeOf(wanted.instanceHome) == 0700);
    CHECK(isRealFolder(scene.homeOf()));
    CHECK(noticeOf(edited.notices, Notice::Kind::homeIsLong).subject == wanted.instanceHome);
}

TEST_CASE("a folder of the home that cannot be made is told of") {
    const Scene scene;
    const auto record = scene.instance();
    writeFile(scene.homeOf() + "/t", "a file");
    auto wanted = record.config;
    wanted.environment = {{"TMPDIR", "{{instanceHome}}/t"}};

    const auto edited = change(record, wanted, scene.user);

    CHECK(find(edited.notices, Notice::Kind::homeNotFurnished) != nullptr);
}

TEST_CASE("an entry that cannot be brought up to date is told of") {
    const Scene scene;
    auto request = scene.request();
    request.icon =
        writeFile(scene.tmp / "icon.png", ambrel::images::encodePng(filledPicture(64, 64, red)));
    const auto record = scene.make(request).record;
    ambrel::fileSystem::removeTree(scene.user.data + "/icons");
    writeFile(scene.user.data + "/icons", "in the way");
    auto wanted = record.config;
    wanted.commandArgs = {"x"};

    const auto edited = change(record, wanted, scene.user);

    const auto notice = noticeOf(edited.notices, Notice::Kind::entryIsOutdated);
    CHECK(notice.subject == "Work");
    CHECK(notice.remedy == Remedy::registerAgain);
    CHECK(scene.configOf(record.bundleURL).commandArgs == Strings{"x"});
}

TEST_CASE("a field that the bundle carries elsewhere is not edited") {
    const Scene scene;
    const auto record = scene.instance();
    const std::pair<std::string, std::function<void(ambrel::InstanceConfig&)>> rows[] = {
        {"kind", [](auto& config) { config.kind = ambrel::ShortcutKind::file; }},
        {"bundleId", [](auto& config) { config.bundleId = "other"; }},
        {"infoPlistOverrides",
         [](auto& config) { config.infoPlistOverrides["LSUIElement"] = "1"; }},
        {"registerAsBrowser", [](auto& config) { config.registerAsBrowser = true; }},
        {"openWithPassthrough", [](auto& config) { config.openWithPassthrough = true; }},
    };
    for (const auto& row : rows) {
        const auto& field = row.first;
        CAPTURE(field);
        auto wanted = record.config;
        row.second(wanted);
        const auto refusal = refusalOf(scene, [&] { change(record, wanted, scene.user); });
        CHECK(refusal.kind == Kind::fieldIsBundles);
        CHECK(refusal.subject == field);
        CHECK(refusal.remedy == Remedy::createAgain);
    }
}

TEST_CASE("a field that the kind does not heed is not stored, and one that is stored goes") {
    const Scene scene;
    const auto record = scene.instance();
    const std::pair<std::string, std::function<void(ambrel::InstanceConfig&)>> rows[] = {
        {"url", [](auto& config) { config.url = "https://example.org/"; }},
        {"targetAppPath", [](auto& config) { config.targetAppPath = "/Mail.app"; }},
        {"extraArgs", [](auto& config) { config.extraArgs = {"x"}; }},
        {"shareUserFolders", [](auto& config) { config.shareUserFolders = false; }},
        {"strategy", [](auto& config) { config.strategy = ambrel::Strategy::unsupported; }},
    };
    for (const auto& row : rows) {
        const auto& field = row.first;
        CAPTURE(field);
        auto wanted = record.config;
        row.second(wanted);
        const auto refusal = refusalOf(scene, [&] { change(record, wanted, scene.user); });
        CHECK(refusal.kind == Kind::hasNoEffect);
        CHECK(refusal.subject == field);

        const auto stored = scene.store(record, wanted);
        change(stored, record.config, scene.user);
        CHECK(scene.configOf(record.bundleURL).encode() == record.config.encode());
    }
}

TEST_CASE("a new name moves bundle and entry, and leaves identifier and home") {
    const Scene scene;
    const auto record = scene.instance();
    writeFile(scene.homeOf() + "/data", "kept");
    auto wanted = record.config;
    wanted.displayName = " New Name ";

    const auto edited = change(record, wanted, scene.user);

    const auto bundle = scene.bundle("New Name");
    CHECK(edited.record.bundleURL == bundle);
    CHECK(edited.notices.empty());
    CHECK_FALSE(isThere(scene.bundle()));
    CHECK(namesIn(scene.home / "Applications") == Strings{"New Name.app"});
    const auto config = scene.configOf(bundle);
    CHECK(config.displayName == "New Name");
    CHECK(config.bundleId == record.config.bundleId);
    CHECK(config.instanceHome == record.config.instanceHome);
    CHECK(plistString(bundle, "CFBundleName") == "New Name");
    CHECK(plistString(bundle, "CFBundleIdentifier") == record.config.bundleId);
    CHECK(readFile(bundle + "/Contents/MacOS/runner") == readFile(scene.runner));
    const auto entry = readFile(scene.user.data + "/applications/" + config.bundleId + ".desktop");
    CHECK(contains(entry, "Name=New Name\n"));
    CHECK(contains(entry, "X-Korvane-Bundle=" + bundle + "\n"));
    CHECK(readFile(scene.homeOf() + "/data") == "kept");
}

TEST_CASE("a name under which something stands is refused") {
    const Scene scene;
    const auto record = scene.instance();
    writeFile(scene.bundle("Other"), "a file");
    auto taken = record.config;
    taken.displayName = "Other";
    auto bad = record.config;
    bad.displayName = "a/b";

    const auto refusal = refusalOf(scene, [&] { change(record, taken, scene.user); });

    CHECK(refusal.kind == Kind::placeTaken);
    CHECK(refusal.subject == scene.bundle("Other"));
    CHECK(refusalOf(scene, [&] { change(record, bad, scene.user); }).kind == Kind::badName);
}

TEST_CASE("an instance without an entry gets none by a new name") {
    const Scene scene;
    const auto record = scene.instance();
    registration::remove(*registration::findEntry(record, scene.user), scene.user);
    auto wanted = record.config;
    wanted.displayName = "Other";

    const auto edited = change(record, wanted, scene.user);

    CHECK_FALSE(registration::findEntry(edited.record, scene.user));
}

namespace {

/// An instance with a picture that was chosen for it.
ambrel::InstanceRecord pictured(const Scene& scene, const std::string& label) {
    auto request = scene.request();
    request.icon =
        writeFile(scene.tmp / "icon.png", ambrel::images::encodePng(filledPicture(64, 64, red)));
    request.iconLabel = ambrel::IconLabel{label, "FFFFFF", ambrel::IconLabel::Position::top};
    return scene.make(request).record;
}

std::string iconOf(const ambrel::InstanceRecord& record) {
    return readFile(record.bundleURL + "/Contents/Resources/AppIcon.icns");
}

} // namespace

TEST_CASE("a label is drawn on a chosen picture once, and not over another one") {
    const Scene scene;
    const auto plain = pictured(scene, "");
    auto wanted = plain.config;
    wanted.iconLabel = ambrel::IconLabel{"A", "FFFFFF", ambrel::IconLabel::Position::top};

    const auto before = iconOf(plain);
    const auto labelled = change(plain, wanted, scene.user).record;
    const auto drawn = iconOf(labelled);
    CHECK(drawn != before);

    auto other = wanted;
    other.iconLabel->text = "B";
    auto none = wanted;
    none.iconLabel.reset();
    for (const auto& config : {other, none}) {
        const auto refusal = refusalOf(scene, [&] { change(labelled, config, scene.user); });
        CHECK(refusal.kind == Kind::unusableIcon);
        CHECK(refusal.remedy == Remedy::chooseIcon);
    }
    auto renamed = wanted;
    renamed.displayName = "Other";
    const auto moved = change(labelled, renamed, scene.user).record;
    CHECK(iconOf(moved) == drawn);
    // With the picture at hand the label goes.
    none.displayName = "Other";
    const auto icon = scene.tmp / "icon.png";
    CHECK(iconOf(change(moved, none, scene.user, {}, icon).record) == before);
}

TEST_CASE("the label of an application's own icon is drawn anew from that") {
    const Scene scene;
    auto request = scene.appRequest();
    const auto picture =
        writeFile(scene.tmp / "icon.png", ambrel::images::encodePng(filledPicture(64, 64, red)));
    const auto app = AppBundleBuilder(scene.home / "Applications/Pictured.app")
                         .identifier("org.example.pictured")
                         .executable("program", "exit 0")
                         .entry("CFBundleIconFile", "<string>icon</string>")
                         .write();
    convertToIconFile(picture, makeFolder(app + "/Contents/Resources") + "/icon.icns");
    request.targetApp = app;
    request.iconLabel = ambrel::IconLabel{"A", "FFFFFF", ambrel::IconLabel::Position::top};
    const auto record = scene.make(request).record;
    const auto drawn = iconOf(record);
    auto none = record.config;
    none.iconLabel = ambrel::IconLabel{" ", "FFFFFF", ambrel::IconLabel::Position::top};

    const auto plain = change(record, none, scene.user).record;

    CHECK(iconOf(plain) == readFile(app + "/Contents/Resources/icon.icns"));
    CHECK_FALSE(scene.configOf(plain.bundleURL).iconLabel);
    CHECK(iconOf(change(plain, record.config, scene.user).record) == drawn);
}

TEST_CASE("what keeps an instance apart does not go without a word") {
    const Scene scene;
    auto request = scene.appRequest();
    request.targetApp = scene.installApp("org.mozilla.firefox");
    request.addedArgs = {"--mine"};
    const auto record = scene.make(request).record;
    REQUIRE(record.config.extraArgs.size() > 2);
    auto without = record.config;
    without.extraArgs = {"--mine"};
    without.environment.erase("GSETTINGS_BACKEND");
    auto more = record.config;
    more.extraArgs.emplace_back("--more");
    std::erase(more.extraArgs, "--mine");

    CHECK(change(record, more, scene.user, scene.environment).notices.empty());
    const auto edited =
        change({record.bundleURL, more}, without, scene.user, scene.environment).notices;

    REQUIRE(edited.size() == 2);
    CHECK(edited[0].kind == Notice::Kind::separationDropped);
    CHECK(edited[0].severity == Notice::Severity::warning);
    CHECK(edited[0].remedy == Remedy::workOutArguments);
    CHECK(edited[0].subject == "Work");
    CHECK(contains(edited[0].sentence, "-profile"));
    CHECK(edited[1].remedy == Remedy::workOutVariables);
    CHECK(contains(edited[1].sentence, "GSETTINGS_BACKEND"));
}

TEST_CASE("the look of a status item that is not shown is kept, and said to change nothing") {
    const Scene scene;
    const auto record = scene.instance("Work");
    auto look = record.config;
    look.menuBarIconTemplate = true;
    auto both = look;
    both.menuBarIcon = true;

    const auto edited = change(record, look, scene.user, scene.environment);
    REQUIRE(edited.notices.size() == 1);
    CHECK(edited.notices[0].kind == Notice::Kind::lookWithoutItem);
    CHECK(edited.notices[0].subject == "Work");
    CHECK(edited.record.config.menuBarIconTemplate);
    CHECK(change(edited.record, both, scene.user, scene.environment).notices.empty());
}

TEST_CASE("a home that is another's or nobody's is not taken") {
    const Scene scene;
    const auto record = scene.instance("Work");
    scene.instance("Other");
    auto taken = record.config;
    taken.instanceHome = "~/KorvaneInstances/Other/";
    auto unknown = record.config;
    unknown.instanceHome = "~no-such-user-here/x";

    const auto others = refusalOf(scene, [&] { change(record, taken, scene.user); });
    const auto nobodys = refusalOf(scene, [&] { change(record, unknown, scene.user); });

    CHECK(others.kind == Kind::homeTaken);
    CHECK(others.remedy == Remedy::changeHome);
    CHECK(nobodys.kind == Kind::unknownUser);
    CHECK(nobodys.subject == "~no-such-user-here/x");
}

TEST_CASE("an instance that has changed since it was read is not written over") {
    const Scene scene;
    const auto record = scene.instance();
    auto meanwhile = record.config;
    meanwhile.commandArgs = {"another's"};
    scene.store(record, meanwhile);
    auto wanted = record.config;
    wanted.commandArgs = {"mine"};

    const auto refusal = refusalOf(scene, [&] { change(record, wanted, scene.user); });

    CHECK(refusal.kind == Kind::changedMeanwhile);
    CHECK(refusal.subject == record.bundleURL);
    CHECK(refusal.remedy == Remedy::lookAgain);
}

TEST_CASE("a bundle whose Info.plist cannot be read is left alone") {
    const Scene scene;
    const auto record = scene.instance();
    const auto file = writeFile(record.bundleURL + "/Contents/Info.plist", "no property list");
    auto wanted = record.config;
    setProcessName(wanted, "mailer");

    const auto refusal = refusalOf(scene, [&] { change(record, wanted, scene.user); });

    CHECK(refusal.kind == Kind::damagedInstance);
    CHECK(refusal.subject == file);
}

TEST_CASE("a new home that is the user's own is told of, and one of their folders refused") {
    const Scene scene;
    const auto record = scene.instance();
    auto wanted = record.config;
    wanted.instanceHome = "~/Documents";
    const auto refusal = refusalOf(scene, [&] { change(record, wanted, scene.user); });
    CHECK(refusal.kind == Kind::homeIsUsers);
    CHECK(refusal.remedy == Remedy::changeHome);

    wanted.instanceHome = "~";
    const auto edited = change(record, wanted, scene.user);

    CHECK(noticeOf(edited.notices, Notice::Kind::homeIsNotPrivate).subject == scene.home.path());
}

} // namespace korvane::test
