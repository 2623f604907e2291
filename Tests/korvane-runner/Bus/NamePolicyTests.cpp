#include "korvane-runner/Bus/NamePolicy.h"

#include "Support/Expect.h"

#include <algorithm>

using namespace korvane::runner::bus;
using namespace korvane::test;

TEST_CASE("components of the desktop are shared for calls, and few of their names can be owned") {
    const NamePolicy policy(Secrets::shared);
    for (const std::string name :
         {"org.freedesktop.DBus", "org.freedesktop.Notifications", "org.freedesktop.ScreenSaver",
          "org.freedesktop.portal.Desktop", "org.freedesktop.portal.a.b", "org.gnome.Shell",
          "org.gnome.Shell.Screenshot", "org.gnome.Mutter.IdleMonitor", "org.gtk.vfs.Daemon",
          "org.kde.StatusNotifierWatcher", "org.a11y.Bus", "com.canonical.Unity",
          "org.freedesktop.secrets", "org.gnome.keyring", "org.fcitx.Fcitx-0"}) {
        CAPTURE(name);
        CHECK(policy.isShared(name, NameUse::call));
        CHECK_FALSE(policy.isShared(name, NameUse::own));
    }
    for (const std::string name :
         {"org.kde.StatusNotifierItem-12-1", "org.freedesktop.ReserveDevice1.Audio0"}) {
        CAPTURE(name);
        CHECK(policy.isShared(name, NameUse::call));
        CHECK(policy.isShared(name, NameUse::own));
    }
}

TEST_CASE("programs are private, whoever made them") {
    const NamePolicy policy(Secrets::shared);
    for (const std::string name :
         {"org.gnome.eog", "org.xfce.mousepad", "org.kde.dolphin-1", "org.kde.KWinX",
          "org.pulseaudio.pavucontrol", "org.freedesktop.FileManager1", "org.gnome.Nautilus",
          "org.freedesktop.portal", "org.freedesktop.portalx", "org.kde.StatusNotifierItem",
          "org.kde.StatusNotifierItem-", "ca.desrt.dconf", "org.gtk.Notifications",
          "org.mpris.MediaPlayer2.vlc", "org.gnome.evolution.dataserver.Sources5", ":1.5"}) {
        CAPTURE(name);
        CHECK_FALSE(policy.isShared(name, NameUse::call));
        CHECK_FALSE(policy.isShared(name, NameUse::own));
    }
}

TEST_CASE("secrets can be hidden, and nothing else is then") {
    const NamePolicy hidden(Secrets::hidden);
    const NamePolicy shared(Secrets::shared);
    for (const std::string name :
         {"org.freedesktop.secrets", "org.gnome.keyring", "org.gnome.keyring.SystemPrompter",
          "org.kde.kwalletd5", "org.kde.kwalletd6"}) {
        CAPTURE(name);
        CHECK(hidden.isHidden(name));
        CHECK_FALSE(hidden.isShared(name, NameUse::call));
        CHECK_FALSE(shared.isHidden(name));
    }
    for (const std::string name : {"org.freedesktop.Notifications", "org.gnome.eog"}) {
        CAPTURE(name);
        CHECK_FALSE(hidden.isHidden(name));
        CHECK(hidden.isShared(name, NameUse::call) == shared.isShared(name, NameUse::call));
    }
}

TEST_CASE("a profile shares what it names") {
    NamePolicy policy(Secrets::shared);
    policy.add({NameRule::Kind::call, "org.example.Daemon", "one for all"});

    CHECK(policy.isShared("org.example.Daemon", NameUse::call));
    CHECK_FALSE(policy.isShared("org.example.Daemon", NameUse::own));
    CHECK_FALSE(policy.isShared("org.example.Daemon.Part", NameUse::call));
}

TEST_CASE("a rule is a kind, a name and a reason") {
    CHECK(NameRule::parse("own org.a.b-*  why not") ==
          NameRule{NameRule::Kind::own, "org.a.b-*", "why not"});
    CHECK(NameRule::parse("call org.a.b why").has_value());
    for (const std::string line :
         {"", "#", "# call org.a.b  why", "call", "call org.a.b", "call org.a.b  ",
          "take org.a.b  why", "call org  why", "call org.*  why", "call *  why",
          "call org.a.b*  why", "call org.*.b  why", "call :1.5  why", "call  org.a.b  why"}) {
        CAPTURE(line);
        CHECK_FALSE(NameRule::parse(line).has_value());
    }
}

TEST_CASE("every line of the names that are shared is a rule, and no name stands there twice") {
    std::size_t lines = 0;
    std::string_view text = sharedNames;
    while (!text.empty()) {
        const auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.empty() || line.starts_with('#')) continue;
        CAPTURE(line);
        CHECK(NameRule::parse(line).has_value());
        ++lines;
    }
    auto rules = NamePolicy(Secrets::shared).rules();
    CHECK(rules.size() == lines);
    CHECK(lines > 40);

    std::ranges::sort(rules, {}, &NameRule::name);
    CHECK(std::ranges::adjacent_find(rules, {}, &NameRule::name) == rules.end());
}
