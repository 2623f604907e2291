#include "Ambrel/Platform/UserPaths.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <pwd.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// What the helper says under a user id that no user database knows.
std::string homeOfUnknownUser(const std::vector<std::string>& environment) {
    std::vector<std::string> command{"unshare", "-U", "--map-user=54321", "env", "-u",
                                     "HOME",    "-u", "CFFIXED_USER_HOME"};
    command.insert(command.end(), environment.begin(), environment.end());
    command.insert(command.end(), {KORVANE_TEST_HELPER, "home"});
    const auto result = run(command);
    CAPTURE(result.error);
    REQUIRE(result.status == 0);
    return result.output;
}

} // namespace

TEST_CASE("HOME alone does not move the user's home") {
    const TempDir tmp;
    const ScopedVariable home("HOME", tmp / "elsewhere");
    const ScopedVariable fixed("CFFIXED_USER_HOME", std::nullopt);

    CHECK(userHome() == ::getpwuid(::getuid())->pw_dir);
    CHECK(expandingTilde("~") == ::getpwuid(::getuid())->pw_dir);
}

TEST_CASE("CFFIXED_USER_HOME moves the user's home") {
    const TempDir tmp;
    const UserHome user(tmp);

    CHECK(userHome() == user.path());
    CHECK(expandingTilde("~") == user.path());
    CHECK(expandingTilde("~/x") == user / "x");
}

TEST_CASE("an empty CFFIXED_USER_HOME counts as unset") {
    const ScopedVariable fixed("CFFIXED_USER_HOME", "");

    CHECK(userHome() == ::getpwuid(::getuid())->pw_dir);
}

TEST_CASE("HOME is the home of a user that the user database does not know") {
    CHECK(homeOfUnknownUser({"HOME=/some/where"}) == "/some/where\n");
    CHECK(homeOfUnknownUser({}) == "\n");
    CHECK(homeOfUnknownUser({"HOME=/a", "CFFIXED_USER_HOME=/b"}) == "/b\n");
    CHECK(homeOfUnknownUser({"HOME=/a", "CFFIXED_USER_HOME="}) == "/a\n");
}

TEST_CASE("a tilde and a user's name become that user's home, whatever CFFIXED_USER_HOME says") {
    const TempDir tmp;
    const UserHome user(tmp);
    const std::string root = ::getpwnam("root")->pw_dir;

    CHECK(expandingTilde("~root") == root);
    CHECK(expandingTilde("~root/x") == root + "/x");
}

TEST_CASE("a tilde with a slash is the home itself") {
    const TempDir tmp;
    const UserHome user(tmp);

    CHECK(expandingTilde("~/") == user.path());
}

TEST_CASE("an unknown user's name and a tilde elsewhere leave the path as it is") {
    const TempDir tmp;
    const UserHome user(tmp);
    for (const std::string& path :
         {std::string("~nosuchuser/x"), std::string("~nosuchuser"), std::string("/~"),
          std::string("a~"), std::string("a/~/b"), std::string(" ~"), std::string("./~"),
          std::string(), std::string("/a/../b"), std::string("rel//x/"),
          "~" + std::string(100000, 'u'), std::string("~ro\0ot/x", 8), std::string("~\xff/x")}) {
        CAPTURE(path.substr(0, 40));
        CHECK(expandingTilde(path) == path);
    }
}

TEST_CASE("nothing else of a path that begins with a tilde is normalised") {
    const TempDir tmp;
    const UserHome user(tmp);

    CHECK(expandingTilde("~/a/../b/.") == user / "a/../b/.");
    CHECK(expandingTilde("~/~/x") == user / "~/x");
    CHECK(expandingTilde("~/\xff\n") == user / "\xff\n");
}
