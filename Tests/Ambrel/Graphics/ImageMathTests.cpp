#include "Ambrel/Graphics/Canvas.h"
#include "Ambrel/Graphics/Outline.h"
#include "Ambrel/Graphics/Scaling.h"
#include "Support/Pictures.h"

#include <doctest/doctest.h>

#include <cmath>
#include <numeric>

using namespace ambrel;
using namespace korvane::test;

namespace {

Coverage square(int left, int top, int side, std::uint8_t value) {
    return {left, top, side, side,
            std::vector<std::uint8_t>(
                static_cast<std::size_t>(side) * static_cast<std::size_t>(side), value)};
}

int at(const Coverage& coverage, int x, int y) {
    const auto index = (y - coverage.top) * coverage.width + x - coverage.left;
    return coverage.pixels.at(static_cast<std::size_t>(index));
}

} // namespace

TEST_CASE("the box of an outline is that of its curves, not of their control points") {
    Outline outline;
    outline.moveTo({0, 0});
    outline.curveTo({0, 4}, {3, 4}, {3, 0}); // rises to three quarters of its control points
    outline.close();
    CHECK(outline.boundingBox() == Box{{0, 0}, {3, 3}});

    Outline parabola;
    parabola.moveTo({0, 0});
    parabola.parabolaTo({5, -8}, {10, 0});
    parabola.close();
    const auto box = parabola.boundingBox();
    CHECK(box.min.y == doctest::Approx(-4));
    CHECK(box.max == Point{10, 0});

    Outline point;
    point.moveTo({7, 7});
    CHECK(point.boundingBox() == Box{});
    CHECK(Outline().boundingBox() == Box{});
}

TEST_CASE("outlines are moved, grown and joined") {
    Outline one;
    one.moveTo({1, 1});
    one.lineTo({2, 3});
    one.close();
    auto both = one.movedBy({10, 0});
    both.add(one, {0, 5});
    CHECK(both.boundingBox() == Box{{1, 1}, {12, 8}});
    CHECK(one.scaledBy(2).boundingBox() == Box{{2, 2}, {4, 6}});
}

TEST_CASE("a blurred point is a Gauss curve in all directions and keeps its weight") {
    const double sigma = 3;
    const auto blur = blurred(square(50, 60, 9, 255), sigma);
    const auto edge = [&](double from, double to) { // share of a Gauss curve between two points
        const double scale = 1 / (sigma * std::sqrt(2.0));
        return (std::erf(to * scale) - std::erf(from * scale)) / 2;
    };
    for (int y = 50; y <= 78; y += 4) {
        for (int x = 40; x <= 68; x += 4) {
            CAPTURE(x);
            CAPTURE(y);
            // The square reaches from 50 to 59 and from 60 to 69; looked at in the pixel's middle.
            const double expected =
                255 * edge(50 - x - 0.5, 59 - x - 0.5) * edge(60 - y - 0.5, 69 - y - 0.5);
            CHECK(std::abs(at(blur, x, y) - expected) < 2);
        }
    }
    const double weight = std::accumulate(blur.pixels.begin(), blur.pixels.end(), 0.0);
    CHECK(weight == doctest::Approx(81 * 255).epsilon(0.005));
}

TEST_CASE("a blur much narrower than a pixel changes nothing") {
    const auto sharp = square(3, 4, 5, 200);
    const auto blur = blurred(sharp, 0.05);
    for (int y = 4; y < 9; ++y) {
        for (int x = 3; x < 8; ++x) CHECK(at(blur, x, y) == 200);
    }
    CHECK(blurred({}, 3).isEmpty());
}

TEST_CASE("colours are painted over straight pixels by their shares") {
    auto image = filledPicture(4, 4, {0, 0, 255, 255});
    paint(image, square(1, 1, 2, 128), {1, 0, 0, 0.5});
    const int share = 64; // a quarter
    CHECK(isNear(pixelAt(image, 1, 1), {share, 0, 255 - share, 255}, 1));
    CHECK(pixelAt(image, 0, 0) == blue);

    auto empty = filledPicture(4, 4, clear);
    paint(empty, square(0, 0, 4, 255), {0, 1, 0, 0.5});
    CHECK(isNear(pixelAt(empty, 2, 2), {0, 255, 0, 128}, 1));

    auto half = filledPicture(1, 1, {255, 0, 0, 128});
    paint(half, square(0, 0, 1, 255), {0, 0, 1, 0.5});
    // Two thirds of what is seen is the new half, one third the half of what was there.
    CHECK(isNear(pixelAt(half, 0, 0), {85, 0, 170, 192}, 1));
}

