#include "Manager/Operations/Deletion.h"

#include "Ambrel/Platform/OwnedFd.h"
#include "Manager/Operations/Scene.h"

#include <fcntl.h>

namespace korvane::test {

TEST_CASE("a link to an instance that cannot be removed is told as such") {
    const Scene scene;
    auto link = scene.instance();
    const ambrel::OwnedFd bundle(::open(link.bundleURL.c_str(), O_PATH | O_CLOEXEC));
    REQUIRE(bundle);
    // The kernel makes this link, and lets nobody remove it, root neither.
    link.bundleURL = "/proc/self/fd/" + std::to_string(bundle.get());
    const auto plan = planDeletion(link, ambrel::UserData::keep, scene.user);
    REQUIRE(plan.isLink);

    const auto refusal = refusalOf(scene, [&] { perform(plan, scene.user); });

    CHECK(refusal.kind == Refusal::Kind::notRemoved);
    CHECK(refusal.subject == link.bundleURL);
}

} // namespace korvane::test
