#include "Ambrel/Instance/OwnNames.h"

#include "Support/Builders.h"
#include "Support/Expect.h"

namespace korvane::test {

using namespace ambrel;

TEST_CASE("applications alone want names of their own, unless they are to share the user's") {
    auto config = smallestConfig();
    for (const auto kind :
         {ShortcutKind::app, ShortcutKind::web, ShortcutKind::file, ShortcutKind::command}) {
        config.kind = kind;
        CHECK(wantsOwnNames(config) == (kind == ShortcutKind::app));
    }
    CHECK(!wantsOwnNames(applicationWithOverride("KorvaneSharedBus", "true")));
    CHECK(wantsOwnNames(applicationWithOverride("KorvaneSharedBus", "false")));
}

TEST_CASE("an application whose configuration names a bus keeps to that") {
    auto config = applicationWithOverride("Other", "true");
    config.environment["DBUS_SESSION_BUS_ADDRESS"] = "";

    CHECK(!wantsOwnNames(config));
}

} // namespace korvane::test
