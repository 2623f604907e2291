#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/Linux/BusObject.h"
#include "korvane-runner/Desktop/StatusArea.h"

#include <memory>
#include <vector>

namespace korvane::runner {

/// A menu that panels draw, by the protocol com.canonical.dbusmenu. It never changes. The entries
/// are numbered from 1 on in their order, and 0 is the menu itself.
class DBusMenu {
public:
    static constexpr const char* path = "/MenuBar";

    /// `bus` and `loop` must outlive this.
    DBusMenu(std::vector<StatusMenuEntry> entries, SessionBus& bus, AppLoop& loop);

    /// Has the loop call what the first entry that can be chosen stands for.
    void chooseFirst();

private:
    struct State;

    std::shared_ptr<State> state_;
    BusObject object_;
};

} // namespace korvane::runner
