#include "korvane-runner/Bus/NameSyntax.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace std::string_literals;

namespace {

const std::string longPart(251, 'a');

} // namespace

TEST_CASE("bus names are told from other texts as the bus does") {
    for (const std::string name : {":1.5", ":1", ":", ":.1", ":a.b-c", "a.b", "a-b.c-d", "-a.b",
                                   "_.a1", "org.freedesktop.DBus"}) {
        CAPTURE(name);
        CHECK(isBusName(name));
        CHECK(isUniqueName(name) == (name[0] == ':'));
    }
    for (const std::string none : {"", "a", "a.1", ".a.b", "a..b", "a.b.", ":1.", ":.", ":1..2",
                                   "a b.c", "\u00E4.b", "a.b:c", "a/b.c"}) {
        CAPTURE(none);
        CHECK_FALSE(isBusName(none));
    }
}

TEST_CASE("names end with their 255th byte") {
    const auto fits = "aa." + longPart + "a";
    REQUIRE(fits.size() == longestName);

    CHECK(isBusName(fits));
    CHECK(isNameSpace(fits));
    CHECK(isInterfaceName(fits));
    CHECK(isMemberName(longPart + "aaaa"));
    CHECK_FALSE(isBusName(fits + "a"));
    CHECK_FALSE(isNameSpace(fits + "a"));
    CHECK_FALSE(isInterfaceName(fits + "a"));
    CHECK_FALSE(isMemberName(longPart + "aaaaa"));
}

TEST_CASE("interfaces and errors have two elements without hyphens") {
    for (const std::string name : {"a.b", "a._1.B"}) CHECK(isInterfaceName(name));
    for (const std::string none : {"", "a", "a-b.c", "a.1b", "a.", ".a", ":1.5"}) {
        CAPTURE(none);
        CHECK_FALSE(isInterfaceName(none));
        CHECK_FALSE(isErrorName(none));
    }
}

TEST_CASE("members are one element") {
    for (const std::string name : {"Get", "_1"}) CHECK(isMemberName(name));
    for (const std::string none : {"", "1a", "a.b", "a-b", "\u00E4"}) {
        CAPTURE(none);
        CHECK_FALSE(isMemberName(none));
    }
}

TEST_CASE("a name space may be one element") {
    for (const std::string name : {"org", "org.a", "org.a-b"}) CHECK(isNameSpace(name));
    for (const std::string none : {"", "1", "org.", ":1"}) {
        CAPTURE(none);
        CHECK_FALSE(isNameSpace(none));
    }
}

TEST_CASE("object paths are absolute and end in an element") {
    for (const auto& path : {"/"s, "/a"s, "/a/1/_"s, "/" + std::string(100'000, 'a')}) {
        CHECK(isObjectPath(path));
    }
    for (const std::string none :
         {"", "a", "//", "//a", "/a/", "/a//b", "/a-b", "/\u00E4", "/a.b"}) {
        CAPTURE(none);
        CHECK_FALSE(isObjectPath(none));
    }
}
