#include "Manager/Operations/Editing.h"

#include "Manager/Operations/Scene.h"
#include "Manager/Programs/ProgramProfile.h"

namespace korvane::test {

TEST_CASE("what keeps an instance apart is worked out only when its start changes") {
    Scene scene;
    const auto asked = scene.tmp / "asked";
    writeScript(scene.tmp / "bin/dpkg-query", ": >'" + asked + "'");
    scene.environment["PATH"] = scene.tmp / "bin";
    ProgramProfile profile;
    profile.profile.bundleId = "org.example.mail";
    writeFile(ownProfileFile("org.example.mail", scene.user), profile.encodedJSON());
    const auto record = scene.make(scene.appRequest()).record;
    REQUIRE(isThere(asked));
    ambrel::fileSystem::removeItem(asked);
    auto wanted = record.config;

    wanted.shareUserFolders = false;
    const auto edited = change(record, wanted, scene.user, scene.environment);
    CHECK_FALSE(isThere(asked));
    wanted.extraArgs = {"--other"};
    change(edited.record, wanted, scene.user, scene.environment);

    CHECK(isThere(asked));
}

} // namespace korvane::test
