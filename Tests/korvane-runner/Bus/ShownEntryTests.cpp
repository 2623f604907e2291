#include "korvane-runner/Bus/ShownEntry.h"

#include "Support/Expect.h"

#include <string>

using korvane::runner::bus::isShownApplication;

TEST_CASE("an application is shown unless its entry says otherwise") {
    const std::string entry = "[Desktop Entry]\nType=Application\nName=Maps\n";
    const struct {
        std::string text;
        bool isShown;
    } cases[] = {
        {entry, true},
        {"# a comment\n\n" + entry, true},
        {"[Desktop Entry]\r\nType = Application\r\n", true},
        {entry + "NoDisplay=false\n", true},
        {entry + "[Desktop Action New]\nNoDisplay=true\n", true},
        {entry + "NoDisplay=true", false},
        {entry + "NoDisplay = true\n", false},
        {entry + "Hidden=true\n", false},
        {"[Desktop Entry]\nType=Link\n", false},
        {"[Desktop Action New]\nType=Application\n", false},
        {"Type=Application\n", false},
        {"", false},
        {"=\n[\n]\n", false},
    };
    for (const auto& each : cases) {
        CAPTURE(each.text);
        CHECK(isShownApplication(each.text) == each.isShown);
    }
}
