#include "Ambrel/Platform/UserPlaces.h"

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

    CHECK(UserPlaces::ofThisProcess().home == ::getpwuid(::getuid())->pw_dir);
    CHECK(UserPlaces::ofThisProcess().expandingTilde("~") == ::getpwuid(::getuid())->pw_dir);
}

TEST_CASE("CFFIXED_USER_HOME moves the user's home") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    const auto places = UserPlaces::ofThisProcess();

    CHECK(places.home == user.path());
    CHECK(places.expandingTilde("~") == user.path());
    CHECK(places.expandingTilde("~/x") == user / "x");
}

TEST_CASE("an empty CFFIXED_USER_HOME counts as unset") {
    const ScopedVariable fixed("CFFIXED_USER_HOME", "");

    CHECK(UserPlaces::ofThisProcess().home == ::getpwuid(::getuid())->pw_dir);
}

TEST_CASE("HOME is the home of a user that the user database does not know") {
    CHECK(homeOfUnknownUser({"HOME=/some/where"}) == "/some/where\n");
    CHECK(homeOfUnknownUser({}) == "\n");
    CHECK(homeOfUnknownUser({"HOME=/a", "CFFIXED_USER_HOME=/b"}) == "/b\n");
    CHECK(homeOfUnknownUser({"HOME=/a", "CFFIXED_USER_HOME="}) == "/a\n");
}

TEST_CASE("a tilde and a user's name become that user's home, whatever CFFIXED_USER_HOME says") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    const auto places = UserPlaces::ofThisProcess();
    const std::string root = ::getpwnam("root")->pw_dir;

    CHECK(places.expandingTilde("~root") == root);
    CHECK(places.expandingTilde("~root/x") == root + "/x");
}

TEST_CASE("a tilde with a slash is the home itself") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    const auto places = UserPlaces::ofThisProcess();

    CHECK(places.expandingTilde("~/") == user.path());
}

TEST_CASE("an unknown user's name and a tilde elsewhere leave the path as it is") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    const auto places = UserPlaces::ofThisProcess();
    for (const std::string& path :
         {std::string("~nosuchuser/x"), std::string("~nosuchuser"), std::string("/~"),
          std::string("a~"), std::string("a/~/b"), std::string(" ~"), std::string("./~"),
          std::string(), std::string("/a/../b"), std::string("rel//x/"),
          "~" + std::string(100000, 'u'), std::string("~ro\0ot/x", 8), std::string("~\xff/x")}) {
        CAPTURE(path.substr(0, 40));
        CHECK(places.expandingTilde(path) == path);
    }
}

TEST_CASE("nothing else of a path that begins with a tilde is normalised") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    const auto places = UserPlaces::ofThisProcess();

    CHECK(places.expandingTilde("~/a/../b/.") == user / "a/../b/.");
    CHECK(places.expandingTilde("~/~/x") == user / "~/x");
    CHECK(places.expandingTilde("~/\xff\n") == user / "\xff\n");
}

TEST_CASE("a home that ends in a slash is known without it") {
    const TempDir tmp;
    const ScopedVariable fixed("CFFIXED_USER_HOME", tmp.path() + "//");

    CHECK(UserPlaces::ofThisProcess() == UserPlaces::usual(tmp.path()));
    CHECK(UserPlaces::ofThisProcess().home == tmp.path());
}

TEST_CASE("the user stays the same when the process's variables change") {
    const TempDir tmp;
    const OwnUserHome user(tmp);
    const auto places = UserPlaces::ofThisProcess();
    const ScopedVariable other("CFFIXED_USER_HOME", tmp / "other");

    CHECK(places.expandingTilde("~/x") == user / "x");
    CHECK(UserPlaces::ofThisProcess().home == tmp / "other");
}

TEST_CASE("a user without a home has no folders below it, and a tilde stays") {
    const auto places = UserPlaces::usual("");

    CHECK(places == UserPlaces{});
    CHECK(places.expandingTilde("~/x") == "~/x");
}

TEST_CASE("settings and data lie where the base directories say, without CFFIXED_USER_HOME") {
    const TempDir tmp;
    const ScopedVariable config("XDG_CONFIG_HOME", tmp.path() + "/config/");
    const ScopedVariable data("XDG_DATA_HOME", "not/absolute");
    {
        const ScopedVariable fixed("CFFIXED_USER_HOME", std::nullopt);
        const auto places = UserPlaces::ofThisProcess();

        CHECK(places.config == tmp / "config");
        CHECK(places.data == UserPlaces::usual(places.home).data);
    }
    const OwnUserHome user(tmp);

    CHECK(UserPlaces::ofThisProcess() == user.places());
}
