#include "korvane-runner/Bus/Signature.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;

namespace {

std::string nested(std::size_t count, const std::string& begin, const std::string& end) {
    std::string text = "y";
    for (std::size_t i = 0; i < count; ++i) text = begin + text + end;
    return text;
}

} // namespace

TEST_CASE("signatures are lists of complete types") {
    for (const std::string signature :
         {"", "y", "asu", "a{ss}", "a{sv}", "(ii)", "a(s(ay)v)", "aaas", "hv", "a{oa{sv}}"}) {
        CAPTURE(signature);
        CHECK(isSignature(signature));
    }
    for (const std::string none :
         {"a", "(", ")", "()", "(s", "{ss}", "a{s}", "a{sss}", "a{vs}", "a{(s)s}", "a{", "a{s",
          "a{ss", "e", "m", "mi", "z", "s ", "r"}) {
        CAPTURE(none);
        CHECK_FALSE(isSignature(none));
        CHECK_FALSE(isSingleType(none));
    }
}

TEST_CASE("signatures are neither too deep nor too long") {
    CHECK(isSignature(nested(32, "a", "")));
    CHECK_FALSE(isSignature(nested(33, "a", "")));
    CHECK(isSignature(nested(32, "(", ")")));
    CHECK_FALSE(isSignature(nested(33, "(", ")")));
    CHECK(isSignature(std::string(255, 'y')));
    CHECK_FALSE(isSignature(std::string(256, 'y')));
}

TEST_CASE("the first type of a signature is found") {
    for (const std::string type : {"s", "as", "aay", "a{sv}", "(i(s))", "v"}) {
        CAPTURE(type);
        CHECK(firstTypeLength(type + "us") == type.size());
        CHECK(firstTypeLength(type) == type.size());
        CHECK(isSingleType(type));
        CHECK_FALSE(isSingleType(type + "u"));
    }
    CHECK_FALSE(isSingleType(""));
}
