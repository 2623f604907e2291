#include "korvane-runner/Bus/ShownApplications.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

const std::string shown = "[Desktop Entry]\nType=Application\n";
const std::string hidden = shown + "NoDisplay=true\n";

} // namespace

TEST_CASE("a name is that of an application where the first entry of it is shown") {
    const std::map<std::string, std::string> files{
        {"/one/applications/org.a.desktop", shown},  {"/two/applications/org.a.desktop", hidden},
        {"/one/applications/org.b.desktop", hidden}, {"/two/applications/org.b.desktop", shown},
        {"/two/applications/org.c.desktop", shown},  {"/three/applications/org.d.desktop", shown},
    };
    ShownApplications applications({"/one", "/two"}, [&](const ambrel::Path& file) {
        const auto found = files.find(file);
        return found == files.end() ? std::nullopt : std::optional(found->second);
    });

    CHECK(applications.contains("org.a"));
    CHECK_FALSE(applications.contains("org.b"));
    CHECK(applications.contains("org.c"));
    CHECK_FALSE(applications.contains("org.d"));
    CHECK_FALSE(applications.contains("org.e"));
}

TEST_CASE("answers are remembered, but not any number of them") {
    int reads = 0;
    ShownApplications applications({"/one"}, [&](const ambrel::Path&) {
        ++reads;
        return std::optional(shown);
    });
    CHECK(applications.contains("org.a"));
    CHECK(applications.contains("org.a"));
    CHECK(reads == 1);

    for (std::size_t i = 0; i < ShownApplications::mostRemembered; ++i) {
        CHECK(applications.contains("org.a" + std::to_string(i)));
    }
    reads = 0;
    CHECK(applications.contains("org.a")); // it had to go
    CHECK(reads == 1);
}
