#pragma once

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "korvane-runner/Web/FakeWebDesktop.h"
#include "korvane-runner/Web/WebAppDelegate.h"

namespace korvane::test {

inline ambrel::InstanceConfig mail(const Path& home,
                                   std::optional<std::string> url = "mail.example.org") {
    ambrel::InstanceConfig config;
    config.displayName = "Mail";
    config.bundleId = "app.korvane.instance.mail";
    config.kind = ambrel::ShortcutKind::web;
    config.instanceHome = home;
    config.url = std::move(url);
    return config;
}

/// A running web instance in a desktop that records what it is asked.
struct WebStage {
    WebStage() : WebStage([](ambrel::InstanceConfig&) {}) {}
    explicit WebStage(const std::function<void(ambrel::InstanceConfig&)>& change) : user(tmp) {
        makeFolder(home);
        auto config = mail(home);
        change(config);
        const ambrel::SystemTools tools{.open = tmp / "open"};
        instance.emplace(ambrel::ResolvedInstance::of(config, user.places()), user.places(),
                         runner::LinkOpener(tools, {{"PATH", "/usr/bin:/bin"}}),
                         tmp / "AppIcon.icns", desktop);
        instance->applicationDidFinishLaunching();
    }

    runner::WebWindowEvents& events() const { return *desktop.events; }
    void send(const char* type, Value::Fields payload) const {
        events().messageArrived(message(type, std::move(payload)));
    }
    std::string log() {
        desktop.fakeLoop.letTimePass();
        return isThere(home + "/korvane-instance.log") ? readFile(home + "/korvane-instance.log")
                                                       : std::string();
    }
    const WindowRecord& window() const { return desktop.window; }
    std::vector<std::int64_t>& badges() { return desktop.fakeBadge.shown; }
    std::vector<runner::Banner>& banners() { return desktop.fakeBanners.posted; }

    TempDir tmp;
    UserHome user;
    Path home = tmp / "home";
    FakeWebDesktop desktop;
    std::optional<runner::WebAppDelegate> instance;
};

} // namespace korvane::test
