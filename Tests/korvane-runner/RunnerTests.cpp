#include "Wrapper.h"

#include "Support/Report.h"

#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sstream>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("a wrapper without instance json fails with the reason and status 1") {
    const Wrapper wrapper;

    checkFailure(wrapper.open(),
                 unreadable + "Cannot read " + wrapper.json + ": No such file or directory\n");
}

TEST_CASE("an instance json that is a folder or may not be read fails with the reason") {
    const Wrapper wrapper;
    makeFolder(wrapper.json);
    checkFailure(wrapper.open(), unreadable + "Cannot read " + wrapper.json + ": Is a directory\n");
    std::filesystem::remove(wrapper.json);
    wrapper.configure(smallestConfig());
    giveToOrdinaryUser(wrapper.tmp.path());
    setMode(wrapper.json, 0000);

    checkFailure(run(commandAsOrdinaryUser({wrapper.runner})),
                 unreadable + "Cannot read " + wrapper.json + ": Permission denied\n");
}

TEST_CASE("valid JSON without one of the three required keys fails with the decoding error") {
    const Wrapper wrapper;
    wrapper.configure(R"({"bundleId":"b","instanceHome":"h"})");
    checkFailure(wrapper.open(), unreadable + "Key not found: displayName\n");
    wrapper.configure(R"({"displayName":"d","instanceHome":"h"})");
    checkFailure(wrapper.open(), unreadable + "Key not found: bundleId\n");
    wrapper.configure(R"({"displayName":"d","bundleId":"b"})");
    checkFailure(wrapper.open(), unreadable + "Key not found: instanceHome\n");
    wrapper.configure(
        R"({"displayName":"d","bundleId":"b","instanceHome":"h","extraArgs":["a",1]})");
    checkFailure(wrapper.open(), unreadable + "Type mismatch at extraArgs[1]: expected a string, "
                                              "found a number\n");
}

