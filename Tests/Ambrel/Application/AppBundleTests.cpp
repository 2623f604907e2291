#include "Ambrel/Application/AppBundle.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include "Ambrel/Platform/OwnedFd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// Without a signing tool, as on Linux.
std::optional<AppBundle> readBundle(const Path& app) {
    return AppBundle::read(app, {.codesign = "/nonexistent/codesign"});
}

AppBundle expectBundle(const Path& app) {
    const auto bundle = readBundle(app);
    REQUIRE(bundle.has_value());
    return *bundle;
}

/// Leads this process's standard error into a file until the end of the scope.
class ErrorsInto {
public:
    explicit ErrorsInto(const Path& file) : before_(::dup(STDERR_FILENO)) {
        const auto into = OwnedFd::open("write", file, O_WRONLY | O_CREAT | O_APPEND);
        ::dup2(into.get(), STDERR_FILENO);
    }
    ErrorsInto(const ErrorsInto&) = delete;
    ErrorsInto& operator=(const ErrorsInto&) = delete;
    ~ErrorsInto() { ::dup2(before_.get(), STDERR_FILENO); }

private:
    OwnedFd before_;
};

bool sandboxedBy(const TempDir& tmp, const std::string& script) {
    const auto tool = writeScript(tmp / "codesign", script);
    const auto app = AppBundleBuilder(tmp / "A.app").write();
    return AppBundle::read(app, {.codesign = tool})->sandboxed;
}

} // namespace

TEST_CASE("a folder without Info plist is no bundle and no process is started for it") {
    const TempDir tmp;
    const auto tool = writeScript(tmp / "codesign", "touch \"$0.started\"");
    const auto app = AppBundleBuilder(tmp / "A.app").withoutInfoPlist().write();

    CHECK_FALSE(AppBundle::read(app, {.codesign = tool}).has_value());
    CHECK_FALSE(AppBundle::read(tmp / "missing.app", {.codesign = tool}).has_value());

    CHECK_FALSE(isThere(tmp / "codesign.started"));
}

TEST_CASE("an unreadable Info plist is no bundle and no process is started for it") {
    const TempDir tmp;
    const auto tool = writeScript(tmp / "codesign", "touch \"$0.started\"");
    for (const std::string& bytes :
         {std::string(), std::string("x"), std::string("<plist><array/></plist>"),
          std::string("bplist00"), xmlPlist("<key>a</key><string>\xff</string>")}) {
        const auto app = AppBundleBuilder(tmp / "A.app").infoPlist(bytes).write();
        CAPTURE(bytes);
        CHECK_FALSE(AppBundle::read(app, {.codesign = tool}).has_value());
    }
    makeFolder(tmp / "B.app/Contents/Info.plist");
    CHECK_FALSE(AppBundle::read(tmp / "B.app", {.codesign = tool}).has_value());
    writeFile(tmp / "C.app", "a plain file");
    CHECK_FALSE(AppBundle::read(tmp / "C.app", {.codesign = tool}).has_value());
    CHECK_FALSE(isThere(tmp / "codesign.started"));
}

TEST_CASE("an Info plist that this user may not read is no bundle") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "A.app").identifier("org.example").write();
    giveToOrdinaryUser(tmp.path());
    CHECK(asOrdinaryUser([&] { return std::string(readBundle(app) ? "read" : "absent"); }) ==
          "read");
    setMode(app + "/Contents/Info.plist", 0000);

    CHECK(asOrdinaryUser([&] { return std::string(readBundle(app) ? "read" : "absent"); }) ==
          "absent");
}

TEST_CASE("without identifier and executable both are the bundle's file name") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "My Tool.app").write();

    const auto bundle = expectBundle(app);

    CHECK(bundle.bundleId == "My Tool");
    CHECK(bundle.executableName == "My Tool");
    CHECK(bundle.executableURL() == app + "/Contents/MacOS/My Tool");
}

TEST_CASE("an identifier that is a number falls back to the bundle's file name") {
    const TempDir tmp;
    for (const auto* value : {"<integer>5</integer>", "<true/>", "<array/>", "<dict/>",
                              "<real>1.5</real>", "<data>AA==</data>"}) {
        CAPTURE(value);
        const auto bundle = expectBundle(AppBundleBuilder(tmp / "Foo.app")
                                             .entry("CFBundleIdentifier", value)
                                             .entry("CFBundleExecutable", value)
                                             .write());
        CHECK(bundle.bundleId == "Foo");
        CHECK(bundle.executableName == "Foo");
    }
}

TEST_CASE("the single-instance flag is a Boolean or exactly 0 or 1 and never a string") {
    const TempDir tmp;
    struct Row {
        std::string value;
        bool prohibits;
    };
    const std::vector<Row> table{
        {"<string>YES</string>", false},
        {"<string>true</string>", false},
        {"<string>1</string>", false},
        {"<string></string>", false},
        {"<true/>", true},
        {"<false/>", false},
        {"<integer>1</integer>", true},
        {"<integer>0</integer>", false},
        {"<integer>2</integer>", false},
        {"<integer>-1</integer>", false},
        {"<real>1.0</real>", true},
        {"<real>0.0</real>", false},
        {"<real>0.5</real>", false},
        {"<array><true/></array>", false},
    };
    for (const auto& row : table) {
        CAPTURE(row.value);
        const auto app = AppBundleBuilder(tmp / "A.app")
                             .entry("LSMultipleInstancesProhibited", row.value)
                             .write();
        CHECK(expectBundle(app).prohibitsMultipleInstances == row.prohibits);
    }
    CHECK_FALSE(expectBundle(AppBundleBuilder(tmp / "A.app").write()).prohibitsMultipleInstances);
}

