#include "Ambrel/Instance/InstanceConfig.h"

#include "Ambrel/Base/Utf8.h"
#include "ConfigTexts.h"
#include "Support/Builders.h"
#include "Support/Expect.h"

#include <nlohmann/json.hpp>

using namespace ambrel;
using namespace korvane::test;
using nlohmann::json;

namespace {

DecodingError decodingErrorOf(const std::string& text) {
    return expectThrow<DecodingError>([&] { InstanceConfig::decode(text); });
}

} // namespace

TEST_CASE("the kind Web fails decoding because raw values are case-sensitive") {
    const auto error = decodingErrorOf(smallestJson(R"(,"kind":"Web")"));

    CHECK(error.kind == DecodingError::Kind::unknownRawValue);
    CHECK(contains(error.description(), "kind"));
    CHECK(contains(error.description(), "Web"));
    CHECK(contains(error.description(), "command"));
    CHECK(isOneLine(error.description()));
}

TEST_CASE("of several keys that cannot be decoded the first in their order is told") {
    const Strings order{"displayName",
                        "bundleId",
                        "kind",
                        "targetAppPath",
                        "instanceHome",
                        "strategy",
                        "extraArgs",
                        "environment",
                        "infoPlistOverrides",
                        "registerAsBrowser",
                        "openWithPassthrough",
                        "iconLabel",
                        "menuBarIcon",
                        "menuBarIconTemplate",
                        "shareUserFolders",
                        "url",
                        "openPath",
                        "commandPath",
                        "commandArgs",
                        "workingDirectory"};
    auto object = json::object();
    for (const auto& key : order) object[key] = 5;
    for (const auto& key : order) {
        CHECK(contains(decodingErrorOf(object.dump()).description(), "mismatch at " + key + ":"));
        const bool isRequired = key == "displayName" || key == "bundleId" || key == "instanceHome";
        if (isRequired) {
            object[key] = "text";
        } else {
            object.erase(key);
        }
    }
    InstanceConfig::decode(object.dump());
}

TEST_CASE("each required key fails the decoding when it is absent, with its name") {
    struct Row {
        std::string json, key;
    };
    const std::vector<Row> table{
        {R"({"bundleId":"b","instanceHome":"h"})", "displayName"},
        {R"({"displayName":"d","instanceHome":"h"})", "bundleId"},
        {R"({"displayName":"d","bundleId":"b"})", "instanceHome"},
        {"{}", "displayName"},
    };
    for (const auto& row : table) {
        CAPTURE(row.json);
        const auto error = decodingErrorOf(row.json);
        CHECK(error.kind == DecodingError::Kind::keyNotFound);
        CHECK(error.description() == "Key not found: " + row.key);
    }
}

TEST_CASE("a null for a required key fails decoding and names the key") {
    for (const std::string key : {"displayName", "bundleId", "instanceHome"}) {
        auto object = json::parse(smallestJson());
        object[key] = nullptr;
        CAPTURE(key);
        CHECK(contains(decodingErrorOf(object.dump()).description(), key));
    }
}

TEST_CASE("a value of the wrong type fails decoding with the key and both types") {
    const std::vector<std::string> strings{
        "displayName", "bundleId", "kind",     "targetAppPath", "instanceHome",
        "strategy",    "url",      "openPath", "commandPath",   "workingDirectory"};
    const std::vector<std::string> booleans{"registerAsBrowser", "openWithPassthrough",
                                            "menuBarIcon", "menuBarIconTemplate",
                                            "shareUserFolders"};
    const std::vector<std::string> lists{"extraArgs", "commandArgs"};
    const std::vector<std::string> objects{"environment", "infoPlistOverrides", "iconLabel"};
    const auto check = [](const std::vector<std::string>& keys, const std::string& expected,
                          const std::vector<json>& wrongValues) {
        for (const auto& key : keys) {
            for (const auto& wrong : wrongValues) {
                auto object = json::parse(smallestJson());
                object[key] = wrong;
                CAPTURE(object.dump());
                const auto error = decodingErrorOf(object.dump());
                CHECK(error.kind == DecodingError::Kind::typeMismatch);
                CHECK(beginsWith(error.description(), "Type mismatch at " + key));
                CHECK(contains(error.description(), expected));
                CHECK(isOneLine(error.description()));
            }
        }
    };
    check(strings, "a string", {5, true, json::array(), json::object(), 1.5});
    check(booleans, "", {0, 1, "true", "", json::array(), json::object(), 0.0, 1.0});
    check(lists, "array", {5, "x", true, json::object()});
    check(objects, "object", {5, "x", true, json::array()});
}

