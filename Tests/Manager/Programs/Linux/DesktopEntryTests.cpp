#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Programs/Linux/AdoptedBundle.h"
#include "Manager/Programs/Linux/DesktopEntry.h"
#include "Manager/Programs/Linux/ProgramFile.h"
#include "Support/Builders.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/TempDir.h"

namespace korvane::test {

namespace {

DesktopEntry entryWith(const std::string& lines) {
    return DesktopEntry::parse("[Desktop Entry]\n" + lines + "\n");
}

ProgramCall callOf(const std::string& exec) {
    return entryWith("Name=My App\nIcon=my-icon\nExec=" + exec).program("/e/my.desktop");
}

} // namespace

TEST_CASE("only keys of the main group without a language count") {
    const auto entry = DesktopEntry::parse("# comment\n\n[Desktop Entry]\nName = Mail \n"
                                           "Name[de]=Post\n#Name=x\nbroken line\nName=Second\n"
                                           "[Desktop Action new]\nName=New\nExec=other\n");

    CHECK(entry.string("Name") == "Mail");
    CHECK_FALSE(entry.string("Exec"));
}

TEST_CASE("line ends of DOS are no part of a value") {
    CHECK(DesktopEntry::parse("[Desktop Entry]\r\nName=Mail\r\n").string("Name") == "Mail");
}

TEST_CASE("escapes of a string are resolved") {
    CHECK(entryWith("Name=a\\sb\\tc\\\\d\\qe\\").string("Name") == "a b\tc\\d\\qe\\");
}

TEST_CASE("what is no desktop entry is refused") {
    for (const std::string text :
         {"", "Name=x\n", "[Other]\nName=x\n", "[Desktop Entry]\nName=\xff\n"}) {
        CAPTURE(text);
        expectThrow<DesktopEntryError>([&] { DesktopEntry::parse(text); });
    }
}

TEST_CASE("Exec is split by its quoting rules and field codes are replaced") {
    struct Row {
        std::string exec;
        std::string program;
        Strings before;
        Strings behind;
    };
    const Row rows[] = {
        {"prog", "prog", {}, {}},
        {"prog %U", "prog", {}, {}},
        {"/usr/bin/prog  --a   b %f", "/usr/bin/prog", {"--a", "b"}, {}},
        {"prog %F --last", "prog", {}, {"--last"}},
        {"prog -- %u", "prog", {}, {"--"}},
        {R"("/opt/my prog/bin" "two words" x)", "/opt/my prog/bin", {"two words", "x"}, {}},
        {R"(prog "a\\"b" "\\$x" "\\`" "c\\\\\\\\d")", "prog", {"a\"b", "$x", "`", "c\\\\d"}, {}},
        {R"(prog "it's" "")", "prog", {"it's", ""}, {}},
        {"prog 100%% --c=%c %k", "prog", {"100%", "--c=My App", "/e/my.desktop"}, {}},
        {"prog %i", "prog", {"--icon", "my-icon"}, {}},
        {R"(prog "%f" "%%")", "prog", {}, {"%"}},
        {R"(prog "100%% %c")", "prog", {"100% %c"}, {}},
        {"prog --file=%f", "prog", {}, {}},
        {"prog a%nb", "prog", {"ab"}, {}},
        {"env LANG=C prog", "env", {"LANG=C", "prog"}, {}},
    };
    for (const auto& row : rows) {
        CAPTURE(row.exec);
        const auto call = callOf(row.exec);
        CHECK(call.program == row.program);
        CHECK(call.before == row.before);
        CHECK(call.behind == row.behind);
    }
}

TEST_CASE("an Exec that leaves doubt is refused") {
    for (const std::string exec :
         {"", "   ", "prog 'a b'", "prog $HOME", "prog `x`", "prog \"open", "prog %x", "prog a%",
          "A=b prog", "prog %f %u", "\"\" x", "prog; other", "prog > file"}) {
        CAPTURE(exec);
        expectThrow<DesktopEntryError>([&] { callOf(exec); });
    }
    expectThrow<DesktopEntryError>([] { entryWith("Name=x").program("/e"); });
}

TEST_CASE("the launcher gives the program exactly the entry's arguments and then its own") {
    Adoption adoption;
    adoption.call = {
        "/usr/bin/printf", {"<%s>\n", "it's", "$(x) `y` \"z\" \\", "two\nlines", ""}, {"--last"}};

    const auto done = run({"/bin/sh", "-c", launcherScript(adoption), "sh", "-a", "b c"});

    CHECK(done.output == "<it's>\n<$(x) `y` \"z\" \\>\n<two\nlines>\n<>\n<-a>\n<b c>\n<--last>\n");
}

TEST_CASE("the launcher of a naming shell starts the program by the name in the variable") {
    const TempDir tmp;
    const auto shown = "printf '<%s>' \"$0\" \"$@\"; echo \"$A-$B\"; env | grep -c KORVANE_PROCESS";
    Adoption adoption;
    adoption.call = {"/usr/bin/env", {"A=it's", "B=2", "/bin/sh", "-c", shown}, {}};
    adoption.program = "/bin/sh";
    adoption.namingShell = "/bin/bash";
    const auto launcher = writeFile(tmp / "launcher", launcherScript(adoption));
    ambrel::fileSystem::setPermissions(launcher, 0755);
    const auto start = [&](const std::string& name) {
        return run({"/usr/bin/env", name, launcher, "one two"}).output;
    };

    // What a shell tells as its own name is its argv[0] where "-c" has no word behind it.
    CHECK(run({launcher}).output == "</bin/sh>it's-2\n0\n");
    CHECK(run({"/usr/bin/env", "KORVANE_PROCESS_NAME=app.work", launcher}).output ==
          "<app.work>it's-2\n0\n");
    CHECK(start("KORVANE_PROCESS_NAME=app.work") == "<one two>it's-2\n0\n");
    CHECK(isNamingLauncher(launcher));
    CHECK_FALSE(isNamingLauncher("/bin/sh"));
}

TEST_CASE("a Java program is told by its script, its archive and its links") {
    struct Row {
        std::string text;
        bool isJava;
    };
    const Row rows[] = {
        {". /usr/lib/java-wrappers/java-wrappers.sh\nrun_java org.example.Main", true},
        {"exec java -jar /usr/share/tool.jar", true},
        {"\"$JAVA_HOME/bin/java\" -cp x Main", true},
        {"# needs java -jar\nexec python3 main.py", false},
        {"exec node javascript.js", false},
    };
    const TempDir tmp;
    for (const auto& row : rows) {
        CAPTURE(row.text);
        CHECK(isJavaProgram(writeScript(tmp / "tool", row.text)) == row.isJava);
    }
    makeLink(tmp / "link", writeFile(tmp / "share/tool.jar"));
    makeLink(tmp / "machine", writeScript(tmp / "jvm/bin/java", "true"));
    copyProgram("/bin/true", tmp / "own/bin/app");
    CHECK_FALSE(isJavaProgram(tmp / "own/bin/app"));
    writeFile(tmp / "own/lib/runtime/lib/server/libjvm.so");

    CHECK(isJavaProgram(tmp / "link"));
    CHECK(isJavaProgram(tmp / "machine"));
    CHECK(isJavaProgram(tmp / "own/bin/app"));
    CHECK_FALSE(isJavaProgram("/nothing/here"));
}

} // namespace korvane::test
