#include "Ambrel/Platform/Text.h"

#include "Support/Expect.h"

#include <string>
#include <vector>

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("text that is not UTF-8 counts as U+FFFD and changes nothing else") {
    CHECK(text::lowercased("A\xff"
                           "B") == "a\xef\xbf\xbd"
                                   "b");
    CHECK(text::uppercased("a\xff"
                           "b") == "A\xef\xbf\xbd"
                                   "B");
    CHECK(contains(text::trimmingWhitespace(" a\xff "), "a"));
    CHECK(text::lowercased(std::string("A\0B", 3)) == std::string("a\0b", 3));
}

TEST_CASE("the order of names is a strict weak order for hostile names too") {
    const std::vector<std::string> names{"",
                                         "a",
                                         "A",
                                         "\xff",
                                         "\xff\xff",
                                         "b",
                                         "\xc3\xa9",
                                         "e\xcc\x81",
                                         "E",
                                         "\xf0\x9f\x98\x80",
                                         std::string("\0", 1),
                                         std::string("a\0b", 3),
                                         "\xe2\x80\xae",
                                         "10",
                                         "9",
                                         " ",
                                         "-",
                                         "_a"};
    const text::NameOrder order;
    for (const auto& a : names) {
        CHECK_FALSE(order.precedes(a, a));
        for (const auto& b : names) {
            const bool bothWays = order.precedes(a, b) && order.precedes(b, a);
            CHECK_FALSE(bothWays);
            for (const auto& c : names) {
                if (order.precedes(a, b) && order.precedes(b, c)) REQUIRE(order.precedes(a, c));
            }
        }
    }
}
