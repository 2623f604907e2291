#include "korvane-runner/Desktop/Linux/DBusMenuTree.h"

#include <string>

namespace korvane::runner {

namespace {

GVariant* labelOf(const std::string& title) {
    std::string label;
    for (const char character : title) {
        label += character;
        if (character == '_') label += '_'; // a single one marks the letter of a key
    }
    return textVariant(label);
}

GVariant* shortcutOf(char key) {
    const char word[] = {key, '\0'};
    GVariantBuilder keys;
    g_variant_builder_init(&keys, G_VARIANT_TYPE("aas"));
    g_variant_builder_open(&keys, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&keys, "s", "Control");
    g_variant_builder_add(&keys, "s", word);
    g_variant_builder_close(&keys);
    return g_variant_builder_end(&keys);
}

} // namespace

DBusMenuTree::Filter::Filter(GVariant* list) {
    GVariantIter iterator;
    const char* name = nullptr;
    g_variant_iter_init(&iterator, list);
    while (g_variant_iter_next(&iterator, "&s", &name)) names_.insert(name);
}

DBusMenuTree::Item DBusMenuTree::itemOf(const StatusMenuEntry& entry) {
    Item item;
    const auto add = [&](const char* name, GVariant* value) {
        item.push_back({name, retained(value)});
    };
    if (entry.title.empty()) {
        add("type", g_variant_new_string("separator"));
        return item;
    }
    add("label", labelOf(entry.title));
    if (!entry.chosen) add("enabled", g_variant_new_boolean(FALSE));
    if (entry.key != '\0') add("shortcut", shortcutOf(entry.key));
    return item;
}

DBusMenuTree::DBusMenuTree(const std::vector<StatusMenuEntry>& entries) {
    Item menu;
    menu.push_back({"children-display", retained(g_variant_new_string("submenu"))});
    items_.push_back(std::move(menu));
    for (const auto& entry : entries) items_.push_back(itemOf(entry));
}

std::set<int> DBusMenuTree::all() const {
    std::set<int> ids;
    for (int id = 0; has(id); ++id) ids.insert(id);
    return ids;
}

GVariant* DBusMenuTree::properties(int id, const Filter& filter) const {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : items_[static_cast<std::size_t>(id)]) {
        if (filter.asksFor(name)) g_variant_builder_add(&builder, "{sv}", name, value.get());
    }
    return g_variant_builder_end(&builder);
}

GVariant* DBusMenuTree::layout(int id, int depth, const Filter& filter) const {
    GVariantBuilder children;
    g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
    const bool hasChildren = id == 0 && depth != 0;
    for (int child = 1; hasChildren && has(child); ++child) {
        g_variant_builder_add(&children, "v", layout(child, 0, filter));
    }
    return g_variant_new("(i@a{sv}av)", id, properties(id, filter), &children);
}

GVariant* DBusMenuTree::property(int id, std::string_view name) const {
    for (const auto& property : items_[static_cast<std::size_t>(id)]) {
        if (property.name == name) return property.value.get();
    }
    return nullptr;
}

} // namespace korvane::runner
