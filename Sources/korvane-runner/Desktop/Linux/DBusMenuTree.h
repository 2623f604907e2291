#pragma once

#include "korvane-runner/Desktop/Linux/GVariants.h"
#include "korvane-runner/Desktop/StatusArea.h"

#include <set>
#include <string_view>
#include <vector>

namespace korvane::runner {

/// The entries of a menu as com.canonical.dbusmenu tells them. They are numbered from 1 on in their
/// order; 0 is the menu itself. What stands for another number is not to be asked for.
class DBusMenuTree {
public:
    explicit DBusMenuTree(const std::vector<StatusMenuEntry>& entries);

    bool has(int id) const { return id >= 0 && id < static_cast<int>(items_.size()); }
    std::set<int> all() const;

    /// The names of properties that are asked for, lying in `list`, of type "as", which must
    /// outlive it; an empty list asks for all.
    class Filter {
    public:
        explicit Filter(GVariant* list);
        bool asksFor(std::string_view name) const {
            return names_.empty() || names_.contains(name);
        }

    private:
        std::set<std::string_view> names_;
    };

    /// The properties of an item, a{sv}, those left out that have their default value. Floating.
    GVariant* properties(int id, const Filter& filter) const;
    /// The item with what lies `depth` levels below it, all levels where that is negative:
    /// (ia{sv}av). Floating.
    GVariant* layout(int id, int depth, const Filter& filter) const;
    /// Null where the item does not have it.
    GVariant* property(int id, std::string_view name) const;

private:
    struct Property {
        const char* name;
        GVariantPtr value;
    };
    using Item = std::vector<Property>;

    static Item itemOf(const StatusMenuEntry& entry);

    std::vector<Item> items_;
};

} // namespace korvane::runner
