#include "Ambrel/Instance/InstanceConfig.h"

#include <doctest/doctest.h>

using namespace ambrel;

TEST_CASE("a label is visible unless its text is empty or holds blanks alone") {
    const auto isVisible = [](const std::string& text) {
        return IconLabel{text, "FF0000", IconLabel::Position::bottom}.isVisible();
    };

    CHECK(isVisible("Work"));
    CHECK(isVisible(" \t1 "));
    CHECK_FALSE(isVisible(""));
    CHECK_FALSE(isVisible(" \t  "));
    CHECK_FALSE(isVisible("\xc2\xa0\xe3\x80\x80")); // blanks of other widths
}
