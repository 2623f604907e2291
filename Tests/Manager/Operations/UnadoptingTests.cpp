#include "Manager/Operations/Unadopting.h"

#include "Manager/Operations/Adopting.h"
#include "Manager/Operations/Registering.h"
#include "Scene.h"

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

struct AdoptedProgram : Scene {
    Path program = writeScript(tmp / "bin/mailer", "exit 0");
    Path entry = writeFile(tmp / "share/applications/org.example.Mail.desktop",
                           "[Desktop Entry]\nType=Application\nName=Mail Reader\nExec=" + program +
                               " --own %U\nName[de]=Briefe\n");
    Path bundle =
        korvane::adopt({.program = "org.example.Mail", .folder = {}}, user, environment).bundle;

    Unadopted unadopt(const std::string& text) const {
        return korvane::unadopt(text, user, environment);
    }
    ambrel::InstanceRecord instanceIn(const std::optional<Path>& folder) const {
        auto wanted = programRequest("Mail Reader");
        wanted.outputFolder = folder;
        return make(wanted).record;
    }
};

} // namespace

TEST_CASE("an adopted program's application is removed, and its program stays") {
    const AdoptedProgram scene;

    const auto done = scene.unadopt("mail reader");

    CHECK(done.bundle == scene.bundle);
    CHECK(done.name == "Mail Reader");
    CHECK(done.notices.empty());
    CHECK(namesIn(scene.home / "Applications") == Strings{});
    CHECK(isThere(scene.program));
    CHECK(isThere(scene.entry));
}

TEST_CASE("an application that instances need is not removed") {
    const AdoptedProgram scene;
    for (const auto& folder : {std::optional<Path>(), std::optional(scene.tmp / "elsewhere")}) {
        CAPTURE(folder.value_or("the default folder"));
        const auto record = scene.instanceIn(folder);

        const auto refusal = refusalOf(scene, [&] { scene.unadopt(scene.bundle); });

        CHECK(refusal.kind == Kind::applicationNeeded);
        CHECK(refusal.subject == scene.bundle);
        CHECK(refusal.remedy == Remedy::deleteFirst);
        CHECK(refusal.alternatives == Strings{folder ? record.bundleURL : "Work"});
        ambrel::fileSystem::removeTree(record.bundleURL);
        ambrel::fileSystem::removeTree(scene.home / ".local");
    }
    scene.unadopt(scene.bundle);
}

TEST_CASE("an application is needed by an instance elsewhere that was taken off the desktop") {
    const AdoptedProgram scene;
    const auto record = scene.instanceIn(scene.tmp / "elsewhere");
    unregisterInstance(record, scene.user);

    const auto refusal = refusalOf(scene, [&] { scene.unadopt(scene.bundle); });

    CHECK(refusal.kind == Kind::applicationNeeded);
    CHECK(refusal.alternatives == Strings{record.bundleURL});
}

TEST_CASE("what adopting did not make is not removed") {
    const AdoptedProgram scene;
    makeLink(scene.tmp / "Link.app", scene.bundle);
    const auto instance = scene.instance("Command").bundleURL;

    for (const auto& path : {scene.installApp(), scene.tmp / "Link.app", instance}) {
        CAPTURE(path);
        CHECK(refusalOf(scene, [&] { scene.unadopt(path); }).kind == Kind::notAdopted);
    }
    const auto own = writeFile(scene.bundle + "/Contents/Resources/notes.txt", "mine");
    const auto refusal = refusalOf(scene, [&] { scene.unadopt(scene.bundle); });
    CHECK(refusal.kind == Kind::notAdopted);
    CHECK(contains(refusal.sentence(), "Contents/Resources/notes.txt"));
    ambrel::fileSystem::removeItem(own);
    makeFolder(scene.bundle + "/Contents/Empty");
    CHECK(refusalOf(scene, [&] { scene.unadopt(scene.bundle); }).kind == Kind::notAdopted);
}

TEST_CASE("a program without an application has none to remove") {
    const AdoptedProgram scene;
    scene.unadopt(scene.bundle);

    const auto refusal = refusalOf(scene, [&] { scene.unadopt("org.example.Mail"); });

    CHECK(refusal.kind == Kind::unknownApplication);
}

} // namespace korvane::test
