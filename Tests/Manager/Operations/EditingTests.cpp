#include "Manager/Operations/Editing.h"

#include "Scene.h"

#include "Ambrel/Platform/Images.h"
#include "Ambrel/Platform/PropertyList.h"
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
    CHECK_FALSE(edited.iconIsOutdated);
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

TEST_CASE("a new home is made, and a label that is not drawn is told of") {
    const Scene scene;
    const auto record = scene.instance();
    auto wanted = record.config;
    wanted.instanceHome = scene.home / std::string(80, 'y');
    wanted.iconLabel = ambrel::IconLabel{"A", "FF0000", ambrel::IconLabel::Position::top};

    const auto edited = change(record, wanted, scene.user);

    CHECK(edited.homeChanged);
    CHECK(edited.iconIsOutdated);
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
        {"displayName", [](auto& config) { config.displayName = "Other"; }},
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

} // namespace korvane::test
