#include "Manager.h"

namespace korvane::test {

TEST_CASE("a bundle identifier of another instance is refused, whatever the case") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = snapshot(manager.tmp.path());

    const auto error = manager.refusal(
        {"create", "command", "Other", "--bundle-id", "APP.korvane.instance.work", aProgram});

    CHECK(says(error, "belongs to the instance \"Work\""));
    CHECK(says(error, "--bundle-id"));
    CHECK(snapshot(manager.tmp.path()) == before);
}

TEST_CASE("names that come to one identifier are told apart by a counter") {
    const Manager manager;
    const auto idOf = [&](const std::string& name) {
        return manager.configOf(manager.create({"command", name, aProgram})).bundleId;
    };

    CHECK(idOf("a b") == "app.korvane.instance.a-b");
    CHECK(idOf("a-b") == "app.korvane.instance.a-b-2");
    CHECK(idOf("A B") == "app.korvane.instance.a-b-3");
    CHECK(idOf("🙂") == "app.korvane.instance.-");
    CHECK(idOf("🙃") == "app.korvane.instance.--2");
    // So is the desktop entry of somebody else.
    writeFile(manager.tmp / "share/applications/app.korvane.instance.mail.desktop",
              "[Desktop Entry]\nType=Application\nName=Mail\nExec=/bin/true\n");
    CHECK(idOf("Mail") == "app.korvane.instance.mail-2");
}

TEST_CASE("a bundle identifier of an instance in the output folder is refused") {
    const Manager manager;
    manager.create({"command", "Work", "--output", manager.tmp / "out", aProgram});

    CHECK(says(manager.refusal({"create", "command", "Other", "--output", manager.tmp / "out",
                                "--bundle-id", "app.korvane.instance.work", aProgram}),
               "belongs to the instance \"Work\""));
}

TEST_CASE("a home of another instance is refused, whatever path leads there") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    makeLink(manager.tmp / "link", manager.instanceHome("Work"));

    for (const std::string home : {"~/KorvaneInstances/Work", "~/KorvaneInstances/./Work/",
                                   "~/KorvaneInstances/x/../Work"}) {
        CAPTURE(home);
        const auto error =
            manager.refusal({"create", "command", "Other", "--home", home, aProgram});
        CHECK(says(error, "belongs to the instance \"Work\""));
        CHECK(says(error, "--home"));
    }
    CHECK(says(
        manager.refusal({"create", "command", "Other", "--home", manager.tmp / "link", aProgram}),
        "belongs to the instance \"Work\""));
}

TEST_CASE("a home of an unknown user is refused") {
    const Manager manager;
    CHECK(says(
        manager.refusal({"create", "command", "n", "--home", "~no-such-user-here/x", aProgram}),
        "names an unknown user"));
}

} // namespace korvane::test