TEST_CASE("an element of the wrong type inside a list or map fails with its path") {
    struct Row {
        std::string member, path;
    };
    const std::vector<Row> table{
        {R"(,"extraArgs":["a",5])", "extraArgs[1]"},
        {R"(,"commandArgs":[null])", "commandArgs[0]"},
        {R"(,"extraArgs":["a","b",["c"]])", "extraArgs[2]"},
        {R"(,"extraArgs":[{}])", "extraArgs[0]"},
        {R"(,"extraArgs":[true])", "extraArgs[0]"},
        {R"(,"environment":{"A":"1","B":2})", "environment.B"},
        {R"(,"environment":{"A":null})", "environment.A"},
        {R"(,"infoPlistOverrides":{"LSUIElement":true})", "infoPlistOverrides.LSUIElement"},
        {R"(,"infoPlistOverrides":{"K":[]})", "infoPlistOverrides.K"},
        {R"(,"iconLabel":{"text":1,"colorHex":"f","position":"top"})", "iconLabel.text"},
    };
    for (const auto& row : table) {
        CAPTURE(row.member);
        const auto error = decodingErrorOf(smallestJson(row.member));
        CHECK(error.kind == DecodingError::Kind::typeMismatch);
        CHECK(beginsWith(error.description(), "Type mismatch at " + row.path + ": "));
    }
    CHECK(decodingErrorOf(smallestJson(R"(,"extraArgs":["a",5])")).description() ==
          "Type mismatch at extraArgs[1]: expected a string, found a number");
}

TEST_CASE("an icon label needs all three of its keys and a known position") {
    struct Row {
        std::string label, path;
        DecodingError::Kind kind;
    };
    using Kind = DecodingError::Kind;
    const std::vector<Row> table{
        {R"({"colorHex":"f","position":"top"})", "iconLabel.text", Kind::keyNotFound},
        {R"({"text":"a","position":"top"})", "iconLabel.colorHex", Kind::keyNotFound},
        {R"({"text":"a","colorHex":"f"})", "iconLabel.position", Kind::keyNotFound},
        {R"({"text":"a","colorHex":"f","position":"Top"})", "iconLabel.position",
         Kind::unknownRawValue},
        {R"({"text":"a","colorHex":"f","position":3})", "iconLabel.position", Kind::typeMismatch},
    };
    for (const auto& row : table) {
        CAPTURE(row.label);
        const auto error = decodingErrorOf(smallestJson(",\"iconLabel\":" + row.label));
        CHECK(error.kind == row.kind);
        CHECK(contains(error.description(), row.path));
    }
}

TEST_CASE("the first failure in field order aborts the decoding, whatever the order in the file") {
    CHECK(contains(
        decodingErrorOf(R"({"workingDirectory":5,"kind":"?","displayName":7})").description(),
        "displayName"));
    CHECK(contains(
        decodingErrorOf(R"({"displayName":"d","bundleId":"b","kind":"?"})").description(), "kind"));
    CHECK(contains(
        decodingErrorOf(R"({"displayName":"d","bundleId":"b","strategy":1,"targetAppPath":2})")
            .description(),
        "targetAppPath"));
    CHECK(contains(decodingErrorOf(smallestJson(R"(,"workingDirectory":1,"commandArgs":1,"url":1)"))
                       .description(),
                   "url"));
}

TEST_CASE("what only begins like a number is a syntax error, however huge its beginning") {
    for (const std::string number : {"1e999-0.5", "01", "1.", "-", "1e", "9.9.9", "1-1"}) {
        CAPTURE(number);
        const auto error = decodingErrorOf(smallestJson(",\"unknown\":" + number));
        CHECK(contains(error.description(), "a number that is not well formed"));
    }
}

TEST_CASE("a huge number in a known key is a type mismatch and not a crash") {
    for (const std::string& number : {std::string(400, '9'), std::string("1e999")}) {
        CAPTURE(number);
        const auto error = decodingErrorOf(smallestJson(",\"url\":" + number));
        CHECK(error.kind == DecodingError::Kind::typeMismatch);
        CHECK(contains(error.description(), "url"));
        CHECK(
            contains(decodingErrorOf(smallestJson(",\"extraArgs\":[" + number + "]")).description(),
                     "extraArgs[0]"));
    }
}

TEST_CASE("nesting of any depth ends in an error and never in a crash") {
    constexpr std::size_t deep = 100000;
    for (const std::string& text : {
             nested(deep, "[", "", "]"),
             nested(deep, "{\"a\":", "1", "}"),
             nested(deep, "[", "", ""),
             nested(deep, "{\"a\":[", "", "]}"),
             smallestJson(",\"more\":" + nested(deep, "[", "1", "]")),
             smallestJson(",\"more\":" + nested(deep, "{\"a\":", "1", "}")),
             smallestJson(",\"extraArgs\":" + nested(deep, "[", "\"x\"", "]")),
             smallestJson(",\"environment\":" + nested(deep, "{\"a\":", "\"x\"", "}")),
             smallestJson(",\"iconLabel\":" + nested(deep, "{\"text\":", "\"x\"", "}")),
         }) {
        CAPTURE(text.substr(0, 80));
        CHECK(isOneLine(decodingErrorOf(text).description()));
    }
}

