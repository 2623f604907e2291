#include "korvane-runner/Desktop/Linux/NotificationBanners.h"

#include "korvane-runner/Desktop/Linux/GVariants.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace korvane::runner {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";

constexpr SessionBus::Member member(const char* name) {
    return {"/org/freedesktop/Notifications", service, name};
}

/// What a notification server is able to do.
struct Abilities {
    bool readsMarkup = false; ///< in the body; a title is plain text everywhere

    static Abilities of(GVariant* answer) {
        Abilities result;
        const GVariantPtr list(g_variant_get_child_value(answer, 0));
        for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
            const GVariantPtr ability(g_variant_get_child_value(list.get(), i));
            const std::string_view name = g_variant_get_string(ability.get(), nullptr);
            if (name == "body-markup") result.readsMarkup = true;
        }
        return result;
    }
};

std::string escaped(const std::string& text) {
    const std::unique_ptr<char, decltype(&g_free)> result(
        g_markup_escape_text(text.data(), static_cast<gssize>(text.size())), g_free);
    return result.get();
}

GVariant* hints(const DesktopIdentity& identity) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&builder, "{sv}", "desktop-entry", textVariant(identity.id));
    g_variant_builder_add(&builder, "{sv}", "sound-name",
                          g_variant_new_string("message-new-instant"));
    return g_variant_builder_end(&builder);
}

/// The arguments of Notify: a new banner, without buttons, for as long as the server finds right.
GVariant* notice(const DesktopIdentity& identity, const Banner& banner, Abilities server) {
    const auto& icon = identity.icon.empty() ? identity.id : identity.icon;
    return g_variant_new("(@su@s@s@sas@a{sv}i)", textVariant(identity.name), 0U, textVariant(icon),
                         textVariant(banner.title),
                         textVariant(server.readsMarkup ? escaped(banner.body) : banner.body),
                         nullptr, hints(identity), -1);
}

} // namespace

/// Answers may come when the banners have gone; they hold this weakly.
struct NotificationBanners::State {
    struct Waiting {
        Banner banner;
        std::function<void()> done;
    };

    DesktopIdentity identity;
    SessionBus& bus;
    AppLoop& loop;
    std::optional<Abilities> server{}; ///< of the server that there is, once it was asked
    std::vector<Waiting> waiting{};    ///< for its answer

    void send(const Banner& banner, const std::function<void()>& done) {
        bus.call(service, member("Notify"), notice(identity, banner, *server), "(u)",
                 [&to = loop, done](GVariant*) { to.post(done); });
    }

    void becomeKnown(GVariant* answer) {
        if (answer != nullptr) server = Abilities::of(answer);
        for (const auto& each : std::exchange(waiting, {})) {
            if (server) {
                send(each.banner, each.done);
            } else {
                loop.post(each.done);
            }
        }
    }
};

NotificationBanners::NotificationBanners(DesktopIdentity identity, SessionBus& bus, AppLoop& loop)
    : state_(new State{std::move(identity), bus, loop}) {
    bus.whenOwnerChanges(service, [weak = std::weak_ptr(state_)] {
        if (const auto state = weak.lock()) state->server.reset();
    });
}

NotificationBanners::~NotificationBanners() = default;

void NotificationBanners::post(const Banner& banner, std::function<void()> done) {
    if (state_->server) return state_->send(banner, done);
    state_->waiting.push_back({banner, std::move(done)});
    if (state_->waiting.size() > 1) return; // the question is on its way
    state_->bus.call(service, member("GetCapabilities"), g_variant_new("()"), "(as)",
                     [weak = std::weak_ptr(state_)](GVariant* answer) {
                         if (const auto state = weak.lock()) state->becomeKnown(answer);
                     });
}

} // namespace korvane::runner
