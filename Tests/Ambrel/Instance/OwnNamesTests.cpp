#include "Ambrel/Instance/OwnNames.h"

#include "Support/Builders.h"
#include "Support/Expect.h"

namespace korvane::test {

using namespace ambrel;

namespace {

InstanceConfig applicationWith(const std::string& key, const std::string& value) {
    auto config = smallestConfig();
    config.kind = ShortcutKind::app;
    config.infoPlistOverrides[key] = value;
    return config;
}

} // namespace

TEST_CASE("applications alone want names of their own, unless they are to share the user's") {
    auto config = smallestConfig();
    for (const auto kind :
         {ShortcutKind::app, ShortcutKind::web, ShortcutKind::file, ShortcutKind::command}) {
        config.kind = kind;
        CHECK(wantsOwnNames(config) == (kind == ShortcutKind::app));
    }
    CHECK(!wantsOwnNames(applicationWith("KorvaneSharedBus", "true")));
    CHECK(wantsOwnNames(applicationWith("KorvaneSharedBus", "false")));
}

TEST_CASE("an application whose configuration names a bus keeps to that") {
    auto config = applicationWith("Other", "true");
    config.environment["DBUS_SESSION_BUS_ADDRESS"] = "";

    CHECK(!wantsOwnNames(config));
}

} // namespace korvane::test