TEST_CASE("an undecodable file fails with one line in one write and status 1") {
    const Wrapper wrapper;
    for (const std::string& text :
         {std::string(), std::string("x"), std::string("\xff"), std::string(100000, '['),
          std::string("[]"), smallestConfig().encode() + std::string("\0", 1),
          std::string(R"({"displayName":"d","bundleId":"b","kind":"a\nb\u001b[31m"})")}) {
        wrapper.configure(text);
        CAPTURE(text.substr(0, 60));
        const auto result = wrapper.open();
        CHECK(result.status == 1);
        CHECK(beginsWith(result.error, unreadable));
        REQUIRE(result.errorWrites.size() == 1);
        CHECK(result.error.back() == '\n');
        CHECK(isOneLine(result.error.substr(0, result.error.size() - 1)));
        CHECK(result.output.empty());
    }
}

TEST_CASE("a web configuration never reaches the launcher, whatever menuBarIcon says") {
    auto config = smallestConfig();
    config.kind = ShortcutKind::web;
    config.url = "https://example.org";
    for (const bool menuBarIcon : {false, true}) {
        const Wrapper wrapper;
        config.menuBarIcon = menuBarIcon;
        config.instanceHome = wrapper.tmp / "h";
        wrapper.configure(config);

        // The host has its own reason to refuse, where it can show nothing.
        checkFailure(
            run({"/usr/bin/env", "-u", "DISPLAY", "-u", "WAYLAND_DISPLAY", wrapper.runner}),
            failed + "no display can be opened\n");

        CHECK(isRealFolder(wrapper.tmp / "h"));
    }
}

TEST_CASE("a command that exits with status 3 makes the runner exit with status 3") {
    for (const int status : {0, 3, 255}) {
        const Wrapper wrapper;
        wrapper.configure(shell(wrapper.tmp / "h", "exit " + std::to_string(status)));
        const auto result = wrapper.open();
        CHECK(result.status == status);
        CHECK(result.error.empty());
        CHECK(result.output.empty());
    }
}

TEST_CASE("an unsupported strategy reaches standard error with the application's identifier") {
    const Wrapper wrapper;
    auto config = smallestConfig();
    config.strategy = Strategy::unsupported;
    config.instanceHome = wrapper.tmp / "h";
    config.targetAppPath =
        AppBundleBuilder(wrapper.tmp / "T.app").identifier("org.example.target").write();
    wrapper.configure(config);

    checkFailure(wrapper.open(), failed + "App not clonable: org.example.target\n");

    CHECK(namesIn(wrapper.tmp / "h") == Strings{"korvane-instance.log"});
}

TEST_CASE("the launcher's own refusals reach standard error word for word") {
    const Wrapper wrapper;
    auto config = smallestConfig();
    config.instanceHome = wrapper.tmp / "h";
    config.targetAppPath = "~/Applications/X.app";
    wrapper.configure(config);
    checkFailure(wrapper.open(), failed + "Not a readable .app bundle: ~/Applications/X.app\n");
    config.kind = ShortcutKind::file;
    wrapper.configure(config);
    checkFailure(wrapper.open(), failed + "App not clonable: file shortcut has no target path\n");
    config.kind = ShortcutKind::command;
    wrapper.configure(config);
    checkFailure(wrapper.open(), failed + "App not clonable: command shortcut has no executable\n");
}

TEST_CASE("a command that cannot be started fails with its path and the system's reason") {
    const Wrapper wrapper;
    auto config = commandConfig(wrapper.tmp / "h", wrapper.tmp / "missing");
    wrapper.configure(config);
    auto result = wrapper.open();
    CHECK(result.status == 1);
    CHECK(result.errorWrites.size() == 1);
    CHECK(beginsWith(result.error, failed));
    CHECK(contains(result.error, wrapper.tmp / "missing: No such file or directory\n"));

    config.commandPath = "/bin/true";
    config.workingDirectory = wrapper.tmp / "no folder";
    wrapper.configure(config);
    result = wrapper.open();

    CHECK(result.status == 1);
    CHECK(beginsWith(result.error, failed));
    CHECK(contains(result.error, wrapper.tmp / "no folder: No such file or directory\n"));
}

TEST_CASE("an instance home that cannot be made is a failure of an application only") {
    const Wrapper wrapper;
    writeFile(wrapper.tmp / "file");
    wrapper.configure(applicationConfig(wrapper, wrapper.tmp / "file/h", "exit 0"));
    const auto result = wrapper.open();
    CHECK(result.status == 1);
    CHECK(beginsWith(result.error, failed + "Cannot create the folder " + (wrapper.tmp / "file")));
    CHECK(result.errorWrites.size() == 1);

    wrapper.configure(shell(wrapper.tmp / "file/h", "echo out; echo err >&2; exit 4"));
    const auto command = wrapper.open();

    CHECK(command.status == 4);
    CHECK(command.output == "out\n"); // without a log the runner's own streams are inherited
    CHECK(command.error == "err\n");
}

TEST_CASE("the program gets the three standard streams and no other descriptor") {
    const Wrapper wrapper;
    wrapper.configure(commandConfig(wrapper.tmp / "h", probe, {"report", wrapper.tmp / "report"}));
    const int leaking = ::open("/dev/zero", O_RDONLY);

    CHECK(wrapper.open().status == 0);
    ::close(leaking);

    CHECK(Report(wrapper.tmp / "report").lines("fd").size() == 3);
}

TEST_CASE("a relative command lies below the runner's folder, also with a working directory") {
    const Wrapper wrapper;
    copyProgram(probe, wrapper.tmp / "here/bin/tool");
    makeFolder(wrapper.tmp / "there");
    auto config = commandConfig(wrapper.tmp / "h", "bin/tool", {"report", wrapper.tmp / "report"});
    config.workingDirectory = wrapper.tmp / "there";
    wrapper.configure(config);

    const auto result =
        run({.command = {wrapper.runner}, .currentDirectory = wrapper.tmp / "here"});

    CHECK(result.status == 0);
    CHECK(Report(wrapper.tmp / "report").lines("cwd") == Strings{wrapper.tmp / "there"});
    CHECK(Report(wrapper.tmp / "report").lines("argv0") == Strings{wrapper.tmp / "here/bin/tool"});
}

TEST_CASE("a file instance runs the system's opener with the expanded path and its status") {
    const Wrapper wrapper;
    auto config = smallestConfig();
    config.kind = ShortcutKind::file;
    config.openPath = "~/a b.pdf";
    wrapper.configure(config);
    const auto opener =
        writeScript(wrapper.tmp / "opener", "printf '%s\\n' \"$0\" \"$#\" \"$@\" > " +
                                                quoted(wrapper.tmp / "seen") + "; exit 5");
    REQUIRE(isThere("/usr/bin/open")); // the system's opener, which the stand-in covers

    const auto result = run(commandInMountNamespace(
        "mount --bind " + quoted(opener) + " /usr/bin/open", {wrapper.runner}));

    CHECK(result.error.empty());
    CHECK(result.status == 5);
    CHECK(readFile(wrapper.tmp / "seen") ==
          "/usr/bin/open\n1\n" + (wrapper.user / "a b.pdf") + "\n");
}

TEST_CASE("the runner reads no arguments and writes nothing to standard output") {
    const Wrapper wrapper;
    wrapper.configure(shell(wrapper.tmp / "h", "exit 7"));

    const auto result = run({wrapper.runner, "--help", "/etc/passwd"});

    CHECK(result.status == 7);
    CHECK(result.output.empty());
    CHECK(result.error.empty());
}

TEST_CASE("the runner of an application hands over what it is to open behind its own arguments") {
    const Wrapper wrapper;
    const auto seen = wrapper.tmp / "seen";
    auto config = applicationConfig(wrapper, wrapper.tmp / "h",
                                    "printf '%s\\0' \"$@\" > " + quoted(seen) + "; exit 6");
    config.extraArgs = {"--own", "/of its own"};
    wrapper.configure(config);
    const auto here = makeFolder(wrapper.tmp / "here");
    const auto argumentsWith = [&](Strings words) {
        words.insert(words.begin(), wrapper.runner);
        const auto result = run({.command = words, .currentDirectory = here});
        CHECK(result.status == 6);
        CHECK(result.error.empty());
        return readFile(seen);
    };
    const auto zeroEnded = [](const Strings& words) {
        std::string text;
        for (const auto& word : words) text.append(word).append(1, '\0');
        return text;
    };

    CHECK(argumentsWith({"--open", "-x", "a b", "new\nline", "%41", "file:///a%20b",
                         "file://otherhost/x", "\xff", "--open", "https://example.org/?a=b"}) ==
          zeroEnded({"--own", "/of its own", here + "/-x", here + "/a b", here + "/new\nline",
                     here + "/%41", "/a b", "file://otherhost/x", here + "/\xff", here + "/--open",
                     "https://example.org/?a=b"}));
    for (const auto& words : std::vector<Strings>{
             {}, {"--open"}, {"--open", ""}, {"/a", "--open", "/b"}, {"--help"}, {"--open=/a"}}) {
        CHECK(argumentsWith(words) == zeroEnded({"--own", "/of its own"}));
    }
}

TEST_CASE("an application that wants a mark in front of what it opens gets it only then") {
    const Wrapper wrapper;
    auto config = smallestConfig();
    config.instanceHome = wrapper.tmp / "h";
    config.targetAppPath = AppBundleBuilder(wrapper.tmp / "T.app")
                               .executable("run", "echo \"$@\"")
                               .entry("KorvaneOpenMark", "<string>--</string>")
                               .write();
    config.extraArgs = {"--own"};
    wrapper.configure(config);

    CHECK(wrapper.open().status == 0);
    CHECK(run({wrapper.runner, "--open", "/a", "/b"}).status == 0);

    CHECK(readFile(wrapper.tmp / "h/korvane-instance.log") == "--own\n--own -- /a /b\n");
}

TEST_CASE("the runner of anything but an application reads no arguments at all") {
    const Wrapper wrapper;
    wrapper.configure(
        commandConfig(wrapper.tmp / "h", probe, {"report", wrapper.tmp / "report", "own"}));

    CHECK(run({wrapper.runner, "--open", "/a"}).status == 0);

    CHECK(Report(wrapper.tmp / "report").lines("arg") == Strings{"own"});
}

TEST_CASE("the configuration lies two folders above the runner, whatever the folders are called") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    copyProgram(KORVANE_TEST_RUNNER, tmp / "any/where/anything");
    writeFile(tmp / "any/Resources/instance.json", shell(tmp / "h", "exit 8").encode());
    makeLink(tmp / "elsewhere/link", tmp / "any/where/anything");

    CHECK(run({tmp / "any/where/anything"}).status == 8);
    CHECK(run({tmp / "elsewhere/link"}).status == 8); // the program's own place, not the link's
    CHECK(run({.command = {"./anything"}, .currentDirectory = tmp / "any/where"}).status == 8);
}

