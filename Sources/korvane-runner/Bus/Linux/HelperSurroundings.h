#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <vector>

namespace korvane::runner::bus {

/// What a process that looks after an instance does to be nobody else's, whoever has started it.
struct HelperSurroundings {
    HelperSurroundings() = delete;

    /// What this process holds for the others is not ended by what is meant for them: a typed
    /// interrupt and a terminal that goes away reach all of the runner's group. What it is asked
    /// itself comes by openSignals().
    static void blockSignals() noexcept;

    /// Tells of the end of children and of SIGTERM, without blocking. Throws FileError.
    static ambrel::OwnedFd openSignals();

    /// Closes what whoever started the runner had left open to it, a pipe whose end somebody
    /// awaits; but neither the standard streams nor `kept`.
    static void closeAllBut(std::vector<int> kept);

    /// Throws FileError where this process can open fewer files at a time than a start takes: what
    /// fails for that later would look like a fault of the application. `nothing` is open.
    static void requireRoom(const ambrel::OwnedFd& nothing);

    /// Gives back the folder and the standard streams, which become what `nothing` is.
    static void leave(const ambrel::OwnedFd& nothing) noexcept;
};

} // namespace korvane::runner::bus
