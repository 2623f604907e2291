#include "korvane-runner/Hosts.h"

#include "Support/Builders.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("the host follows from the kind first and from the status item second") {
    struct Row {
        ShortcutKind kind;
        bool menuBarIcon;
        Host host;
    };
    const std::vector<Row> table{
        {ShortcutKind::app, false, Host::waiting},     {ShortcutKind::app, true, Host::menuBar},
        {ShortcutKind::command, false, Host::waiting}, {ShortcutKind::command, true, Host::menuBar},
        {ShortcutKind::file, false, Host::waiting},    {ShortcutKind::file, true, Host::menuBar},
        {ShortcutKind::web, false, Host::web},         {ShortcutKind::web, true, Host::web},
    };
    for (const auto& row : table) {
        auto config = smallestConfig();
        config.kind = row.kind;
        config.menuBarIcon = row.menuBarIcon;
        CAPTURE(static_cast<int>(row.kind));
        CAPTURE(row.menuBarIcon);
        CHECK(hostFor(config) == row.host);
    }
}
