#include "../Scene.h"

#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Operations/Deletion.h"
#include "Manager/Operations/Leftovers.h"
#include "Support/Faults.h"

#include <cerrno>

namespace korvane::test {

namespace {

using ambrel::UserData;

/// The refusal that `act` ends with when call number `failing` about the scene's files is not
/// permitted; absent where it ends well. `isOver` tells that it makes fewer calls.
template <class Act>
std::optional<Refusal> refusedAt(long failing, const Scene& scene, bool& isOver, const Act& act) {
    std::optional<Refusal> refused;
    faults::arm(failing, {.code = EACCES, .lasting = false, .within = scene.tmp.path()});
    try {
        act();
    } catch (const Refusal& refusal) {
        refused = refusal;
    } catch (const std::exception& error) {
        refused = Refusal(error.what());
    }
    isOver = faults::disarm().failedCall.empty();
    return refused;
}

/// Whether the refusal says of data in `home` that it stays, with what is in the way.
bool isOnData(const std::optional<Refusal>& refusal, const std::string& home) {
    if (!refusal || refusal->kind != Refusal::Kind::dataRemains) return false;
    CHECK(contains(refusal->sentence(), home));
    CHECK(contains(refusal->sentence(), "Permission denied"));
    return true;
}

} // namespace

TEST_CASE("a deletion that fails anywhere leaves an instance that can be deleted again") {
    std::size_t onData = 0;
    bool isOver = false;
    for (long failing = 1; !isOver; ++failing) {
        const Scene scene;
        const auto record = scene.instance();
        writeFile(makeFolder(scene.homeOf() + "/folder") + "/file");
        const auto plan = planDeletion(record, UserData::remove, scene.user);

        const auto refusal = refusedAt(failing, scene, isOver, [&] { perform(plan, scene.user); });

        CAPTURE(failing);
        onData += isOnData(refusal, scene.homeOf());
        if (!refusal) continue;
        REQUIRE(isRealFolder(record.bundleURL));
        perform(planDeletion(record, UserData::remove, scene.user), scene.user);
        CHECK_FALSE(isThere(scene.homeOf()));
        CHECK_FALSE(isThere(record.bundleURL));
        CHECK_FALSE(registration::findEntry(record, scene.user));
    }
    CHECK(onData > 5);
}

TEST_CASE("a leftover home that cannot be removed is told with what is in the way, and left over") {
    std::size_t onData = 0;
    bool isOver = false;
    for (long failing = 1; !isOver; ++failing) {
        const Scene scene;
        writeFile(makeFolder(scene.homeOf() + "/folder") + "/file");
        const auto home = requireLeftover("Work", scene.user, Measure::no);

        const auto refusal =
            refusedAt(failing, scene, isOver, [&] { removeLeftover(home, scene.user); });

        CAPTURE(failing);
        onData += isOnData(refusal, scene.homeOf());
        if (!refusal || !isThere(scene.homeOf())) continue;
        removeLeftover(requireLeftover("Work", scene.user, Measure::no), scene.user);
        CHECK_FALSE(isThere(scene.homeOf()));
    }
    CHECK(onData > 3);
}

} // namespace korvane::test
