#include "Manager.h"

#include "Manager/Programs/Linux/LinkedLibraries.h"
#include "Manager/Programs/Linux/PackageVersion.h"
#include "Manager/Programs/ProgramTraits.h"

namespace korvane::test {

using installedProgram::windowNamingOf;

TEST_CASE("a system is named by the ID and version of its os-release file") {
    CHECK(systemName("NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\nID=debian\n") == "debian-12");
    CHECK(systemName("ID='ubuntu'\nVERSION_ID=24.04\nVERSION_ID=24.10") == "ubuntu-24.10");
    CHECK(systemName("# ID=none\nID=arch\n") == "arch");
    CHECK(systemName("VERSION_ID=1\n").empty());
    CHECK(systemName("").empty());
}

TEST_CASE("of a package's version the upstream part counts to its second number") {
    struct Row {
        std::string version;
        std::string series;
    };
    const Row rows[] = {
        {"0.5.10-2", "0.5"},
        {"1:7.4.7-1+deb12u8", "7.4"},
        {"379-1", "379"},
        {"2.7.4+dfsg.1-2", "2.7"},
        {"1:28.2+1-15", "28.2"},
        {"43.2-1", "43.2"},
        {"156.0.1-1~deb12", "156.0"},
        {"3.~rc", "3"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.version);
        CHECK(upstreamSeries(row.version) == row.series);
    }
    for (const char* none : {"", "abc", "1:", "v1.2"}) CHECK_FALSE(upstreamSeries(none));
}

TEST_CASE("the package of a file is read from the database's answer") {
    CHECK(owningPackage("mousepad: /usr/bin/mousepad\n", "/usr/bin/mousepad") == "mousepad");
    CHECK(owningPackage("libc6:amd64: /lib/x.so\n", "/lib/x.so") == "libc6:amd64");
    CHECK(owningPackage("first, second: /usr/share/doc\n", "/usr/share/doc") == "first");
    CHECK(owningPackage("diversion by dash from: /bin/sh\ndash: /bin/sh\n", "/bin/sh") == "dash");
    CHECK_FALSE(owningPackage("other: /usr/bin/mousepad-old\n", "/usr/bin/mousepad"));
    CHECK_FALSE(owningPackage("", "/bin/sh"));
}

TEST_CASE("the signature of a program is that of the system and its package") {
    const TempDir tmp;
    const auto program = writeScript(tmp / "mailer", "exit 1");
    writeScript(tmp / "bin/dpkg-query",
                "case \"$1 $2\" in\n"
                "'-S " +
                    program + "') echo 'mail-tools:any: " + program +
                    "';;\n"
                    "'-W -f=${Version}') [ \"$3\" = mail-tools:any ] && printf 2:5.12.3-4;;\n"
                    "*) exit 1;;\n"
                    "esac");
    const ambrel::Environment environment{{"PATH", tmp / "bin"}};

    const auto signature = installedProgram::signatureOf(program, environment);

    CHECK(signature.ends_with(" 5.12"));
    CHECK(signature.size() > std::string(" 5.12").size());
    CHECK(installedProgram::signatureOf("/nothing/here", environment).empty());
    CHECK(installedProgram::signatureOf(program, {{"PATH", "/nothing"}}).empty());
}

TEST_CASE("a toolkit is found among the libraries of libraries") {
    const auto libraries = linkedLibraries(KORVANE_TEST_INDIRECT_PROGRAM);

    CHECK(libraries.contains("libkorvane-test-between.so"));
    CHECK(libraries.contains("libgtk-3.so.0"));
    CHECK(linkedLibraries("/nothing/here").empty());
    CHECK(linkedLibraries("/").empty());
}

TEST_CASE("a library is installed where the loader finds it, and is one") {
    const TempDir tmp;

    CHECK(isLibraryInstalled("libc.so.6"));
    CHECK_FALSE(isLibraryInstalled("libkorvane-nowhere.so.1"));
    CHECK_FALSE(isLibraryInstalled(writeFile(tmp / "empty.so")));
    CHECK_FALSE(isLibraryInstalled(tmp.path()));
}

TEST_CASE("windows are named by what the toolkit heeds") {
    const TempDir tmp;
    const auto script = writeScript(tmp / "script", "exec true");

    const auto of = [](const Path& program) { return windowNamingOf(program, program); };
    const auto gtk = of(KORVANE_TEST_INDIRECT_PROGRAM);
    const auto qt = of(KORVANE_TEST_QT_PROGRAM);
    const auto plain = of(KORVANE_TEST_PROBE);
    const auto launched = windowNamingOf(script, KORVANE_TEST_QT_PROGRAM);

    CHECK(gtk.byProcessName);
    CHECK(gtk.variables.empty());
    CHECK(qt.byProcessName);
    CHECK(qt.variables == Strings{"RESOURCE_NAME"});
    CHECK_FALSE(plain.byProcessName);
    CHECK(plain.variables.empty());
    CHECK_FALSE(launched.byProcessName);
    CHECK(launched.variables == Strings{"RESOURCE_NAME"});
}

TEST_CASE("a program that is reached by another name keeps that name") {
    const TempDir tmp;
    makeLink(tmp / "view", KORVANE_TEST_QT_PROGRAM);
    makeLink(tmp / "korvane-test-qt-program", KORVANE_TEST_QT_PROGRAM);

    makeLink(tmp / "emacs-like", KORVANE_TEST_QT_PROGRAM);
    copyProgram(KORVANE_TEST_QT_PROGRAM, tmp / "emacs-x");
    const auto of = [](const Path& program) { return windowNamingOf(program, program); };

    CHECK_FALSE(of(tmp / "view").byProcessName);
    CHECK_FALSE(of(tmp / "view").variables.empty());
    CHECK(of(tmp / "korvane-test-qt-program").byProcessName);
    CHECK_FALSE(of(tmp / "emacs-x").byProcessName);
}

TEST_CASE("browsers are told the name of their windows by arguments, others are not") {
    using Engine = ambrel::AppEngine;
    using installedProgram::windowNameArguments;

    CHECK(windowNameArguments(Engine::chromium, "org.x") == Strings{"--class=org.x"});
    CHECK(windowNameArguments(Engine::firefox, "org.x") ==
          Strings{"--class", "org.x", "--name", "org.x"});
    for (const auto engine : {Engine::electron, Engine::eclipse, Engine::other}) {
        CHECK(windowNameArguments(engine, "org.x").empty());
    }
}

} // namespace korvane::test
