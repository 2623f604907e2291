#include "Ambrel/Formats/IcnsRunLength.h"

#include <doctest/doctest.h>

#include <optional>
#include <random>
#include <vector>

using namespace ambrel::icns;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;

std::string coded(const std::string& bytes) {
    std::string result;
    const auto* first = reinterpret_cast<const std::uint8_t*>(bytes.data());
    appendRunLength(result, {first, bytes.size(), 1});
    return result;
}

struct Decoded {
    std::string plane;
    std::string rest;
};

std::optional<Decoded> decoded(std::string_view bytes, std::size_t count) {
    Bytes plane(count);
    if (!takeRunLength(bytes, {plane.data(), count, 1})) return std::nullopt;
    return Decoded{std::string(plane.begin(), plane.end()), std::string(bytes)};
}

std::string counted(std::size_t count) {
    std::string bytes;
    for (std::size_t i = 0; i < count; ++i) bytes += static_cast<char>(i);
    return bytes;
}

} // namespace

TEST_CASE("runs and bytes of their own have the codes of the format") {
    struct {
        std::string what;
        std::string plane;
        std::string code;
    } const cases[] = {
        {"nothing", "", ""},
        {"one byte", "a", "\0a"s},
        {"two equal bytes are no run", "aa", "\1aa"},
        {"the shortest run", "aaa",
         "\x80"
         "a"},
        {"a run among others", "xaaay",
         "\0x\x80"
         "a\0y"s},
        {"the longest run", std::string(130, 'a'),
         "\xFF"
         "a"},
        {"one more than the longest run", std::string(131, 'a'),
         "\xFF"
         "a\0a"s},
        {"two of the longest runs", std::string(260, 'a'),
         "\xFF"
         "a\xFF"
         "a"},
        {"the longest literal", counted(128), "\x7F" + counted(128)},
        {"one more than the longest literal", counted(129), "\x7F" + counted(128) + "\0\x80"s},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        CHECK(coded(given.plane) == given.code);
        const auto back = decoded(given.code, given.plane.size());
        REQUIRE(back.has_value());
        CHECK(back->plane == given.plane);
        CHECK(back->rest.empty());
    }
}

TEST_CASE("what follows a plane is left for the next one") {
    const auto first = decoded("\x80"
                               "a\0b\0c"sv,
                               4);

    REQUIRE(first.has_value());
    CHECK(first->plane == "aaab");
    CHECK(first->rest == "\0c"sv);
}

TEST_CASE("planes that are not whole are refused") {
    struct {
        std::string what;
        std::string_view code;
        std::size_t count;
    } const cases[] = {
        {"no code at all", ""sv, 1},
        {"a run without its byte", "\x80"sv, 3},
        {"a literal without its bytes",
         "\x02"
         "ab"sv,
         3},
        {"a literal without any byte", "\0"sv, 1},
        {"too few bytes",
         "\x80"
         "a"sv,
         4},
        {"a run beyond the plane",
         "\x80"
         "a"sv,
         2},
        {"the longest run beyond the plane",
         "\xFF"
         "a"sv,
         129},
        {"a literal beyond the plane",
         "\x02"
         "abc"sv,
         2},
        {"a second run beyond the plane",
         "\x80"
         "a\x80"
         "b"sv,
         5},
    };
    for (const auto& given : cases) {
        CAPTURE(given.what);
        CHECK_FALSE(decoded(given.code, given.count).has_value());
    }
}

TEST_CASE("a plane of a picture leaves the other colours alone") {
    Bytes pixels(12, 7);
    std::string_view code = "\x80"
                            "a"sv;

    REQUIRE(takeRunLength(code, {pixels.data() + 1, 3, 4}));

    CHECK(pixels == Bytes{7, 'a', 7, 7, 7, 'a', 7, 7, 7, 'a', 7, 7});
    std::string again;
    appendRunLength(again, {pixels.data() + 1, 3, 4});
    CHECK(again == "\x80"
                   "a");
}

TEST_CASE("any plane is the same after coding and decoding") {
    // The distribution classes of <random> differ between systems; the engine does not.
    std::mt19937 random(20070101);
    for (std::size_t count = 1; count < 600; ++count) {
        std::string plane;
        while (plane.size() < count) {
            plane.append(random() % 4 == 0 ? random() % 300 : 1, static_cast<char>(random() % 3));
        }
        plane.resize(count);
        const auto code = coded(plane);
        const auto back = decoded(code, count);
        REQUIRE(back.has_value());
        CHECK(back->plane == plane);
        CHECK(back->rest.empty());
        CHECK(couldHoldPlanes(code.size(), 1, count));
    }
}

TEST_CASE("few bytes are known not to hold many planes") {
    CHECK(couldHoldPlanes(2, 1, 130));
    CHECK_FALSE(couldHoldPlanes(1, 1, 130));
    CHECK_FALSE(couldHoldPlanes(3, 1, 131));
    CHECK_FALSE(couldHoldPlanes(11, 3, 256));
    CHECK(couldHoldPlanes(12, 3, 256));
}
