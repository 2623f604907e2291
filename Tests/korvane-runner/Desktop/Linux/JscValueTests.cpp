#include "korvane-runner/Desktop/Linux/JscValue.h"

#include <cmath>
#include <doctest/doctest.h>
#include <limits>

using namespace korvane::runner;

namespace {

/// What `script` comes to in a context of its own.
JscValue valueOf(const char* script) {
    const GObjectPtr<JSCContext> context(jsc_context_new());
    return JscValue(GObjectPtr<JSCValue>(jsc_context_evaluate(context.get(), script, -1)));
}

constexpr std::size_t plenty = 1000;

} // namespace

TEST_CASE("only an object that is neither a list nor a function is a dictionary") {
    CHECK(valueOf("({})").isDictionary());
    CHECK(valueOf("({a: 1})").isDictionary());

    for (const auto* script : {"undefined", "null", "true", "1", "'text'", "[]", "(() => 1)"}) {
        CAPTURE(script);
        CHECK_FALSE(valueOf(script).isDictionary());
    }
}

TEST_CASE("a field is found by its name") {
    const auto value = valueOf("({type: 'notify', payload: {count: 7}})");

    CHECK(value.field("type")->text(plenty) == "notify");
    CHECK(value.field("payload")->isDictionary());
    CHECK(value.field("payload")->field("count")->number() == 7);
}

TEST_CASE("a field that is not there is nothing, and so are its own fields") {
    for (const auto* script : {"({})", "undefined", "null", "5", "'text'", "[1]"}) {
        CAPTURE(script);
        const auto field = valueOf(script).field("payload");

        CHECK_FALSE(field->isDictionary());
        CHECK_FALSE(field->number());
        CHECK_FALSE(field->text(plenty));
        CHECK_FALSE(field->field("count")->number());
    }
}

TEST_CASE("only a number is one, with all its strange values") {
    CHECK(valueOf("-2.5").number() == -2.5);
    CHECK(valueOf("1e300").number() == 1e300);
    CHECK(std::isnan(valueOf("NaN").number().value()));
    CHECK(valueOf("-Infinity").number() == -std::numeric_limits<double>::infinity());

    for (const auto* script : {"'7'", "true", "null", "undefined", "({})", "[7]"}) {
        CAPTURE(script);
        CHECK_FALSE(valueOf(script).number());
    }
}

TEST_CASE("only a text is one") {
    for (const auto* script : {"7", "true", "null", "undefined", "['a']", "({toString() {}})"}) {
        CAPTURE(script);
        CHECK_FALSE(valueOf(script).text(plenty));
    }
}

TEST_CASE("a text is UTF-8, whatever its characters") {
    CHECK(valueOf("''").text(plenty) == "");
    CHECK(valueOf("'Grüße, 日本 🙂'").text(plenty) == "Grüße, 日本 🙂");
    CHECK(valueOf("'a\\0b'").text(plenty) == std::string("a\0b", 3));
    CHECK(valueOf("'a\\u0007\\nb'").text(plenty) == "a\a\nb");
}

TEST_CASE("half a character in a text becomes the sign for what cannot be shown") {
    CHECK(valueOf("'a\\ud83d'").text(plenty) == "a\xEF\xBF\xBD");
    CHECK(valueOf("'\\ude42b'").text(plenty) == "\xEF\xBF\xBD"
                                                "b");
    CHECK(valueOf("'\\ude42\\ud83d'").text(plenty) == "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST_CASE("a text is cut where it is too long, and not inside a character") {
    CHECK(valueOf("'abcdef'").text(3) == "abc");
    CHECK(valueOf("'abc'").text(3) == "abc");
    CHECK(valueOf("'ab🙂cd'").text(2) == "ab");
    CHECK(valueOf("'ab🙂cd'").text(3) == "ab");
    CHECK(valueOf("'ab🙂cd'").text(4) == "ab🙂");
    CHECK(valueOf("'🙂'").text(1) == "");
    CHECK(valueOf("'abc'").text(0) == "");
    // The half that stands before the border is no part of a character behind it.
    CHECK(valueOf("'a\\ud83dbc'").text(2) == "a\xEF\xBF\xBD");
}

TEST_CASE("a text far too long is cut as any other") {
    const auto value = valueOf("'x'.repeat(200000000)");

    CHECK(value.text(4) == "xxxx");
}

TEST_CASE("a text can be asked for more than it can ever have") {
    CHECK(valueOf("'abc'").text(std::numeric_limits<std::size_t>::max()) == "abc");
}

TEST_CASE("a value that contains itself is read like any other") {
    const auto value = valueOf("const a = {type: 'x'}; a.payload = a; a");

    CHECK(value.field("payload")->field("payload")->field("type")->text(plenty) == "x");
}
