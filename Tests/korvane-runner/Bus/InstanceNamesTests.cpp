#include "korvane-runner/Bus/InstanceNames.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

InstanceNames exampleNames() { return {PrivateNames("k_One"), NamePolicy(Secrets::shared)}; }

} // namespace

TEST_CASE("calling and owning are told apart in both directions") {
    struct Row {
        std::string name;
        std::string called;
        std::string owned;
    };
    const std::vector<Row> table{
        {"org.gnome.eog", "k_One.org.gnome.eog", "k_One.org.gnome.eog"},
        {"org.freedesktop.Notifications", "org.freedesktop.Notifications",
         "k_One.org.freedesktop.Notifications"},
        {"org.kde.StatusNotifierItem-1-1", "org.kde.StatusNotifierItem-1-1",
         "org.kde.StatusNotifierItem-1-1"},
        {":1.5", ":1.5", ":1.5"},
        {"org.mpris.MediaPlayer2.a", "org.mpris.MediaPlayer2.a.k_One",
         "org.mpris.MediaPlayer2.a.k_One"},
    };
    for (const auto& row : table) {
        CAPTURE(row.name);
        auto names = exampleNames();
        CHECK(names.toBus(row.name, NameUse::call) == row.called);
        CHECK(names.toBus(row.name, NameUse::own) == row.owned);
        CHECK(names.fromBus(row.called, NameUse::call) == row.name);
        CHECK(names.fromBus(row.owned, NameUse::own) == row.name);
    }
}

TEST_CASE("a name that is the instance's own and called as the user's is seen by its owner alone") {
    const auto names = exampleNames();
    const auto* own = "k_One.org.freedesktop.Notifications";

    CHECK(names.fromBus(own, NameUse::call) == std::nullopt);
    CHECK(names.fromBus(own, NameUse::own) == "org.freedesktop.Notifications");
    CHECK(names.fromBus("org.freedesktop.Notifications", NameUse::own) == std::nullopt);
}

TEST_CASE("what is private to others is not seen") {
    const auto names = exampleNames();
    for (const std::string name :
         {"org.gnome.eog", "k_Two.org.gnome.eog", "org.mpris.MediaPlayer2.vlc"}) {
        CAPTURE(name);
        CHECK(names.fromBus(name, NameUse::call) == std::nullopt);
        CHECK(names.fromBus(name, NameUse::own) == std::nullopt);
    }
}

TEST_CASE("sentences of the bus are about the names that programs know") {
    const std::vector<std::pair<std::string, std::string>> table{
        {"The name k_One.org.no.x was not provided by any .service files",
         "The name org.no.x was not provided by any .service files"},
        {"Could not get owner of name 'k_One.org.no.x': no such name",
         "Could not get owner of name 'org.no.x': no such name"},
        {"Name \"k_One.org.no.x\" does not exist", "Name \"org.no.x\" does not exist"},
        {"Name k_One.org.no.x.", "Name org.no.x."},
        {"k_One.org.a, k_One.org.b: k_One.org.c", "org.a, org.b: org.c"},
        {"org.mpris.MediaPlayer2.vlc.k_One", "org.mpris.MediaPlayer2.vlc"},
        {"k_One.org.freedesktop.Notifications", "org.freedesktop.Notifications"},
        {"k_Two.org.no.x k_One. .k_One :1.5 ...", "k_Two.org.no.x k_One. .k_One :1.5 ..."},
        {"\u00E4k_One.org.a\n", "\u00E4org.a\n"},
        {"", ""},
    };
    for (const auto& row : table) {
        const auto& text = row.first;
        const auto& told = row.second;
        CAPTURE(text);
        CHECK(exampleNames().textFromBus(text) == told);
    }
}
