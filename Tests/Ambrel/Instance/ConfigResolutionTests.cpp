#include "Ambrel/Instance/InstanceConfig.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("the target's location is its path as it stands, a tilde included") {
    auto config = smallestConfig();
    config.targetAppPath = "~/Applications/X.app";
    CHECK(config.targetAppURL() == "~/Applications/X.app");
}

TEST_CASE("an instance home of tilde slash Instances resolves below the user's home") {
    const TempDir tmp;
    const UserHome user(tmp);

    CHECK(smallestConfig().resolvedHome(user.places()) == user / "Instances/Mail");
}

TEST_CASE("the placeholder alone becomes the resolved home and in upper case stays as it is") {
    const TempDir tmp;
    const UserHome user(tmp);
    auto config = smallestConfig();
    config.extraArgs = {"{{instanceHome}}",
                        "{{INSTANCEHOME}}",
                        "",
                        "{{instanceHome}",
                        "{instanceHome}}",
                        "{{ instanceHome }}",
                        "--user-data-dir={{instanceHome}}/Data"};
    config.commandArgs = config.extraArgs;
    const auto home = user / "Instances/Mail";
    const Strings expected{home,
                           "{{INSTANCEHOME}}",
                           "",
                           "{{instanceHome}",
                           "{instanceHome}}",
                           "{{ instanceHome }}",
                           "--user-data-dir=" + home + "/Data"};

    CHECK(config.resolvedArgs(user.places()) == expected);
    CHECK(config.resolvedCommandArgs(user.places()) == expected);
    CHECK(smallestConfig().resolvedArgs(user.places()).empty());
    CHECK(smallestConfig().resolvedCommandArgs(user.places()).empty());
}

TEST_CASE("an argument that begins with a tilde is passed on unchanged") {
    auto config = smallestConfig();
    config.extraArgs = config.commandArgs = {"~/x", "~", "--dir=~/y"};

    CHECK(config.resolvedArgs(nobody()) == config.extraArgs);
    CHECK(config.resolvedCommandArgs(nobody()) == config.commandArgs);
}

TEST_CASE("an environment value that holds the placeholder twice gets both replaced") {
    auto config = smallestConfig();
    config.instanceHome = "/h";
    config.environment = {{"PATHS", "{{instanceHome}}/a:{{instanceHome}}/b"}};

    CHECK(config.resolvedEnvironment(nobody()) == StringMap{{"PATHS", "/h/a:/h/b"}});
}

TEST_CASE("an environment key that contains the placeholder keeps it") {
    auto config = smallestConfig();
    config.instanceHome = "/h";
    config.environment = {{"X{{instanceHome}}", "{{instanceHome}}"}};

    CHECK(config.resolvedEnvironment(nobody()) == StringMap{{"X{{instanceHome}}", "/h"}});
}

TEST_CASE("a home that itself contains the placeholder is put in once and not searched again") {
    auto config = smallestConfig();
    config.instanceHome = "/{{instanceHome}}/x";
    config.extraArgs = {"{{instanceHome}}", "{{{{instanceHome}}}}"};

    CHECK(config.resolvedHome(nobody()) == "/{{instanceHome}}/x");
    CHECK(config.resolvedArgs(nobody()) ==
          Strings{"/{{instanceHome}}/x", "{{/{{instanceHome}}/x}}"});
}

TEST_CASE("an empty home resolves to nothing and so does every placeholder") {
    auto config = smallestConfig();
    config.instanceHome = "";
    config.extraArgs = {"a{{instanceHome}}b"};

    CHECK(config.resolvedHome(nobody()).empty());
    CHECK(config.resolvedArgs(nobody()) == Strings{"ab"});
}

TEST_CASE("a relative home and dots in it are kept") {
    auto config = smallestConfig();
    for (const auto* home : {"rel/x", "/a/../b", "./~", "/a//b/"}) {
        config.instanceHome = home;
        CHECK(config.resolvedHome(nobody()) == home);
    }
}
