#include "Ambrel/Instance/DesktopId.h"

#include "Support/Expect.h"

#include <algorithm>

namespace korvane::test {

namespace {

const std::string derivedStart = "app.korvane.instance.x";

/// Whether it is the name that is made of an identifier which can be none itself.
bool isDerived(const std::string& id) {
    constexpr std::size_t digits = 16;
    return beginsWith(id, derivedStart) && id.size() == derivedStart.size() + digits &&
           id.find_first_not_of("0123456789abcdef", derivedStart.size()) == std::string::npos;
}

std::string ofLength(std::size_t length) { return "a." + std::string(length - 2, 'b'); }

} // namespace

TEST_CASE("an identifier that can be the name of a desktop entry is the desktop id") {
    for (const auto& id : Strings{"app.korvane.instance.work", "a.b", "org.example.Mail-2_x",
                                  "_a.-b", "a.--a", "A.B.C.D", ofLength(200)}) {
        CAPTURE(id);
        CHECK(ambrel::desktopId(id) == id);
    }
}

TEST_CASE("any other identifier gives a made name of its own") {
    Strings made;
    for (const auto& id :
         Strings{"", "one", "--a", "app.korvane.instance.2fast", "2.a", ".a", "a.", "a..b", "a.b ",
                 "app.korvane.instance.büro", "a.b/c", "a.b\nc", "a.\xff", "a.$b", ofLength(201)}) {
        CAPTURE(id);
        made.push_back(ambrel::desktopId(id));
        CHECK(isDerived(made.back()));
        CHECK(ambrel::desktopId(made.back()) == made.back());
    }
    std::sort(made.begin(), made.end());
    CHECK(std::adjacent_find(made.begin(), made.end()) == made.end());
}

TEST_CASE("the made name stays the same for ever") {
    // Its entry, icons and windows are found by it. FNV-1a of "" and "a" as its authors print them.
    CHECK(ambrel::desktopId("") == derivedStart + "cbf29ce484222325");
    CHECK(ambrel::desktopId("a") == derivedStart + "af63dc4c8601ec8c");
}

} // namespace korvane::test