TEST_CASE("what is painted outside the image is left out") {
    for (const auto& [left, top] : {std::pair{-3, -3}, {3, 3}, {-3, 3}, {10, 10}, {-10, 0}}) {
        auto image = filledPicture(4, 4, white);
        paint(image, square(left, top, 4, 255), {0, 0, 0, 1});
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                const bool inside = x >= left && x < left + 4 && y >= top && y < top + 4;
                CHECK(pixelAt(image, static_cast<std::uint32_t>(x),
                              static_cast<std::uint32_t>(y)) == (inside ? black : white));
            }
        }
    }
}

TEST_CASE("a smaller picture is made of the means of the areas") {
    const auto source = picture(6, 4, [](auto x, auto y) {
        const auto value = static_cast<std::uint8_t>(x * 40 + y);
        return Pixel{value, value, value, 255};
    });
    Scaler scaler(source);

    const auto half = scaler.scaledTo(3, 2);
    CHECK(pixelAt(half, 0, 0)[0] == 21); // (0 + 40 + 1 + 41) / 4 rounded up
    const auto uneven = scaler.scaledTo(4, 4);
    // A column and a half each: two thirds of the first, a third of the second.
    CHECK(pixelAt(uneven, 0, 0)[0] == 13);
    CHECK(pixelAt(uneven, 3, 0)[0] == 187);
}

TEST_CASE("a size gives the same whether or not larger ones came before it") {
    const auto source = picture(640, 480, [](auto x, auto y) {
        return Pixel{static_cast<std::uint8_t>(x * y), static_cast<std::uint8_t>(x ^ y),
                     static_cast<std::uint8_t>(x + 3 * y), static_cast<std::uint8_t>(y)};
    });
    for (const std::uint32_t size : {512U, 256U, 128U, 64U, 32U, 16U}) {
        Scaler fresh(source);
        const auto alone = fresh.scaledTo(size, size);
        Scaler used(source);
        for (std::uint32_t larger = 1024; larger > size; larger /= 2) used.scaledTo(larger, larger);
        const auto after = used.scaledTo(size, size);
        CAPTURE(size);
        int difference = 0;
        for (std::size_t i = 0; i < alone.pixels.size(); ++i) {
            if (alone.pixels[i - i % 4 + 3] < 8) continue; // too faint for a colour
            difference = std::max(difference, std::abs(alone.pixels[i] - after.pixels[i]));
        }
        CHECK(difference <= 1);
    }
}

TEST_CASE("a larger picture is smooth, keeps flat areas and does not overshoot its range") {
    const auto source = picture(16, 16, [](auto x, auto) { return x < 8 ? black : white; });
    Scaler scaler(source);

    const auto large = scaler.scaledTo(1024, 1024);

    CHECK(pixelAt(large, 0, 0) == black);
    CHECK(pixelAt(large, 1023, 1023) == white);
    int steps = 0;
    for (std::uint32_t x = 1; x < 1024; ++x) {
        const int step = pixelAt(large, x, 500)[0] - pixelAt(large, x - 1, 500)[0];
        CHECK(step < 10); // no pixel of the source is seen as a square
        if (step > 0) ++steps;
    }
    CHECK(steps > 40);
    for (std::size_t i = 3; i < large.pixels.size(); i += 4096) CHECK(large.pixels[i] == 255);
}

TEST_CASE("a picture of one pixel fills any size") {
    const auto source = filledPicture(1, 1, {10, 20, 30, 255});
    Scaler scaler(source);
    CHECK(scaler.scaledTo(17, 5) == filledPicture(17, 5, {10, 20, 30, 255}));
}
