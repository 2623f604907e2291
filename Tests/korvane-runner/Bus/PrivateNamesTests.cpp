#include "korvane-runner/Bus/PrivateNames.h"

#include "korvane-runner/Bus/NameSyntax.h"

#include "Support/Expect.h"

#include <set>

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

PrivateNames exampleNames() { return PrivateNames("k_One"); }

const std::string longName = "org.example." + std::string(243, 'x');

} // namespace

TEST_CASE("names of programs have the instance's prefix, and players its suffix") {
    const std::vector<std::pair<std::string, std::string>> table{
        {"org.gnome.eog", "k_One.org.gnome.eog"},
        {"a.b", "k_One.a.b"},
        {"org.mpris.MediaPlayer2.vlc", "org.mpris.MediaPlayer2.vlc.k_One"},
        {"org.mpris.MediaPlayer2.vlc.instance7", "org.mpris.MediaPlayer2.vlc.instance7.k_One"},
        {"org.mpris.MediaPlayer2", "k_One.org.mpris.MediaPlayer2"},
        {"org.mpris.MediaPlayer2x.y", "k_One.org.mpris.MediaPlayer2x.y"},
        {"k_One.org.gnome.eog", "k_One.k_One.org.gnome.eog"},
        {":1.5", ":1.5"},
    };
    for (const auto& row : table) {
        const auto& name = row.first;
        const auto& onBus = row.second;
        CAPTURE(name);
        auto names = exampleNames();

        CHECK(names.toBus(name) == onBus);
        CHECK(names.toBus(name) == onBus);
        CHECK(names.fromBus(onBus) == name);
    }
}

TEST_CASE("names that are not the instance's are nobody's") {
    const auto names = exampleNames();
    for (const std::string name :
         {"org.gnome.eog", "k_Two.org.gnome.eog", "k_One", "k_One.a", "k_One.", "k_One..a",
          "k_Onex.org.a", "org.mpris.MediaPlayer2.vlc", "org.mpris.MediaPlayer2.vlc.k_Two",
          "org.mpris.MediaPlayer2.k_One", "org.gnome.eog.k_One", "k_One.1.2", ""}) {
        CAPTURE(name);
        CHECK(names.fromBus(name) == std::nullopt);
    }
}

TEST_CASE("no two names on the bus are one name for the instance") {
    const auto names = exampleNames();

    CHECK(names.fromBus("k_One.org.mpris.MediaPlayer2.vlc") == std::nullopt);
    CHECK(names.fromBus("org.mpris.MediaPlayer2.vlc.k_One") == "org.mpris.MediaPlayer2.vlc");
}

TEST_CASE("a name that gets too long is shortened and found again") {
    REQUIRE(longName.size() == longestName);
    for (const auto& name : {longName, "org.mpris.MediaPlayer2." + std::string(232, 'x')}) {
        auto names = exampleNames();

        const auto onBus = names.toBus(name);

        CAPTURE(onBus);
        CHECK(isBusName(onBus));
        CHECK(names.toBus(name) == onBus);
        CHECK(names.fromBus(onBus) == name);
        CHECK(exampleNames().toBus(name) == onBus);
    }
}

TEST_CASE("a shortened name that nobody asked for is nobody's") {
    const auto onBus = exampleNames().toBus(longName);

    CHECK(exampleNames().fromBus(onBus) == std::nullopt);
}

TEST_CASE("the longest name that fits is not shortened") {
    auto names = exampleNames();
    const auto name = longName.substr(0, longestName - 6);

    CHECK(names.toBus(name) == "k_One." + name);
    CHECK(names.toBus(name + "x").size() < 32);
}

TEST_CASE(
    "names that are shortened differ, and those that nobody has are not kept without an end") {
    auto names = exampleNames();
    std::set<std::string> onBus;
    for (int i = 0; i < 2'000; ++i) {
        auto name = longName;
        name.replace(20, 4, std::to_string(1'000 + i));
        onBus.insert(names.toBus(name));
    }
    std::size_t known = 0;
    for (const auto& name : onBus) known += names.fromBus(name) ? 1 : 0;

    CHECK(onBus.size() == 2'000);
    CHECK(known == 1'024);
}

TEST_CASE("a name space has the prefix too, as long as names fit below it") {
    const auto names = exampleNames();

    CHECK(names.nameSpaceToBus("org.gnome") == "k_One.org.gnome");
    CHECK(names.nameSpaceToBus("org") == "k_One.org");
    CHECK(names.nameSpaceToBus(longName) == std::nullopt);
}

TEST_CASE("every identifier makes a prefix of its own, which is one element") {
    const std::vector<std::string> identifiers{
        "org.example.a-b", "org.example.a_b",     "org.example.a.b",          "", "1",
        "\u00E4 b",        std::string(300, 'x'), std::string(300, 'x') + "y"};
    std::set<std::string> prefixes;
    for (const auto& identifier : identifiers) {
        const auto prefix = privatePrefix(identifier);
        CAPTURE(prefix);
        CHECK(isMemberName(prefix));
        CHECK(prefix.size() <= 57);
        prefixes.insert(prefix);
    }
    CHECK(prefixes.size() == identifiers.size());
    CHECK(privatePrefix("org.example.a-b") == "korvane_org_example_a_b_9235a97815c74aab");
}
