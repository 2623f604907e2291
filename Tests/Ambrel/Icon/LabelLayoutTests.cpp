#include "Ambrel/Icon/LabelLayout.h"

#include "Ambrel/Icon/IconComposer.h"

#include <doctest/doctest.h>

using namespace ambrel;
using Position = IconLabel::Position;

namespace {

/// A text whose box at font size 1 is `box`.
BoxAtFontSize growing(const Box& box) {
    return [box](double f) {
        return Box{{box.min.x * f, box.min.y * f}, {box.max.x * f, box.max.y * f}};
    };
}

const Box shortText{{0.05, -0.2}, {1.45, 0.7}};
const Box longText{{0.05, -0.2}, {20.45, 0.7}};

/// The text's box where it is drawn.
Box placed(const Box& box, const LabelLayout& layout) {
    const auto grown = growing(box)(layout.fontSize);
    return {{grown.min.x + layout.shift.x, grown.min.y + layout.shift.y},
            {grown.max.x + layout.shift.x, grown.max.y + layout.shift.y}};
}

} // namespace

TEST_CASE("a text that fits keeps 0.24 of the icon's side as its font size") {
    for (const double size : IconComposer::outputSizes) {
        const auto layout = layOutLabel(growing(shortText), Position::bottom, size);
        REQUIRE(layout.has_value());
        CHECK(layout->fontSize == doctest::Approx(0.24 * size));
    }
}

TEST_CASE("a text that is too wide is shrunk to 0.86 of the icon's side, whatever its place") {
    for (const auto position : {Position::bottom, Position::center, Position::top}) {
        for (const double size : IconComposer::outputSizes) {
            const auto layout = layOutLabel(growing(longText), position, size);
            REQUIRE(layout.has_value());
            const auto box = placed(longText, *layout);
            CHECK(box.min.x == doctest::Approx(0.07 * size));
            CHECK(box.max.x == doctest::Approx(0.93 * size));
            CHECK(layout->fontSize < 0.24 * size);
        }
    }
}

TEST_CASE("a text as wide as the limit is not shrunk") {
    const Box box{{0, 0}, {0.86 / 0.24, 0.7}};
    const auto layout = layOutLabel(growing(box), Position::top, 100);
    REQUIRE(layout.has_value());
    CHECK(layout->fontSize == doctest::Approx(24));
}

TEST_CASE("the box of the text stands in the middle and keeps its distance from the edges") {
    for (const auto& text : {shortText, longText}) {
        for (const double size : IconComposer::outputSizes) {
            const auto boxAt = [&](Position position) {
                return placed(text, *layOutLabel(growing(text), position, size));
            };
            CHECK(boxAt(Position::bottom).min.y == doctest::Approx(0.08 * size));
            CHECK(boxAt(Position::center).midY() == doctest::Approx(0.5 * size));
            CHECK(boxAt(Position::top).max.y == doctest::Approx(0.92 * size));
            CHECK(boxAt(Position::bottom).midX() == doctest::Approx(0.5 * size));
            CHECK(boxAt(Position::center).midX() == doctest::Approx(0.5 * size));
            CHECK(boxAt(Position::top).midX() == doctest::Approx(0.5 * size));
        }
    }
}

TEST_CASE("the pen follows the final font size and the shadow follows the icon's side") {
    for (const auto& text : {shortText, longText}) {
        const auto layout = layOutLabel(growing(text), Position::center, 512);
        REQUIRE(layout.has_value());
        CHECK(layout->outlineWidth / 2 == doctest::Approx(0.09 * layout->fontSize));
        CHECK(layout->shadowDrop == doctest::Approx(0.004 * 512));
        CHECK(layout->shadowBlur == doctest::Approx(0.012 * 512));
    }
}

TEST_CASE("a text is shrunk once, even where its shapes do not shrink with the font size") {
    int calls = 0;
    const auto stubborn = [&](double) {
        ++calls;
        return Box{{0, 0}, {200, 10}};
    };
    const auto layout = layOutLabel(stubborn, Position::center, 100);
    REQUIRE(layout.has_value());
    CHECK(calls == 2);
    CHECK(layout->fontSize == doctest::Approx(24 * 86.0 / 200));
    CHECK(layout->shift.x == doctest::Approx(-50));
}

TEST_CASE("a text without width or height is not drawn") {
    for (const auto& box : {Box{}, Box{{0, 0}, {1, 0}}, Box{{0, 0}, {0, 1}}, Box{{3, 3}, {3, 3}}}) {
        CHECK_FALSE(layOutLabel(growing(box), Position::top, 64).has_value());
    }
}
