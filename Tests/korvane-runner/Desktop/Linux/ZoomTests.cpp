#include "korvane-runner/Desktop/Linux/Zoom.h"

#include <doctest/doctest.h>

using namespace korvane::runner;

TEST_CASE("zooming in and out again comes back to the normal size") {
    auto level = zoom::normal;
    for (int i = 0; i < 3; ++i) level = zoom::above(level);
    CHECK(level > zoom::normal);

    for (int i = 0; i < 3; ++i) level = zoom::below(level);

    CHECK(level == zoom::normal);
}

TEST_CASE("a level between two steps goes to the next in either direction") {
    CHECK(zoom::above(1.05) == 1.1);
    CHECK(zoom::below(1.05) == zoom::normal);
}

TEST_CASE("zooming ends at the largest and at the smallest step") {
    auto level = zoom::normal;
    for (int i = 0; i < 100; ++i) level = zoom::above(level);
    CHECK(level == 3.0);

    for (int i = 0; i < 100; ++i) level = zoom::below(level);
    CHECK(level == 0.3);
}
