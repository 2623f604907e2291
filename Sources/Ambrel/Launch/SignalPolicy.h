#pragma once

#include "Ambrel/Platform/SignalHold.h"

#include <set>

namespace ambrel {

/// Decides which of the signals that arrive here a child is to get. Its state is what has arrived
/// so far, so there is one for each child.
class SignalPolicy {
public:
    /// Whether a signal of that number was waiting here already when the child was started.
    enum class WaitedAtStart { no, yes };

    /// Everything is passed on but what the kernel sent to the whole foreground group: the child
    /// has that already. Not so when the first of its kind waited at the child's start: then the
    /// child was not there to get it. A terminal that goes away is told to the leader of its
    /// session alone, so a leader passes that on. There is no limit: a second signal of a kind may
    /// be what the child acts on.
    bool passesOn(const ArrivedSignal& signal, WaitedAtStart waited);

private:
    std::set<int> arrived_;
};

} // namespace ambrel