TEST_CASE("the configuration is not looked for anywhere else") {
    const TempDir tmp;
    copyProgram(KORVANE_TEST_RUNNER, tmp / "a/b/runner");
    const auto json = shell(tmp / "h", "exit 0").encode();
    writeFile(tmp / "a/b/instance.json", json);
    writeFile(tmp / "a/instance.json", json);
    writeFile(tmp / "a/b/Resources/instance.json", json);
    writeFile(tmp / "Resources/instance.json", json);

    const auto result = run({.command = {tmp / "a/b/runner"}, .currentDirectory = tmp / "a/b"});

    checkFailure(result, unreadable + "Cannot read " + (tmp / "a/Resources/instance.json") +
                             ": No such file or directory\n");
}

TEST_CASE("the runner needs no libraries but those of the C runtime") {
    // The mathematical part of it would cost every start.
    std::set<std::string> allowed{"libc.so.6", "libdl.so.2", "libpthread.so.0",
                                  "ld-linux-x86-64.so.2", "ld-linux-aarch64.so.1"};
#ifdef __SANITIZE_ADDRESS__
    // The checked build brings the checkers' own libraries.
    allowed.insert({"libasan.so.8", "libubsan.so.1", "libgcc_s.so.1", "libm.so.6"});
#endif
    const auto said = run({KORVANE_TEST_READELF, "-d", KORVANE_TEST_RUNNER});
    std::istringstream lines(said.output);
    int needed = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("(NEEDED)") == std::string::npos) continue;
        const auto start = line.find('[') + 1;
        const auto name = line.substr(start, line.find(']') - start);
        ++needed;
        CAPTURE(name);
        CHECK(allowed.count(name) == 1);
    }
    CHECK(needed > 0);
}