TEST_CASE("input that is not UTF-8 fails wherever the bytes stand") {
    for (const std::string& text : {
             std::string("{\"displayName\":\"\xff\",\"bundleId\":\"b\",\"instanceHome\":\"h\"}"),
             smallestJson(",\"more\":\"\xc0\x80\""),
             smallestJson(",\"\xff\":1"),
             smallestJson(",\"more\":\"\xed\xa0\x80\""),
             smallestJson(",\"more\":\"\xf4\x90\x80\x80\""),
             smallestJson() + "\xff",
             "\xff" + smallestJson(),
             std::string("\xff\xfe{\0}\0", 6),
         }) {
        const auto error = decodingErrorOf(text);
        CAPTURE(error.description());
        CHECK(utf8::isValid(error.description()));
        CHECK(isOneLine(error.description()));
    }
}

TEST_CASE("an escaped lone surrogate fails and an escaped pair is one character") {
    for (const auto* escape : {R"(\ud800)", R"(\udc00)", R"(\ud800x)", R"(\ud800\ud800)",
                               R"(\udc00\ud800)", R"(\ud83d\n)"}) {
        CAPTURE(escape);
        decodingErrorOf(smallestJson(std::string(",\"url\":\"") + escape + "\""));
        decodingErrorOf(smallestJson(std::string(",\"more\":\"") + escape + "\""));
    }
    CHECK(InstanceConfig::decode(smallestJson(R"(,"url":"\ud83d\ude00")")).url ==
          "\xf0\x9f\x98\x80");
}

TEST_CASE("anything after the object fails, a NUL byte included") {
    for (const std::string& rest : {std::string("\0", 1), std::string("x"), std::string("{}"),
                                    std::string("]"), std::string(","), std::string("\0 ", 2)}) {
        CAPTURE(rest);
        const auto error = decodingErrorOf(smallestJson() + rest);
        CHECK(error.kind == DecodingError::Kind::syntax);
        CHECK(isOneLine(error.description()));
    }
    CHECK(InstanceConfig::decode(" \t\r\n" + smallestJson() + "\n\n").displayName == "Mail");
}

TEST_CASE("a byte order mark before the object is no part of it") {
    CHECK(InstanceConfig::decode("\xef\xbb\xbf" + smallestJson()).displayName == "Mail");
}

TEST_CASE("what is no JSON object fails with the place of the mistake or the found type") {
    for (const auto* text :
         {"", " ", "nul", "{", "{\"a\"}", "{\"a\":}", "{'a':1}", "{\"a\":1,}", "{\"a\":\"\n\"}",
          "{\"a\":\"\t\"}", "{\"a\":01}", "{\"a\":+1}", "{\"a\":.5}", "{\"a\":NaN}", "// c\n{}",
          "{\"a\":\"\\x\"}", "{\"a\":\"\\u12g4\"}", "{\"a\":True}", "{\"a\":1 \"b\":2}"}) {
        CAPTURE(text);
        const auto error = decodingErrorOf(text);
        CHECK(error.kind == DecodingError::Kind::syntax);
        CHECK(error.description().find_first_of("0123456789") != std::string::npos);
        CHECK(isOneLine(error.description()));
    }
    for (const auto* text : {"null", "3", "\"x\"", "[]", "true", "[{}]"}) {
        CAPTURE(text);
        CHECK(decodingErrorOf(text).kind == DecodingError::Kind::typeMismatch);
    }
}

TEST_CASE("a file cut off at any byte fails") {
    const auto text = fullConfig().encode();
    const auto end = text.find_last_of('}');
    for (std::size_t length = 0; length <= end; ++length) {
        CAPTURE(length);
        decodingErrorOf(text.substr(0, length));
    }
}

TEST_CASE("a file with any one byte changed decodes or fails, in one line") {
    const auto text = fullConfig().encode();
    for (std::size_t index = 0; index < text.size(); ++index) {
        for (const char byte : {'\0', '"', '\\', '{', ']', '\xff', '9', '\n'}) {
            auto changed = text;
            changed[index] = byte;
            try {
                InstanceConfig::decode(changed);
            } catch (const DecodingError& error) {
                REQUIRE(isOneLine(error.description()));
                REQUIRE(utf8::isValid(error.description()));
            }
        }
    }
}

TEST_CASE("messages stay one line whatever names the file holds") {
    for (const auto* key : {R"(a\nb)", R"(a\u001b[31m)", R"(\u0000)", R"(\u2028)", R"(\r)"}) {
        CAPTURE(key);
        const auto element =
            decodingErrorOf(smallestJson(std::string(R"(,"environment":{")") + key + R"(":1})"));
        CHECK(isOneLine(element.description()));
        CHECK_FALSE(contains(element.description(), "\xe2\x80\xa8"));
        const auto raw = decodingErrorOf(smallestJson(std::string(R"(,"kind":")") + key + "\""));
        CHECK(isOneLine(raw.description()));
        CHECK_FALSE(contains(raw.description(), "\xe2\x80\xa8"));
    }
}
