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
    CHECK(adopted.reference == "Mail Reader");
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
    CHECK(adopted.reference == adopted.bundle);
}

TEST_CASE("a program that may hand over to a running copy is told of") {
    const Adoptable scene;
    scene.entry("DBusActivatable=true\n");

    CHECK(noticeOf(scene.adopt("org.example.Mail").notices, Notice::Kind::handsOverToRunningCopy)
              .subject == "Mail Reader");
}

TEST_CASE("what cannot become an application is refused, and nothing is made") {
    const Adoptable scene;
    const auto entry = scene.entry("Hidden=true\n");
    makeFolder(scene.home / "Applications/mailer.app");

    const auto unknown = refusalOf(scene, [&] { scene.adopt("no-such-program"); });
    const auto hidden = refusalOf(scene, [&] { scene.adopt(entry); });
    const auto taken = refusalOf(scene, [&] { scene.adopt(scene.program); });
    const auto noText = refusalOf(scene, [&] { scene.adopt("x\xff"); });

    CHECK(unknown.kind == Kind::unknownProgram);
    CHECK(unknown.subject == "no-such-program");
    CHECK(hidden.kind == Kind::notAdoptable);
    CHECK(hidden.subject == entry);
    CHECK(taken.kind == Kind::placeTaken);
    CHECK(taken.subject == scene.home / "Applications/mailer.app");
    CHECK(taken.remedy == Remedy::chooseFolder);
    CHECK(noText.kind == Kind::badText);
}

} // namespace korvane::test
