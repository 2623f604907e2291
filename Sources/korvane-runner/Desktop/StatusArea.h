#pragma once

#include "Ambrel/Graphics/Image.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvane::runner {

/// The picture of a status item.
struct StatusImage {
    std::vector<ambrel::Image> sizes; ///< the same square picture, smallest first; none is empty
    bool isTemplate = false; ///< its alpha alone counts, drawn in the colour of the panel's text
};

/// One line of a status item's menu.
struct StatusMenuEntry {
    std::string title;            ///< plain text, UTF-8; empty: a separator
    std::function<void()> chosen; ///< null: cannot be chosen
    char key = '\0';              ///< with the desktop's command key; 0: none
};

struct StatusItemSetup {
    std::string id;      ///< of the instance's desktop entry: ambrel::desktopId
    std::string toolTip; ///< plain text, UTF-8
    /// Asked at most once, on the loop's thread, when somebody shows the item. Must not throw.
    std::function<StatusImage()> image;
    std::vector<StatusMenuEntry> menu;
};

/// An item in the status area, for as long as this lives.
class StatusItem {
public:
    virtual ~StatusItem() = default;
};

/// The part of a panel or menu bar where programs have items.
class StatusArea {
public:
    virtual ~StatusArea() = default;

    /// Shows an item whenever there is a panel that shows such items, now or later. Its actions are
    /// called on the loop's thread, and may take the item away. Must not be asked for a second one
    /// while there is a first.
    virtual std::unique_ptr<StatusItem> show(StatusItemSetup setup) = 0;
};

} // namespace korvane::runner
