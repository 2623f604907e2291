#include "Manager/Operations/Adopting.h"

#include "Scene.h"

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

struct Adoptable : Scene {
    Path program = writeScript(tmp / "bin/mailer", "exit 0");

    Path entry(const std::string& lines) const {
        return writeFile(tmp / "share/applications/org.example.Mail.desktop",
                         "[Desktop Entry]\nType=Application\nName=Mail Reader\nExec=" + program +
                             " %U\n" + lines);
    }
    Adopted adopt(const std::string& what) const {
        return korvane::adopt({.program = what, .folder = {}}, user, environment);
    }
};

} // namespace

TEST_CASE("an installed program becomes an application that is found by its name") {
    const Adoptable scene;
    scene.entry("");

    const auto adopted = scene.adopt("org.example.Mail");

    CHECK(adopted.bundle == scene.home / "Applications/Mail Reader.app");
    CHECK(adopted.name == "Mail Reader");
    CHECK(adopted.program == scene.program);
    CHECK(referenceTo(adopted, scene.user) == "Mail Reader");
    CHECK_FALSE(adopted.hasIcon);
    CHECK(adopted.notices.empty());
    CHECK(linkText(adopted.bundle + "/Contents/MacOS/mailer") == scene.program);
    CHECK(namesIn(scene.home / "Applications") == Strings{"Mail Reader.app"});
}

TEST_CASE("an application that its name does not find is told by its path") {
    const Adoptable scene;
    scene.entry("");

    const auto adopted = korvane::adopt({.program = "org.example.Mail", .folder = scene.tmp / "x"},
                                        scene.user, scene.environment);

    CHECK(adopted.bundle == scene.tmp / "x/Mail Reader.app");
    CHECK(referenceTo(adopted, scene.user) == adopted.bundle);
}

TEST_CASE("that the session bus can start a program is no notice of its application") {
    const Adoptable scene;
    scene.entry("DBusActivatable=true\n");

    CHECK(scene.adopt("org.example.Mail").notices.empty());
}

TEST_CASE("what cannot become an application is refused, and nothing is made") {
    const Adoptable scene;
    const auto entry = scene.entry("Hidden=true\n");
    makeFolder(scene.home / "Applications/mailer.app");

    const auto unknown = refusalOf(scene, [&] { scene.adopt("no-such-program"); });
    const auto hidden = refusalOf(scene, [&] { scene.adopt(entry); });
    const auto taken = refusalOf(scene, [&] { scene.adopt(scene.program); });
    const auto noText = refusalOf(scene, [&] { scene.adopt("x\xff"); });

    CHECK(unknown.kind == Kind::unknownApplication);
    CHECK(unknown.subject == "no-such-program");
    CHECK(hidden.kind == Kind::notAdoptable);
    CHECK(hidden.subject == entry);
    CHECK(taken.kind == Kind::placeTaken);
    CHECK(taken.subject == scene.home / "Applications/mailer.app");
    CHECK(taken.remedy == Remedy::chooseFolder);
    CHECK(noText.kind == Kind::badText);
}

TEST_CASE("a program that is an application already is told as it stands") {
    const Adoptable scene;
    const auto entry = scene.entry("");
    const auto first = scene.adopt("org.example.Mail");
    const auto before = scene.everything();

    for (const std::string text : {"org.example.Mail", "Mail Reader", "mail reader"}) {
        CAPTURE(text);
        const auto again = scene.adopt(text);
        CHECK(again.existed);
        CHECK(again.bundle == first.bundle);
        CHECK(again.program == scene.program);
        CHECK(referenceTo(again, scene.user) == "Mail Reader");
    }
    CHECK(scene.adopt(entry).existed);
    CHECK(scene.adopt(first.bundle + "/").bundle == first.bundle);
    CHECK(korvane::adopt({.program = entry, .folder = scene.home / "Applications"}, scene.user,
                         scene.environment)
              .existed);
    CHECK_FALSE(first.existed);
    CHECK(scene.everything() == before);
}

TEST_CASE("an application of another program that stands in the place is refused") {
    const Adoptable scene;
    scene.entry("");
    scene.adopt("org.example.Mail");
    const auto other = writeFile(
        scene.tmp / "share/applications/other.desktop",
        "[Desktop Entry]\nType=Application\nName=Mail Reader\nExec=" + scene.program + "\n");

    const auto taken = refusalOf(scene, [&] { scene.adopt(other); });

    CHECK(taken.kind == Kind::placeTaken);
    CHECK(taken.subject == scene.home / "Applications/Mail Reader.app");
}

TEST_CASE("an instance of an installed program is made together with its application") {
    const Adoptable scene;
    scene.entry("");
    auto request = scene.programRequest("mail reader");

    const auto created = scene.make(request);

    const auto app = scene.home / "Applications/Mail Reader.app";
    CHECK(created.record.config.targetAppPath == app);
    CHECK(created.adopted == app);
    const auto notice = noticeOf(created.notices, Notice::Kind::programAdopted);
    CHECK(notice.subject == app);
    CHECK(notice.severity == Notice::Severity::information);

    request.name = "Second";
    const auto second = scene.make(request);
    CHECK(second.record.config.targetAppPath == app);
    CHECK_FALSE(second.adopted);
    CHECK(find(second.notices, Notice::Kind::programAdopted) == nullptr);
}

TEST_CASE("where the instance cannot be made, its application is not either") {
    const Adoptable scene;
    scene.entry("");
    auto request = scene.programRequest("org.example.Mail");
    request.runner = scene.tmp / "no-runner";

    CHECK(refusalOf(scene, [&] { scene.make(request); }).kind == Kind::unusableRunner);

    scene.adopt("org.example.Mail");
    CHECK(refusalOf(scene, [&] { scene.make(request); }).kind == Kind::unusableRunner);
}

TEST_CASE("a plan for a program that is no application yet is refused") {
    const Adoptable scene;
    scene.entry("");
    auto request = scene.programRequest("org.example.Mail");

    const auto refusal = refusalOf(scene, [&] { scene.plan(request); });

    CHECK(refusal.kind == Kind::unknownApplication);
    CHECK(refusal.remedy == Remedy::adoptFirst);
}

} // namespace korvane::test