TEST_CASE("entitlements that name the sandbox with the value false count as sandboxed") {
    const TempDir tmp;
    CHECK(sandboxedBy(tmp, "echo '<key>com.apple.security.app-sandbox</key><false/>'"));
}

TEST_CASE("a bundle called Foo bar with a dot loses only its last extension") {
    const TempDir tmp;
    CHECK(expectBundle(AppBundleBuilder(tmp / "Foo.bar.app").write()).bundleId == "Foo.bar");
    CHECK(expectBundle(AppBundleBuilder(tmp / "plain").write()).bundleId == "plain");
    CHECK(expectBundle(AppBundleBuilder(tmp / ".app").write()).bundleId == ".app");
}

TEST_CASE("an executable location is formed even when the executable does not exist") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "A.app")
                         .entry("CFBundleExecutable", "<string>not there</string>")
                         .write();

    CHECK(expectBundle(app).executableURL() == app + "/Contents/MacOS/not there");
}

TEST_CASE("the location of a bundle is kept as given, and a trailing slash changes no name") {
    const TempDir tmp;
    AppBundleBuilder(tmp / "Foo Bar.app").write();

    const auto bundle = expectBundle((tmp / "./Foo Bar.app") + "/");

    CHECK(bundle.url == (tmp / "./Foo Bar.app") + "/");
    CHECK(bundle.bundleId == "Foo Bar");
    CHECK(bundle.executableURL() == (tmp / "./Foo Bar.app") + "/Contents/MacOS/Foo Bar");
}

TEST_CASE("identifier and executable are taken as they are, even when empty or strange") {
    const TempDir tmp;
    const auto bundle = expectBundle(AppBundleBuilder(tmp / "A.app")
                                         .identifier("")
                                         .entry("CFBundleExecutable", "<string>../x y</string>")
                                         .write());

    CHECK(bundle.bundleId.empty());
    CHECK(bundle.executableURL() == tmp / "A.app/Contents/MacOS/../x y");
}

TEST_CASE("a value is fixed when the bundle is read") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "A.app").identifier("first").write();
    const auto bundle = expectBundle(app);

    AppBundleBuilder(app).identifier("second").write();

    CHECK(bundle.bundleId == "first");
    CHECK(expectBundle(app).bundleId == "second");
}

TEST_CASE("the signing tool lies at a fixed path and gets exactly five arguments") {
    CHECK(SystemTools{}.codesign == "/usr/bin/codesign");
    CHECK(SystemTools{}.open == "/usr/bin/open");
    const TempDir tmp;
    const auto tool = writeScript(tmp / "codesign", R"(printf '%s\n' "$#" "$@" > "$0.arguments")");
    const auto app = AppBundleBuilder(tmp / "A b%20\xc3\xa9.app").write();

    REQUIRE(AppBundle::read(app, {.codesign = tool}).has_value());

    CHECK(readFile(tmp / "codesign.arguments") ==
          "5\n-d\n--entitlements\n:-\n--xml\n" + app + "\n");
}

TEST_CASE("the signing tool inherits the environment and the working directory") {
    const TempDir tmp;
    const ScopedVariable variable("KORVANE_TEST_MARK", "seen");
    const WorkingDirectory inside(tmp.path());

    CHECK(sandboxedBy(tmp, R"(test "$KORVANE_TEST_MARK" = seen && test "$PWD" -ef )" +
                               quoted(tmp.path()) + " && echo com.apple.security.app-sandbox"));
}

TEST_CASE("only what the signing tool writes to its output counts, as a plain substring") {
    struct Row {
        std::string script;
        bool sandboxed;
    };
    const std::vector<Row> table{
        {"echo xcom.apple.security.app-sandboxy; exit 1", true},
        {"kill -KILL $$", false},
        {"echo com.apple.security.app-sandbox >&2", false},
        {"echo com.apple.security.APP-SANDBOX", false},
        {"true", false},
        {"printf 'com.apple.security.app-sandbox\\377'", false}, // not UTF-8: nothing was said
        {"printf 'a\\000com.apple.security.app-sandbox'", true},
    };
    for (const auto& row : table) {
        const TempDir tmp;
        CAPTURE(row.script);
        CHECK(sandboxedBy(tmp, row.script) == row.sandboxed);
    }
}

TEST_CASE("complaints of the signing tool never reach the standard error of this process") {
    const TempDir tmp;
    bool sandboxed = false;
    {
        const ErrorsInto file(tmp / "errors");
        sandboxed = sandboxedBy(tmp, "echo complaint >&2; echo com.apple.security.app-sandbox");
    }

    CHECK(sandboxed);
    CHECK(readFile(tmp / "errors").empty());
}

TEST_CASE("what the signing tool writes is read only after it has ended") {
    const TempDir tmp;

    CHECK(sandboxedBy(tmp, quoted(KORVANE_TEST_PROBE) + " unread com.apple.security.app-sandbox"));
}

TEST_CASE("a signing tool that cannot be started means not sandboxed") {
    const TempDir tmp;
    const auto app = AppBundleBuilder(tmp / "A.app").write();
    writeFile(tmp / "plain");
    for (const auto& tool : {tmp / "missing", tmp / "plain", tmp.path()}) {
        CAPTURE(tool);
        CHECK_FALSE(AppBundle::read(app, {.codesign = tool})->sandboxed);
    }
}
