#include "ForeignEntryReader.h"
#include "Manager/Rules/OpenedTypes.h"
#include "Registrations.h"

#include <filesystem>
#include <sys/stat.h>

namespace korvane::test {

namespace {

/// A manager with an application called "Mail" that opens letters.
struct Offers : Registrations {
    Offers() { installMail("message/rfc822;x-scheme-handler/mailto;"); }

    void installMail(const std::string& types) const {
        AppBundleBuilder(manager.applications() + "/Mail.app")
            .identifier("org.example.mail")
            .entry("KorvaneMimeTypes", "<string>" + types + "</string>")
            .executable("program", "printf '<%s>' \"$@\" >" + quoted(seen()) + "; exit 0")
            .write();
    }
    Path createMail(Strings more) const {
        more.insert(more.begin(), {"app", "Work", "Mail", "--no-profile", "--add-arg=--own"});
        return manager.create(more);
    }
    std::optional<std::string> types() const {
        return readEntryFile(entry(work)).string("MimeType");
    }
    std::string exec() const { return *readEntryFile(entry(work)).string("Exec"); }
    std::string index() const { return readFile(data("/applications/mimeinfo.cache")); }
    Path seen() const { return manager.tmp / "seen"; }
};

} // namespace

TEST_CASE("an instance that is to open documents is offered for those of its application") {
    const Offers fixture;
    const auto bundle = fixture.createMail({"--open-with"});

    CHECK(fixture.types() == "message/rfc822;x-scheme-handler/mailto;");
    CHECK(fixture.exec() == fixture.script(work) + " %U");
    CHECK(complaintsAbout(fixture.entry(work)).empty());
    CHECK(readWithGLib(fixture.entry(work)).name == "Work");
    CHECK(readFile(fixture.script(work)) ==
          "#!/bin/sh\nexec '" + runnerIn(bundle) + "' --open \"$@\"\n");
    CHECK(contains(fixture.index(), "message/rfc822=" + work + ".desktop;"));
}

TEST_CASE("an instance that is to be a browser is offered for addresses and pages") {
    const Offers fixture;
    fixture.installMail("x-scheme-handler/https;");
    fixture.createMail({"--browser"});
    CHECK(fixture.types() ==
          "text/html;application/xhtml+xml;x-scheme-handler/http;x-scheme-handler/https;");
    CHECK(complaintsAbout(fixture.entry(work)).empty());

    fixture.installMail("text/html;text/plain");
    fixture.createMail({"--browser", "--open-with", "--replace"});
    CHECK(fixture.types() == "text/html;text/plain;application/xhtml+xml;"
                             "x-scheme-handler/http;x-scheme-handler/https;");
}

TEST_CASE("an application that opens no addresses cannot be offered as a browser") {
    const Offers fixture;
    const auto& manager = fixture.manager;
    manager.installApp("Plain", "org.example.plain");
    manager.installApp("Surf", "org.mozilla.surf");

    for (const std::string name : {"Mail", "Plain"}) {
        CAPTURE(name);
        CHECK(says(manager.refusal({"create", "app", "Work", name, "--browser"}),
                   "\"" + name + "\" names no addresses or web pages that it opens"));
    }
    CHECK_FALSE(isThere(manager.home / "KorvaneInstances"));
    // Adopted before types were kept: the engine tells.
    CHECK(manager.configOf(manager.create({"app", "Surfing", "Surf", "--browser"}))
              .registerAsBrowser);
}

TEST_CASE("what replaces a browser is one only where it can be") {
    const Offers fixture;
    fixture.installMail("x-scheme-handler/http;");
    fixture.createMail({"--browser"});
    const auto isBrowser = [&] {
        return fixture.manager.configOf(fixture.createMail({"--replace"})).registerAsBrowser;
    };
    CHECK(isBrowser());

    fixture.installMail("message/rfc822;");

    CHECK_FALSE(isBrowser());
}

TEST_CASE("an instance that opens nothing is offered for nothing and has no script") {
    const Offers fixture;
    fixture.createMail({});
    CHECK_FALSE(fixture.types());
    CHECK_FALSE(isThere(fixture.script(work)));
    CHECK_FALSE(isThere(fixture.data("/applications/mimeinfo.cache")));

    // What is offered goes again, with its script and out of the index.
    fixture.createMail({"--replace", "--open-with"});
    fixture.createMail({"--replace", "--no-open-with"});
    CHECK_FALSE(fixture.types());
    CHECK_FALSE(isThere(fixture.script(work)));
    CHECK_FALSE(contains(fixture.index(), work));
    fixture.createMail({"--replace", "--open-with"});
    fixture.manager.result({"delete", "Work"});
    CHECK_FALSE(isThere(fixture.script(work)));
    CHECK_FALSE(contains(fixture.index(), work));
}

TEST_CASE("offering an instance makes it the default for nothing and says what may come of it") {
    const Offers fixture;
    const auto& manager = fixture.manager;
    const auto list = writeFile(manager.home / ".config/mimeapps.list",
                                "[Default Applications]\nmessage/rfc822=other.desktop\n");

    const auto done = manager.run({"create", "app", "Work", "Mail", "--open-with", "--runner",
                                   KORVANE_TEST_RUNNER, "--no-profile"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "where you have chosen no program for them, the desktop may take it."));
    CHECK(done.error.find("Created \"Work\".") < done.error.find("It is offered for opening"));
    CHECK(readFile(list) == "[Default Applications]\nmessage/rfc822=other.desktop\n");
    CHECK(namesIn(manager.home / ".config") == Strings{"mimeapps.list"});
    CHECK_FALSE(isThere(fixture.data("/applications/mimeapps.list")));
}

TEST_CASE("a tool for the index that fails is no failure") {
    const Offers fixture;
    const auto& manager = fixture.manager;
    const Path tool = "/usr/bin/update-desktop-database";
    REQUIRE(isThere(tool));
    auto setup = manager.setup({"create", "app", "Work", "Mail", "--open-with", "--runner",
                                KORVANE_TEST_RUNNER, "--no-profile"});
    const auto failing = writeScript(manager.tmp / "failing", "echo noise; echo noise >&2; exit 1");

    setup.command =
        commandInMountNamespace("mount --bind " + quoted(failing) + " " + tool, setup.command);
    const auto done = run(setup);

    CHECK(done.status == 0);
    CHECK_FALSE(contains(done.output + done.error, "noise"));
    CHECK_FALSE(contains(done.error, "warning"));
    CHECK(isThere(fixture.entry(work)));
}

TEST_CASE("what an opener starts by the entry reaches the program behind its own arguments") {
    const Offers fixture;
    fixture.createMail({"--open-with", "--output", fixture.manager.tmp / "two words"});

    const auto done = run({fixture.script(work), "/a b", "-x", "file:///c%20d", "mailto:x"});

    CHECK(done.status == 0);
    const auto here = std::filesystem::current_path().string();
    CHECK(readFile(fixture.seen()) == "<--own></a b><" + here + "/-x></c d><mailto:x>");
}

TEST_CASE("types that no file has are not offered") {
    CHECK(mimeTypesIn("text/plain;text/plain;;all/all;foo/bar;application/*;image/;/"
                      ";x;a b/c;text/x y;text/a\nb;x-scheme-handler/x+y.z-1;"
                      "TEXT/plain;inode/directory") ==
          Strings{"text/plain", "x-scheme-handler/x+y.z-1", "inode/directory"});
    CHECK(mimeTypesIn("").empty());
}

TEST_CASE(
    "an instance is not made to open documents where its application names none that there are") {
    const Offers fixture;
    fixture.installMail("all/allfiles;foo/bar");

    const auto refusal =
        fixture.manager.refusal({"create", "app", "Work", "Mail", "--no-profile", "--open-with"});

    CHECK(says(refusal, "\"Mail\" names no types of files that it opens"));
    CHECK_FALSE(isThere(fixture.manager.applications() + "/Work.app"));
}

TEST_CASE("every type that is let through is one that the checker of entries knows") {
    const TempDir tmp;
    std::string list;
    for (const std::string media :
         {"application", "audio", "chemical", "font", "image", "inode", "message", "model",
          "multipart", "text", "video", "x-content", "x-scheme-handler", "x-world"}) {
        list += media + "/x-korvane;";
        REQUIRE(mimeTypesIn(media + "/x-korvane").size() == 1);
    }

    const auto complaints = complaintsAbout(
        writeFile(tmp / "all.desktop", "[Desktop Entry]\nType=Application\nName=All\n"
                                       "Exec=/bin/true %U\nCategories=Utility;\nMimeType=" +
                                           list + "\n"));

    CHECK_FALSE(contains(complaints, "error"));
}

TEST_CASE("open hands files and addresses to an application and to nothing else") {
    const Offers fixture;
    const auto& manager = fixture.manager;
    fixture.createMail({});
    const auto fifo = manager.tmp / "done";
    REQUIRE(::mkfifo(fifo.c_str(), 0600) == 0);
    writeScript(manager.applications() + "/Mail.app/Contents/MacOS/program",
                "printf '<%s>' \"$@\" >" + quoted(fifo));
    auto setup = manager.setup({"open", "Work", "--", "-x", "a b", "file:///c%20d", "http:x"});
    setup.currentDirectory = makeFolder(manager.tmp / "here");

    CHECK(run(setup).status == 0);
    CHECK(readFile(fifo) == "<--own><" + (manager.tmp / "here/-x") + "><" +
                                (manager.tmp / "here/a b") + "></c d><http:x>");

    manager.create({"command", "Echo", "/bin/echo"});
    CHECK(says(manager.refusal({"open", "Echo", "--", "x"}),
               "Only an instance of an application can be given something to open"));
    CHECK(says(manager.refusal({"open", "Work", "--", "x", ""}, 2), "is empty"));
}

} // namespace korvane::test
