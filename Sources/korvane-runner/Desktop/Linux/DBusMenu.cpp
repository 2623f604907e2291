#include "korvane-runner/Desktop/Linux/DBusMenu.h"

#include "korvane-runner/Desktop/Linux/BusInterfaces.h"
#include "korvane-runner/Desktop/Linux/DBusMenuTree.h"
#include "korvane-runner/Desktop/Linux/GVariants.h"

#include <algorithm>
#include <set>
#include <utility>

namespace korvane::runner {

namespace {

/// Each number of the list that the arguments begin with once, however long the list is.
std::set<int> firstList(GVariant* arguments) {
    const GVariantPtr list(g_variant_get_child_value(arguments, 0));
    gsize count = 0;
    const auto* ids =
        static_cast<const gint32*>(g_variant_get_fixed_array(list.get(), &count, sizeof(gint32)));
    return {ids, ids + count};
}

GVariant* numbers(const std::set<int>& ids) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("ai"));
    for (const int id : ids) g_variant_builder_add(&builder, "i", id);
    return g_variant_builder_end(&builder);
}

} // namespace

/// What is posted to the loop may come when the menu has gone; it holds this weakly.
struct DBusMenu::State : std::enable_shared_from_this<State> {
    using Filter = DBusMenuTree::Filter;

    std::vector<StatusMenuEntry> entries;
    DBusMenuTree tree;
    AppLoop& loop;
    std::set<std::size_t> chosen{}; ///< and not done yet

    State(std::vector<StatusMenuEntry> all, AppLoop& where)
        : entries(std::move(all)), tree(entries), loop(where) {}

    GVariant* getLayout(GVariant* arguments) const {
        constexpr guint revision = 1;
        int id = 0;
        int depth = 0;
        g_variant_get(arguments, "(iias)", &id, &depth, nullptr);
        const GVariantPtr names(g_variant_get_child_value(arguments, 2));
        if (!tree.has(id)) return nullptr;
        return g_variant_new("(u@(ia{sv}av))", revision,
                             tree.layout(id, depth, Filter(names.get())));
    }

    /// An empty list asks for all; who is not there is left out.
    GVariant* getGroupProperties(GVariant* arguments) const {
        const GVariantPtr names(g_variant_get_child_value(arguments, 1));
        const Filter filter(names.get());
        const auto asked = firstList(arguments);
        GVariantBuilder builder;
        g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ia{sv})"));
        for (const int id : asked.empty() ? tree.all() : asked) {
            if (!tree.has(id)) continue;
            g_variant_builder_add(&builder, "(i@a{sv})", id, tree.properties(id, filter));
        }
        return g_variant_new("(a(ia{sv}))", &builder);
    }

    GVariant* getProperty(GVariant* arguments) const {
        int id = 0;
        const char* name = nullptr;
        g_variant_get(arguments, "(i&s)", &id, &name);
        GVariant* const value = tree.has(id) ? tree.property(id, name) : nullptr;
        return value == nullptr ? nullptr : g_variant_new("(v)", value);
    }

    GVariant* aboutToShow(GVariant* arguments) const {
        int id = 0;
        g_variant_get(arguments, "(i)", &id);
        return tree.has(id) ? g_variant_new("(b)", FALSE) : nullptr;
    }

    /// A group is refused where nothing of it is there, as others who speak the protocol do.
    GVariant* aboutToShowGroup(GVariant* arguments) const {
        auto unknown = firstList(arguments);
        const bool hasKnown = std::erase_if(unknown, [&](int id) { return tree.has(id); }) > 0;
        if (!unknown.empty() && !hasKnown) return nullptr;
        return g_variant_new("(@ai@ai)", numbers({}), numbers(unknown));
    }

    GVariant* event(GVariant* arguments) {
        int id = 0;
        const char* kind = nullptr;
        g_variant_get(arguments, "(i&svu)", &id, &kind, nullptr, nullptr);
        return happen(id, kind) ? g_variant_new("()") : nullptr;
    }

    GVariant* eventGroup(GVariant* arguments) {
        std::set<int> unknown;
        bool hasKnown = false;
        GVariantIter* events = nullptr;
        int id = 0;
        const char* kind = nullptr;
        g_variant_get(arguments, "(a(isvu))", &events);
        while (g_variant_iter_next(events, "(i&svu)", &id, &kind, nullptr, nullptr)) {
            if (happen(id, kind)) {
                hasKnown = true;
            } else {
                unknown.insert(id);
            }
        }
        g_variant_iter_free(events);
        if (!unknown.empty() && !hasKnown) return nullptr;
        return g_variant_new("(@ai)", numbers(unknown));
    }

    /// False where there is no such entry.
    bool happen(int id, std::string_view kind) {
        if (!tree.has(id)) return false;
        if (kind == "clicked" && id > 0) choose(static_cast<std::size_t>(id) - 1);
        return true;
    }

    /// Not at once: the panel is to have its answer before what is chosen may end the program. And
    /// once for all that is chosen until then: nobody clicks that fast.
    void choose(std::size_t index) {
        if (!entries[index].chosen || !chosen.insert(index).second) return;
        loop.post([weak = weak_from_this(), index] {
            const auto state = weak.lock();
            if (!state) return;
            state->chosen.erase(index);
            state->entries[index].chosen();
        });
    }

    GVariant* answer(std::string_view method, GVariant* arguments) {
        if (method == "GetLayout") return getLayout(arguments);
        if (method == "GetGroupProperties") return getGroupProperties(arguments);
        if (method == "GetProperty") return getProperty(arguments);
        if (method == "Event") return event(arguments);
        if (method == "EventGroup") return eventGroup(arguments);
        if (method == "AboutToShow") return aboutToShow(arguments);
        return aboutToShowGroup(arguments);
    }

    static GVariant* property(std::string_view name) {
        // From 3 on panels call the methods for groups, and those alone.
        constexpr guint version = 3;
        if (name == "Version") return g_variant_new_uint32(version);
        if (name == "Status") return g_variant_new_string("normal");
        if (name == "TextDirection") return g_variant_new_string("ltr");
        return g_variant_new_strv(nullptr, 0);
    }
};

DBusMenu::DBusMenu(std::vector<StatusMenuEntry> entries, SessionBus& bus, AppLoop& loop)
    : state_(std::make_shared<State>(std::move(entries), loop)),
      object_(bus, {path, dbusMenuInterface,
                    [state = state_.get()](std::string_view method, GVariant* arguments) {
                        return state->answer(method, arguments);
                    },
                    State::property}) {}

void DBusMenu::chooseFirst() {
    const auto& entries = state_->entries;
    const auto first = std::find_if(entries.begin(), entries.end(),
                                    [](const auto& entry) { return entry.chosen != nullptr; });
    if (first != entries.end()) state_->choose(static_cast<std::size_t>(first - entries.begin()));
}

} // namespace korvane::runner