TEST_CASE("a missing property-list library is a launch error that names it") {
    const Wrapper wrapper;
    const auto library = std::filesystem::canonical(KORVANE_TEST_PLIST).string();
    const auto empty = writeFile(wrapper.tmp / "empty");
    const auto hide = "mount --bind " + quoted(empty) + " " + quoted(library);
    wrapper.configure(applicationConfig(wrapper, wrapper.tmp / "h", "exit 0"));
    REQUIRE(wrapper.open().status == 0);

    const auto result = run(commandInMountNamespace(hide, {wrapper.runner}));

    CHECK(result.status == 1);
    CHECK(beginsWith(result.error, failed + "Cannot load the library libplist-2.0.so"));
    CHECK(result.errorWrites.size() == 1);
    wrapper.configure(shell(wrapper.tmp / "h", "exit 9")); // which needs no such library
    CHECK(run(commandInMountNamespace(hide, {wrapper.runner})).status == 9);
}

// The address checker itself cannot start without /proc.
#ifndef __SANITIZE_ADDRESS__

TEST_CASE("without its own location the runner says so exactly and exits with status 1") {
    const Wrapper wrapper;
    wrapper.configure(shell(wrapper.tmp / "h", "exit 0"));

    checkFailure(run(commandInMountNamespace("mount -t tmpfs none /proc", {wrapper.runner})),
                 "runner: no executable URL\n");
}
#endif
